#include <platform/user/frame.h>
#include <platform/user/menus/menu_table.h>
#include <platform/user/positions.h>

#include <platform/kernel/outcome.h>

namespace {

WindowPointer Find(HWND handle) {
    return Within_Memory(WindowPointer(), [&] { return Find_Window_Or_Tell(handle); });
}

} // namespace

extern "C" {

HMENU GetMenu(HWND handle) {
    const WindowPointer window = Find(handle);
    const TreeLock lock;
    return window ? window->menu : nullptr;
}

BOOL SetMenu(HWND handle, HMENU menu) {
    const WindowPointer window = Find(handle);
    if (!window) return FALSE;
    if (!window->queue) return Succeed_Or_Tell(ERROR_ACCESS_DENIED);
    if (menu && !Is_Menu(menu)) return Succeed_Or_Tell(ERROR_INVALID_MENU_HANDLE);
    {
        const TreeLock lock;
        if (window->style & WS_CHILD) return Succeed_Or_Tell(ERROR_CHILD_WINDOW_MENU);
        window->menu = menu;
        window->menu_height = menu ? static_cast<int>(Menu_Height) : 0;
    }
    constexpr UINT Frame_Alone = SWP_NOSIZE | SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE;
    Reposition(window, {handle, nullptr, 0, 0, 0, 0, Frame_Alone | SWP_FRAMECHANGED | SWP_STATECHANGED});
    return TRUE;
}
}
