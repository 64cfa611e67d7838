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
    if (!window.parent->parent) Desktop_Of_The_Screen();
    const RECT whole = Whole_Of(*window.parent);
    return {-frame, -frame, whole.right + frame, whole.bottom + frame};
}

WINDOWPOS Same_Place(const Window &window) {
    return {window.handle, nullptr, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOZORDER};
}

WINDOWPOS Move_To(const Window &window, const RECT &place) {
    return {window.handle,
            nullptr,
            static_cast<int>(place.left),
            static_cast<int>(place.top),
            static_cast<int>(place.right - place.left),
            static_cast<int>(place.bottom - place.top),
            SWP_STATECHANGED | SWP_FRAMECHANGED | SWP_NOZORDER};
}

// The caller holds the lock.
WINDOWPOS Change_For(const Window &window, DWORD before, DWORD state, Activation activation) {
    const bool resizes = (before ^ state) & (WS_MINIMIZE | WS_MAXIMIZE);
    WINDOWPOS change = resizes ? Move_To(window, Rectangle_In(window, state)) : Same_Place(window);
    if ((before ^ state) & WS_VISIBLE) change.flags |= (state & WS_VISIBLE) ? SWP_SHOWWINDOW : SWP_HIDEWINDOW;
    if (activation == Activation::No) change.flags |= SWP_NOACTIVATE;
    return change;
}

// `store` is what sets the bits, under the lock, between the message that announces them and the others.
template <class Store>
void Go_From_To(const WindowPointer &window, DWORD before, DWORD state, Activation activation, Store store) {
    if ((before ^ state) & WS_VISIBLE) Send_To(window, WM_SHOWWINDOW, (state & WS_VISIBLE) != 0, 0);
    WINDOWPOS change;
    {
        const TreeLock lock;
        if (window->gone) return;
        store();
        change = Change_For(*window, before, state, activation);
    }
    Reposition(window, change, StateBits::Set_Already);
}

} // namespace

void Change_State(const WindowPointer &window, DWORD state, Activation activation) {
    DWORD before;
    {
        const TreeLock lock;
        before = window->style & State_Bits; // what it has been told
    }
    Go_From_To(window, before, state, activation, [&] { window->Set_State_Bits(state); });
}

static void Tell_State(const WindowPointer &window) {
    DWORD before, now;
    {
        const TreeLock lock;
        before = window->style & State_Bits;
        now = window->Style() & State_Bits;
        window->style = window->Style(); // so that it is told once
    }
    if (before != now) Go_From_To(window, before, now, Activation::No, [] {});
}

void Catch_Up_With_The_Machine(ThreadQueue &queue) {
    std::vector<WindowPointer> changed;
    WindowPointer to_activate;
    bool lost = false;
    Code_Of([&]() -> long {
        const TreeLock lock;
        for (Window *each : Desktop().children) {
            if (each->queue.get() == &queue && each->style != each->Style())
                changed.push_back(Find_Window(each->handle));
        }
        const HWND foreground = queue.Shared()->Foreground();
        if (foreground == Handle_Of(queue.active)) {
            queue.in_foreground = foreground != nullptr;
            return NO_ERROR;
        }
        const WindowPointer in_front = Find_Window(foreground);
        if (in_front && in_front->queue.get() == &queue)
            to_activate = in_front;
        else
            lost = queue.active && queue.in_foreground && foreground;
        return NO_ERROR;
    });
    for (const WindowPointer &each : changed) Tell_State(each);
    if (to_activate)
        Activate(queue, to_activate, Foreground::Take);
    else if (lost)
        Activate(queue, nullptr, Foreground::Leave);
}
