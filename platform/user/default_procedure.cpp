#include <platform/user/frame.h>
#include <platform/user/positions.h>
#include <platform/user/window_table.h>

#include <platform/kernel.h>
#include <platform/kernel/outcome.h>

#include <algorithm>
#include <cstring>

namespace {

bool Keep_Text(const WindowPointer &window, const char *text) {
    return Within_Memory(false, [&] {
        std::string kept = text ? text : "";
        const TreeLock lock;
        window->text = std::move(kept);
        if (window->row) SharedWindows::Set_Title(*window->row, window->text);
        return true;
    });
}

LRESULT Give_Text(const WindowPointer &window, WPARAM size, char *out) {
    if (size == 0 || !out) return 0;
    const TreeLock lock;
    const std::size_t length = std::min<std::size_t>(window->text.size(), size - 1);
    std::memcpy(out, window->text.data(), length);
    out[length] = 0;
    return static_cast<LRESULT>(length);
}

LRESULT Text_Length(const WindowPointer &window) {
    const TreeLock lock;
    return static_cast<LRESULT>(window->text.size());
}

LPARAM Packed(LONG low, LONG high) {
    return static_cast<LPARAM>((static_cast<DWORD>(low) & 0xFFFF) | static_cast<DWORD>(high) << 16);
}

void Tell_Move_And_Size(const WindowPointer &window, const WINDOWPOS &change) {
    RECT client;
    DWORD style;
    {
        const TreeLock lock;
        client = Client_In_Parent(*window);
        style = window->Style();
    }
    if (!(change.flags & SWP_NOCLIENTMOVE)) Send_To(window, WM_MOVE, 0, Packed(client.left, client.top));
    if (change.flags & SWP_NOCLIENTSIZE) return;
    const WPARAM kind = (style & WS_MINIMIZE)   ? SIZE_MINIMIZED
                        : (style & WS_MAXIMIZE) ? SIZE_MAXIMIZED
                                                : SIZE_RESTORED;
    Send_To(window, WM_SIZE, kind, Packed(client.right - client.left, client.bottom - client.top));
}

// The pointer's notice goes to the parent first, which may answer it.
LRESULT Pass_Up_Set_Cursor(const WindowPointer &window, WPARAM wparam, LPARAM lparam) {
    const HWND parent = window->Is_Top_Level() ? nullptr : GetParent(window->handle);
    return parent ? SendMessageA(parent, WM_SETCURSOR, wparam, lparam) : 0;
}

} // namespace

extern "C" {

LRESULT DefWindowProcA(HWND handle, UINT message, WPARAM wparam, LPARAM lparam) {
    const WindowPointer window = Within_Memory(WindowPointer(), [&] { return Find_Window_Or_Tell(handle); });
    if (!window) return 0;
    switch (message) {
    case WM_NCCREATE:
        return lparam && Keep_Text(window, reinterpret_cast<const CREATESTRUCTA *>(lparam)->lpszName);
    case WM_SETTEXT:
        return Keep_Text(window, reinterpret_cast<const char *>(lparam));
    case WM_GETTEXT:
        return Give_Text(window, wparam, reinterpret_cast<char *>(lparam));
    case WM_GETTEXTLENGTH:
        return Text_Length(window);
    case WM_WINDOWPOSCHANGED:
        if (lparam) Tell_Move_And_Size(window, *reinterpret_cast<const WINDOWPOS *>(lparam));
        return 0;
    case WM_ACTIVATE:
        if ((wparam & 0xFFFF) != WA_INACTIVE && !IsIconic(handle)) SetFocus(handle);
        return 0;
    case WM_CLOSE:
        DestroyWindow(handle);
        return 0;
    case WM_SETCURSOR:
        return Pass_Up_Set_Cursor(window, wparam, lparam);
    case WM_NCHITTEST:
        return HTCLIENT;
    default:
        return 0;
    }
}
}
