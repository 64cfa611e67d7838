// Device contexts, and the screen that they are of.

#include <platform/gdi/objects.h>

#include <platform/kernel/outcome.h>
#include <platform/machine.h>
#include <platform/user.h>

#include <cstdlib>

namespace {

constexpr WORD Depths[] = {1, 4, 8, 16, 24, 32};

HDC New_Context(HWND window, bool in_memory) {
    return Within_Memory(HDC(nullptr), [=] {
        const ObjectLock lock;
        auto made = std::make_unique<DeviceContext>();
        made->window = window;
        made->in_memory = in_memory;
        made->font = GetStockObject(SYSTEM_FONT);
        return static_cast<HDC>(Enter_Object(std::move(made)));
    });
}

bool Is_Context(HDC dc) {
    const ObjectLock lock;
    return Find_Or_Tell<DeviceContext>(dc) != nullptr;
}

int Fixed_Colours(WORD depth) {
    return depth > 8 ? -1 : depth == 8 ? 20 : 1 << depth;
}

int Measure(int index) {
    const WORD depth = Screen_Depth();
    switch (index) {
    case HORZRES:
        return GetSystemMetrics(SM_CXSCREEN);
    case VERTRES:
        return GetSystemMetrics(SM_CYSCREEN);
    case BITSPIXEL:
        return depth;
    case PLANES:
        return 1;
    case NUMCOLORS:
        return Fixed_Colours(depth);
    case RASTERCAPS:
        return depth == 8 ? RC_PALETTE : 0;
    case LOGPIXELSX:
    case LOGPIXELSY:
        return 96;
    case SIZEPALETTE:
        return depth == 8 ? 256 : 0;
    case NUMRESERVED:
        return depth == 8 ? 20 : 0;
    default:
        return 0;
    }
}

} // namespace

WORD Screen_Depth() {
    char text[8];
    const bool is_set = Get_Machine_Setting("screen_depth", text, sizeof text);
    const long wanted = is_set ? std::strtol(text, nullptr, 10) : 0;
    for (const WORD depth : Depths) {
        if (depth == wanted) return depth;
    }
    return 32;
}

extern "C" {

HDC GetDC(HWND window) {
    if (window && !IsWindow(window)) return nullptr;
    return New_Context(window, false);
}

int ReleaseDC(HWND window, HDC dc) {
    const ObjectLock lock;
    const auto *const context = dynamic_cast<const DeviceContext *>(Find_Object(dc));
    if (!context || context->in_memory || context->window != window) return 0;
    return Remove_Object(dc);
}

HDC CreateCompatibleDC(HDC dc) {
    if (dc && !Is_Context(dc)) return nullptr;
    return New_Context(nullptr, true);
}

BOOL DeleteDC(HDC dc) {
    const ObjectLock lock;
    const auto *const context = dynamic_cast<const DeviceContext *>(Find_Object(dc));
    const bool deleted = context && context->in_memory && Remove_Object(dc);
    return Succeed_Or_Tell(deleted ? NO_ERROR : ERROR_INVALID_HANDLE);
}

int GetDeviceCaps(HDC dc, int index) {
    return Is_Context(dc) ? Measure(index) : 0;
}
}
