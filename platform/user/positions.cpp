#include <platform/user/positions.h>

#include <platform/user/frame.h>
#include <platform/user/state_changes.h>
#include <platform/user/window_table.h>

#include <platform/kernel.h>
#include <platform/kernel/outcome.h>

#include <algorithm>

namespace {

constexpr UINT Nothing_Changes = SWP_NOSIZE | SWP_NOMOVE | SWP_NOZORDER | SWP_NOCLIENTSIZE | SWP_NOCLIENTMOVE;

// The caller holds the lock, as for the rest.
bool Is_Behind(const Window &window, const Window *after) {
    if (!window.parent) return true;
    const auto &siblings = window.parent->children;
    const auto at = std::find(siblings.begin(), siblings.end(), &window);
    return at == siblings.begin() ? !after : *(at - 1) == after;
}

RECT Wanted_Rectangle(const Window &window, const WINDOWPOS &wanted) {
    RECT r = window.rectangle;
    LONG width = r.right - r.left, height = r.bottom - r.top;
    if (!(wanted.flags & SWP_NOMOVE)) {
        r.left = Within_Reach(wanted.x);
        r.top = Within_Reach(wanted.y);
    }
    if (!(wanted.flags & SWP_NOSIZE)) {
        width = std::max(Within_Reach(wanted.cx), 0L);
        height = std::max(Within_Reach(wanted.cy), 0L);
    }
    r.right = r.left + width;
    r.bottom = r.top + height;
    return r;
}

bool Is_Top(HWND after) {
    return after == HWND_TOP || after == HWND_TOPMOST || after == HWND_NOTOPMOST;
}

void Restack_As_Wanted(Window &window, WINDOWPOS &wanted) {
    if (wanted.flags & SWP_NOZORDER || !window.parent) return;
    const auto &siblings = window.parent->children;
    const Window *after = nullptr;
    if (wanted.hwndInsertAfter == HWND_BOTTOM) {
        after = siblings.back() != &window ? siblings.back()
                : siblings.size() > 1      ? siblings[siblings.size() - 2]
                                           : nullptr;
    } else if (!Is_Top(wanted.hwndInsertAfter)) {
        const WindowPointer sibling = Find_Window(wanted.hwndInsertAfter);
        if (!sibling || sibling->parent != window.parent || sibling.get() == &window) {
            wanted.flags |= SWP_NOZORDER;
            return;
        }
        after = sibling.get();
    }
    if (Is_Behind(window, after))
        wanted.flags |= SWP_NOZORDER;
    else
        Restack(window, after);
}

// Changes the window and turns the flags into what has changed.
void Apply(Window &window, WINDOWPOS &wanted) {
    const RECT before = window.rectangle, client_before = window.told_client;
    const RECT after = Wanted_Rectangle(window, wanted);
    window.rectangle = after;
    if (!window.Is(WS_MINIMIZE | WS_MAXIMIZE)) window.normal = after;
    const RECT client = window.told_client = Client_In_Parent(window);
    wanted.x = static_cast<int>(after.left);
    wanted.y = static_cast<int>(after.top);
    wanted.cx = static_cast<int>(after.right - after.left);
    wanted.cy = static_cast<int>(after.bottom - after.top);
    const auto same_size = [](const RECT &a, const RECT &b) {
        return a.right - a.left == b.right - b.left && a.bottom - a.top == b.bottom - b.top;
    };
    const bool told_anyway = wanted.flags & SWP_STATECHANGED;
    const bool moved = after.left != before.left || after.top != before.top;
    if (!moved) wanted.flags |= SWP_NOMOVE;
    if (same_size(after, before)) wanted.flags |= SWP_NOSIZE;
    if (same_size(client, client_before) && !told_anyway) wanted.flags |= SWP_NOCLIENTSIZE;
    const bool client_moved = client.left != client_before.left || client.top != client_before.top;
    if (!client_moved && !told_anyway) wanted.flags |= SWP_NOCLIENTMOVE;
    Restack_As_Wanted(window, wanted);
}

// SWP_SHOWWINDOW and SWP_HIDEWINDOW: taken away where they change nothing.
void Apply_Visibility(Window &window, WINDOWPOS &wanted) {
    const UINT without_effect = window.Is(WS_VISIBLE) ? SWP_SHOWWINDOW : SWP_HIDEWINDOW;
    wanted.flags &= ~without_effect;
    if (!(wanted.flags & (SWP_SHOWWINDOW | SWP_HIDEWINDOW))) return;
    const DWORD visible = (wanted.flags & SWP_SHOWWINDOW) ? WS_VISIBLE : 0;
    const auto with_it = [visible](DWORD bits) { return (bits & State_Bits & ~WS_VISIBLE) | visible; };
    if (window.row) SharedWindows::Change_State(*window.row, with_it);
    window.style = (window.style & ~State_Bits) | with_it(window.style);
}

// To activate also brings forward: the active window goes where it is put, unless it is to be shown.
bool Needs_Activation(const Window &window, UINT flags, bool restacks, StateBits bits) {
    if (flags & (SWP_NOACTIVATE | SWP_HIDEWINDOW)) return false;
    if (bits == StateBits::Set_Already) return true;
    if (window.queue->active == &window) return false;
    return (restacks || (flags & SWP_SHOWWINDOW)) && window.Is(WS_VISIBLE);
}

// Tells the last error for what is no window.
bool Is_Place_In_Order(HWND after) {
    return Is_Top(after) || after == HWND_BOTTOM || IsWindow(after);
}

} // namespace

