#include <platform/user/frame.h>

#include <platform/kernel/outcome.h>
#include <platform/machine.h>

#include <atomic>
#include <cstdlib>

namespace {

constinit std::atomic<unsigned long> beeps{0};

struct Metric {
    int index;
    int value;
};

constexpr Metric Metrics[] = {
    {SM_CXVSCROLL, Scroll_Bar_Size},
    {SM_CYHSCROLL, Scroll_Bar_Size},
    {SM_CYCAPTION, Caption_Height},
    {SM_CXBORDER, Border_Size},
    {SM_CYBORDER, Border_Size},
    {SM_CXDLGFRAME, Dialog_Frame_Size},
    {SM_CYDLGFRAME, Dialog_Frame_Size},
    {SM_CYMENU, Menu_Height},
    {SM_CXFRAME, Sizing_Frame_Size},
    {SM_CYFRAME, Sizing_Frame_Size},
    {SM_CXEDGE, Edge_Size},
    {SM_CYEDGE, Edge_Size},
    {SM_CXICON, 32},
    {SM_CYICON, 32},
    {SM_CXSMICON, 16},
    {SM_CYSMICON, 16},
};

// A setting that is no size of a screen leaves the usual one.
int Screen_Measure(const char *setting, int usual) {
    char text[16];
    if (!Get_Machine_Setting(setting, text, sizeof text)) return usual;
    const long value = std::strtol(text, nullptr, 10);
    return value >= 1 && value <= 32767 ? static_cast<int>(value) : usual;
}

} // namespace

extern "C" {

int GetSystemMetrics(int index) {
    return Within_Memory(0, [index] {
        if (index == SM_CXSCREEN) return Screen_Measure("screen_width", 1024);
        if (index == SM_CYSCREEN) return Screen_Measure("screen_height", 768);
        for (const Metric &metric : Metrics) {
            if (metric.index == index) return metric.value;
        }
        return 0;
    });
}

BOOL MessageBeep(UINT) {
    beeps.fetch_add(1, std::memory_order_relaxed);
    return TRUE;
}

unsigned long Message_Beep_Count() {
    return beeps.load(std::memory_order_relaxed);
}
}
