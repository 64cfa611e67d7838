#include <platform/gdi.h>

#include <platform/gdi/fonts.h>
#include <platform/kernel.h>
#include <platform/kernel/fork_lock.h>
#include <platform/kernel/outcome.h>
#include <platform/machine.h>
#include <platform/user.h>

#include <algorithm>
#include <unordered_map>
#include <utility>

namespace {

struct DeviceContext {
    HWND window;
    HGDIOBJ font;
};

struct StockFont {
    int number;
    LONG cell_height;
    LONG weight;
};

constexpr StockFont Stock_Fonts[] = {
    {ANSI_VAR_FONT, 13, FW_NORMAL}, {SYSTEM_FONT, 16, FW_BOLD}, {DEFAULT_GUI_FONT, 13, FW_NORMAL}};

constexpr std::uintptr_t First_Number = 0x1000; // handles below are the stock fonts', four times their number

struct Objects {
    ForkLock lock;
    std::unordered_map<HGDIOBJ, Font> fonts;
    std::unordered_map<HGDIOBJ, DeviceContext> contexts;
    std::uintptr_t last_number = First_Number;

    HGDIOBJ New_Handle() {
        for (;;) {
            last_number = last_number < 0x7FFFFFF0 ? last_number + 4 : First_Number;
            const auto handle = reinterpret_cast<HGDIOBJ>(last_number);
            if (!fonts.contains(handle) && !contexts.contains(handle)) return handle;
        }
    }
    bool Find_Font(HGDIOBJ handle, Font &found) const;
};

Objects &The_Objects() {
    static Objects *objects = new Objects;
    return *objects;
}

const StockFont *Find_Stock_Font(HGDIOBJ handle) {
    for (const StockFont &font : Stock_Fonts) {
        if (handle == GetStockObject(font.number)) return &font;
    }
    return nullptr;
}

bool Objects::Find_Font(HGDIOBJ handle, Font &found) const {
    if (const StockFont *stock = Find_Stock_Font(handle)) {
        found = Font();
        found.cell_height = stock->cell_height;
        found.weight = stock->weight;
        return true;
    }
    const auto made = fonts.find(handle);
    if (made == fonts.end()) return false;
    found = made->second;
    return true;
}

// The font that is selected into a device context.
bool Find_Selected(HDC dc, Font &font) {
    Objects &objects = The_Objects();
    std::lock_guard guard(objects.lock);
    const auto found = objects.contexts.find(dc);
    if (found != objects.contexts.end() && objects.Find_Font(found->second.font, font)) return true;
    SetLastError(ERROR_INVALID_HANDLE);
    return false;
}

} // namespace

Font Font_Of_Handle(HFONT handle) {
    Objects &objects = The_Objects();
    std::lock_guard guard(objects.lock);
    Font font;
    if (!objects.Find_Font(handle, font)) objects.Find_Font(GetStockObject(SYSTEM_FONT), font);
    return font;
}

extern "C" {

HGDIOBJ GetStockObject(int number) {
    for (const StockFont &font : Stock_Fonts) {
        if (font.number == number) return reinterpret_cast<HGDIOBJ>(number * 4);
    }
    return nullptr;
}

HDC GetDC(HWND window) {
    if (window && !IsWindow(window)) return nullptr;
    return Within_Memory(HDC(nullptr), [window] {
        Objects &objects = The_Objects();
        std::lock_guard guard(objects.lock);
        const HGDIOBJ handle = objects.New_Handle();
        objects.contexts.emplace(handle, DeviceContext{window, GetStockObject(SYSTEM_FONT)});
        return static_cast<HDC>(handle);
    });
}

int ReleaseDC(HWND window, HDC dc) {
    Objects &objects = The_Objects();
    std::lock_guard guard(objects.lock);
    const auto found = objects.contexts.find(dc);
    if (found == objects.contexts.end() || found->second.window != window) return 0;
    objects.contexts.erase(found);
    return 1;
}

HGDIOBJ SelectObject(HDC dc, HGDIOBJ object) {
    Objects &objects = The_Objects();
    std::lock_guard guard(objects.lock);
    const auto found = objects.contexts.find(dc);
    Font font;
    if (found == objects.contexts.end() || !objects.Find_Font(object, font)) {
        SetLastError(ERROR_INVALID_HANDLE);
        return nullptr;
    }
    return std::exchange(found->second.font, object);
}

HFONT CreateFontIndirectA(const LOGFONTA *wanted) {
    if (!wanted) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    return Within_Memory(HFONT(nullptr), [wanted] {
        Objects &objects = The_Objects();
        std::lock_guard guard(objects.lock);
        const HGDIOBJ handle = objects.New_Handle();
        objects.fonts.emplace(handle, Font_Of(*wanted));
        return static_cast<HFONT>(handle);
    });
}

BOOL DeleteObject(HGDIOBJ object) {
    if (Find_Stock_Font(object)) return TRUE;
    Objects &objects = The_Objects();
    std::lock_guard guard(objects.lock);
    const auto selected = [object](const auto &each) { return each.second.font == object; };
    if (std::any_of(objects.contexts.begin(), objects.contexts.end(), selected)) return FALSE;
    return Succeed_Or_Tell(objects.fonts.erase(object) ? NO_ERROR : ERROR_INVALID_HANDLE);
}

BOOL GetTextExtentPoint32A(HDC dc, LPCSTR text, int length, SIZE *size) {
    if (length < 0 || !text || !size) return Succeed_Or_Tell(ERROR_INVALID_PARAMETER);
    Font font;
    if (!Find_Selected(dc, font)) return FALSE;
    *size = {Width_Of(font, text, length), font.cell_height};
    return TRUE;
}

BOOL GetTextMetricsA(HDC dc, TEXTMETRICA *metrics) {
    if (!metrics) return Succeed_Or_Tell(ERROR_INVALID_PARAMETER);
    Font font;
    if (!Find_Selected(dc, font)) return FALSE;
    *metrics = Metrics_Of(font);
    return TRUE;
}

unsigned long Gdi_Object_Count() {
    Objects &objects = The_Objects();
    std::lock_guard guard(objects.lock);
    return objects.fonts.size() + objects.contexts.size();
}
}