void Reposition(const WindowPointer &window, WINDOWPOS wanted, StateBits bits) {
    if (!(wanted.flags & SWP_NOSENDCHANGING)) Send_To(window, WM_WINDOWPOSCHANGING, 0, As_Parameter(&wanted));
    bool activate, sinks;
    {
        const TreeLock lock;
        if (window->gone) return;
        const bool restacks = !(wanted.flags & SWP_NOZORDER);
        Apply(*window, wanted);
        if (bits == StateBits::As_They_Are) Apply_Visibility(*window, wanted);
        activate = Needs_Activation(*window, wanted.flags, restacks, bits);
        sinks =
            (wanted.flags & SWP_HIDEWINDOW) || ((wanted.flags & SWP_STATECHANGED) && window->Is(WS_MINIMIZE));
    }
    if (sinks) Cancel_Pointer_In(window);
    const bool nothing =
        (wanted.flags & Nothing_Changes) == Nothing_Changes &&
        !(wanted.flags & (SWP_SHOWWINDOW | SWP_HIDEWINDOW | SWP_STATECHANGED | SWP_FRAMECHANGED));
    if (activate) Bring_To_Front(window);
    if (!nothing) Send_To(window, WM_WINDOWPOSCHANGED, 0, As_Parameter(&wanted));
}

extern "C" {

BOOL SetWindowPos(HWND handle, HWND after, int x, int y, int width, int height, UINT flags) {
    const WindowPointer window = Within_Memory(WindowPointer(), [&] { return Find_Window_Or_Tell(handle); });
    if (!window) return FALSE;
    if (!window->queue) return Succeed_Or_Tell(ERROR_ACCESS_DENIED);
    if (!(flags & SWP_NOZORDER) && !Is_Place_In_Order(after)) return FALSE;
    constexpr UINT Given_By_Callers = 0x7FF;
    Reposition(window, {handle, after, x, y, width, height, flags & Given_By_Callers});
    return TRUE;
}

BOOL MoveWindow(HWND window, int x, int y, int width, int height, BOOL repaint) {
    return SetWindowPos(window, nullptr, x, y, width, height,
                        SWP_NOZORDER | SWP_NOACTIVATE | (repaint ? 0u : SWP_NOREDRAW));
}
}
