#include <platform/user/state_changes.h>

#include <platform/user/frame.h>
#include <platform/user/positions.h>
#include <platform/user/window_table.h>

#include <platform/kernel/outcome.h>

namespace {

RECT Whole_Of(const Window &parent) {
    const RECT client = Client_Area(parent);
    return {0, 0, client.right - client.left, client.bottom - client.top};
}

// Where the window is in that state. The caller holds the lock.
RECT Rectangle_In(const Window &window, DWORD state) {
    if (state & WS_MINIMIZE)
        return {Iconic_Place, Iconic_Place, Iconic_Place + Iconic_Width, Iconic_Place + Iconic_Height};
    if (!(state & WS_MAXIMIZE) || !window.parent) return window.normal;
    const LONG frame = Frame_Size(window.style, 0);
    const RECT whole = Whole_Of(*window.parent);
    return {-frame, -frame, whole.right + frame, whole.bottom + frame};
}

void Store_State(Window &window, DWORD state) {
    window.style = (window.style & ~State_Bits) | state;
    if (window.row) window.row->state.store(state, std::memory_order_release);
}

void Tell_Visibility(const WindowPointer &window, DWORD before, DWORD after) {
    if ((before ^ after) & WS_VISIBLE) Send_To(window, WM_SHOWWINDOW, (after & WS_VISIBLE) != 0, 0);
}

} // namespace

void Change_State(const WindowPointer &window, DWORD state, bool may_activate) {
    DWORD before;
    WINDOWPOS change = {window->handle, nullptr, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE};
    {
        const TreeLock lock;
        if (window->gone) return;
        before = window->style & State_Bits;
    }
    Tell_Visibility(window, before, state);
    {
        const TreeLock lock;
        if (window->gone) return;
        if ((before ^ state) & (WS_MINIMIZE | WS_MAXIMIZE)) {
            const RECT place = Rectangle_In(*window, state);
            change = {window->handle,
                      nullptr,
                      static_cast<int>(place.left),
                      static_cast<int>(place.top),
                      static_cast<int>(place.right - place.left),
                      static_cast<int>(place.bottom - place.top),
                      SWP_STATECHANGED | SWP_FRAMECHANGED};
            window->zoomed_before_iconic =
                (state & WS_MINIMIZE) &&
                ((before & WS_MAXIMIZE) || ((before & WS_MINIMIZE) && window->zoomed_before_iconic));
        }
        if (!may_activate || window->Is(WS_CHILD)) change.flags |= SWP_NOACTIVATE | SWP_NOZORDER;
        if ((before ^ state) & WS_VISIBLE)
            change.flags |= (state & WS_VISIBLE) ? SWP_SHOWWINDOW : SWP_HIDEWINDOW;
        Store_State(*window, state);
    }
    Reposition(window, change, StateBits::Set_Already);
}

void Catch_Up_With_The_Machine(ThreadQueue &queue) {
    struct Behind {
        WindowPointer window;
        DWORD state;
    };
    std::vector<Behind> changed;
    WindowPointer to_activate;
    bool lost = false;
    Code_Of([&]() -> long {
        const TreeLock lock;
        for (const Window *each : Desktop().children) {
            if (each->queue.get() != &queue) continue;
            const DWORD now = each->Style() & State_Bits;
            if (now != (each->style & State_Bits)) changed.push_back({Find_Window(each->handle), now});
        }
        const HWND foreground = queue.Shared()->Foreground();
        if (foreground == Handle_Of(queue.active)) return NO_ERROR;
        const WindowPointer in_front = Find_Window(foreground);
        if (in_front && in_front->queue.get() == &queue)
            to_activate = in_front;
        else
            lost = queue.active && foreground;
        return NO_ERROR;
    });
    for (const Behind &each : changed) Change_State(each.window, each.state, false);
    if (to_activate)
        Activate(queue, to_activate);
    else if (lost)
        Activate(queue, nullptr);
}
