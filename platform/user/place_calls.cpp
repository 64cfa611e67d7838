#include <platform/user/frame.h>
#include <platform/user/window_table.h>

#include <platform/kernel.h>
#include <platform/kernel/outcome.h>
#include <platform/machine.h>

#include <algorithm>

namespace {

// Looks at a window under the lock; FALSE when it is none.
template <class Look>
BOOL Look_At(HWND handle, Look look) {
    return Within_Memory(FALSE, [&]() -> BOOL {
        const WindowPointer window = Find_Window_Or_Tell(handle);
        if (!window) return FALSE;
        const TreeLock lock;
        return look(*window);
    });
}

bool Is_Empty(const RECT &r) {
    return r.left >= r.right || r.top >= r.bottom;
}

RECT Whole_Client(const Window &window) {
    const RECT client = Client_Area(window);
    return {0, 0, client.right - client.left, client.bottom - client.top};
}

RECT Common_Part(const RECT &a, const RECT &b) {
    return {std::max(a.left, b.left), std::max(a.top, b.top), std::min(a.right, b.right),
            std::min(a.bottom, b.bottom)};
}

RECT Around_Both(const RECT &a, const RECT &b) {
    if (Is_Empty(a)) return b;
    if (Is_Empty(b)) return a;
    return {std::min(a.left, b.left), std::min(a.top, b.top), std::max(a.right, b.right),
            std::max(a.bottom, b.bottom)};
}

LONG Wrapped_Sum(LONG a, LONG b) {
    return static_cast<LONG>(static_cast<DWORD>(a) + static_cast<DWORD>(b));
}

UINT Show_Command(DWORD style) {
    if (style & WS_MINIMIZE) return SW_SHOWMINIMIZED;
    return (style & WS_MAXIMIZE) ? SW_SHOWMAXIMIZED : SW_SHOWNORMAL;
}

} // namespace

extern "C" {

BOOL GetWindowRect(HWND handle, RECT *rectangle) {
    return Look_At(handle, [rectangle](const Window &window) {
        const POINT at = Window_Origin(window);
        const RECT &r = window.rectangle;
        *rectangle = {at.x, at.y, at.x + (r.right - r.left), at.y + (r.bottom - r.top)};
        return TRUE;
    });
}

BOOL GetClientRect(HWND handle, RECT *rectangle) {
    return Look_At(handle, [rectangle](const Window &window) {
        *rectangle = Whole_Client(window);
        return TRUE;
    });
}

BOOL ScreenToClient(HWND handle, POINT *point) {
    return Look_At(handle, [point](const Window &window) {
        const POINT corner = Client_Origin(window);
        *point = {Wrapped_Sum(point->x, -corner.x), Wrapped_Sum(point->y, -corner.y)};
        return TRUE;
    });
}

BOOL ClientToScreen(HWND handle, POINT *point) {
    return Look_At(handle, [point](const Window &window) {
        const POINT corner = Client_Origin(window);
        *point = {Wrapped_Sum(point->x, corner.x), Wrapped_Sum(point->y, corner.y)};
        return TRUE;
    });
}

BOOL GetWindowPlacement(HWND handle, WINDOWPLACEMENT *placement) {
    if (!placement || placement->length != sizeof *placement) return Succeed_Or_Tell(ERROR_INVALID_PARAMETER);
    return Look_At(handle, [placement](const Window &window) {
        const UINT flags = (window.State() & Zoomed_Before_Iconic) ? WPF_RESTORETOMAXIMIZED : 0;
        *placement = {sizeof *placement, flags,    Show_Command(window.Style()),
                      {-1, -1},          {-1, -1}, window.normal};
        return TRUE;
    });
}

BOOL SetWindowPlacement(HWND handle, const WINDOWPLACEMENT *placement) {
    if (!placement || placement->length != sizeof *placement) return Succeed_Or_Tell(ERROR_INVALID_PARAMETER);
    const WINDOWPLACEMENT wanted = *placement;
    const RECT normal = Within_Reach(wanted.rcNormalPosition);
    bool stands_there = false;
    const BOOL found = Look_At(handle, [&](Window &window) {
        window.normal = normal;
        stands_there = !window.Is(WS_MINIMIZE | WS_MAXIMIZE);
        return TRUE;
    });
    if (!found) return FALSE;
    if (stands_there) {
        SetWindowPos(handle, nullptr, static_cast<int>(normal.left), static_cast<int>(normal.top),
                     static_cast<int>(normal.right - normal.left),
                     static_cast<int>(normal.bottom - normal.top), SWP_NOZORDER | SWP_NOACTIVATE);
    }
    ShowWindow(handle, static_cast<int>(wanted.showCmd));
    if (wanted.showCmd == SW_SHOWMINIMIZED) {
        Look_At(handle, [&](Window &window) {
            window.Set_Zoomed_Before_Iconic(wanted.flags & WPF_RESTORETOMAXIMIZED);
            return TRUE;
        });
    }
    return TRUE;
}

BOOL InvalidateRect(HWND handle, const RECT *rectangle, BOOL) {
    return Look_At(handle, [rectangle](Window &window) {
        const RECT whole = Whole_Client(window);
        const RECT added = rectangle ? Common_Part(*rectangle, whole) : whole;
        window.invalid = Around_Both(window.invalid, added);
        return TRUE;
    });
}

bool Invalid_Rectangle(HWND handle, RECT *rectangle, bool validate) {
    return Look_At(handle, [=](Window &window) -> BOOL {
        if (Is_Empty(window.invalid)) return FALSE;
        *rectangle = window.invalid;
        if (validate) window.invalid = {};
        return TRUE;
    });
}
}
