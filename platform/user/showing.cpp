#include <platform/user/state_changes.h>
#include <platform/user/window_table.h>

#include <platform/kernel.h>
#include <platform/kernel/outcome.h>

namespace {

struct Command {
    DWORD state;
    Activation activation;
};

// An unknown command changes nothing.
Command State_After(int command, DWORD state) {
    const DWORD size = state & (WS_MINIMIZE | WS_MAXIMIZE);
    const DWORD restored = (size & WS_MINIMIZE) && (state & Zoomed_Before_Iconic) ? WS_MAXIMIZE : 0;
    switch (command) {
    case SW_HIDE:
        return {size, Activation::No};
    case SW_SHOWNORMAL:
        return {WS_VISIBLE, Activation::Yes};
    case SW_RESTORE:
        return {WS_VISIBLE | restored, Activation::Yes};
    case SW_SHOWNOACTIVATE:
        return {WS_VISIBLE | restored, Activation::No};
    case SW_SHOWMINIMIZED:
        return {WS_VISIBLE | WS_MINIMIZE, Activation::Yes};
    case SW_MINIMIZE:
    case SW_SHOWMINNOACTIVE:
        return {WS_VISIBLE | WS_MINIMIZE, Activation::No};
    case SW_SHOWMAXIMIZED:
        return {WS_VISIBLE | WS_MAXIMIZE, Activation::Yes};
    case SW_SHOW:
        return {WS_VISIBLE | size, Activation::Yes};
    case SW_SHOWNA:
        return {WS_VISIBLE | size, Activation::No};
    default:
        return {state & State_Bits, Activation::No};
    }
}

BOOL Show_Another_Process_s(HWND handle, const MachineWindow &found, int command) {
    Command after;
    const DWORD before = SharedWindows::Change_State(*found.row, [&](DWORD state) {
        after = State_After(command, state);
        return after.state;
    });
    if (after.activation == Activation::Yes) found.shared->Set_Foreground(handle);
    found.shared->Thread_Of(*found.row).Wake();
    return (before & WS_VISIBLE) != 0;
}

// The next of the thread's that can be worked with. The caller holds the lock.
Window *Next_Behind(const Window &window) {
    for (Window *each : Desktop().children) {
        const bool may_be_active = each->row && !each->in_destruction && each->Is(WS_VISIBLE) &&
                                   !each->Is(WS_MINIMIZE) && !(each->style & WS_DISABLED);
        if (each != &window && each->queue == window.queue && may_be_active) return each;
    }
    return nullptr;
}

// Its parent, or its owner if that can be seen. The caller holds the lock.
Window *Heir_Of(const Window &window) {
    if (!window.row) return window.parent;
    const bool owner_shows = window.owner && window.owner->Is(WS_VISIBLE);
    return owner_shows ? window.owner : Next_Behind(window);
}

// A window that goes out of sight leaves the focus and the foreground to what stands behind it.
void Leave_Focus(const WindowPointer &window) {
    WindowPointer heir;
    bool was_active, had_focus, was_in_front, heir_is_own;
    {
        const TreeLock lock;
        if (window->gone) return;
        ThreadQueue &queue = *window->queue;
        was_active = queue.active == window.get();
        had_focus = Has_Focus_Within(*window);
        was_in_front = queue.Shared()->Foreground() == window->handle;
        heir = Find_Window(Handle_Of(Heir_Of(*window)));
        heir_is_own = heir && heir->queue == window->queue;
    }
    if (was_active) {
        Activate(*window->queue, heir_is_own ? heir : nullptr, Foreground::Leave);
        if (heir && !heir_is_own && was_in_front) Bring_To_Front(heir);
    } else if (had_focus && heir) {
        SetFocus(heir->handle);
    }
}

BOOL Read_State(HWND handle, DWORD bit) {
    return Within_Memory(FALSE, [&]() -> BOOL {
        const MachineWindow found = Find_On_Machine(handle);
        if (found) return (found.row->state.load(std::memory_order_acquire) & bit) != 0;
        const WindowPointer window = Find_Window_Or_Tell(handle);
        if (!window) return FALSE;
        const TreeLock lock;
        return window->Is(bit);
    });
}

} // namespace

extern "C" {

BOOL ShowWindow(HWND handle, int command) {
    MachineWindow on_machine;
    const WindowPointer window = Within_Memory(WindowPointer(), [&]() -> WindowPointer {
        WindowPointer own = Find_Window(handle);
        if (!own) on_machine = Find_On_Machine(handle);
        return own || on_machine ? own : Find_Window_Or_Tell(handle);
    });
    if (on_machine) return Show_Another_Process_s(handle, on_machine, command);
    if (!window || !window->queue) return FALSE;
    DWORD before;
    bool changes;
    Command after;
    {
        const TreeLock lock;
        before = window->State();
        after = State_After(command, before);
        const DWORD told = window->style & State_Bits;
        changes = after.state != told || after.state != (before & State_Bits);
    }
    if (changes) {
        Change_State(window, after.state, after.activation);
        const bool sinks = !(after.state & WS_VISIBLE) || (after.state & WS_MINIMIZE);
        if (sinks && after.activation == Activation::No && window->queue->Is_Own()) Leave_Focus(window);
    } else if (after.activation == Activation::Yes) {
        Bring_To_Front(window);
    }
    return (before & WS_VISIBLE) != 0;
}

BOOL IsWindowVisible(HWND handle) {
    return Within_Memory(FALSE, [&]() -> BOOL {
        const WindowPointer window = Find_Window(handle);
        if (!window) return Read_State(handle, WS_VISIBLE);
        const TreeLock lock;
        return window->Is_Visible_In_All();
    });
}

BOOL IsIconic(HWND handle) {
    return Read_State(handle, WS_MINIMIZE);
}

BOOL IsZoomed(HWND handle) {
    return Read_State(handle, WS_MAXIMIZE);
}

BOOL EnableWindow(HWND handle, BOOL enable) {
    const WindowPointer window = Within_Memory(WindowPointer(), [&] { return Find_Window_Or_Tell(handle); });
    if (!window) return FALSE;
    bool was_disabled, changes;
    {
        const TreeLock lock;
        was_disabled = window->style & WS_DISABLED;
        changes = was_disabled == (enable != FALSE);
    }
    if (!changes) return was_disabled;
    if (!enable) {
        Send_To(window, WM_CANCELMODE, 0, 0);
        Cancel_Pointer_In(window);
    }
    {
        const TreeLock lock;
        window->style = enable ? window->style & ~WS_DISABLED : window->style | WS_DISABLED;
    }
    if (!enable) Cancel_Pointer_In(window); // what was dropped anew meanwhile
    if (!enable && GetFocus() == handle) SetFocus(nullptr);
    Send_To(window, WM_ENABLE, enable != FALSE, 0);
    return was_disabled;
}

BOOL IsWindowEnabled(HWND handle) {
    return Within_Memory(FALSE, [&]() -> BOOL {
        const WindowPointer window = Find_Window_Or_Tell(handle);
        const TreeLock lock;
        return window && !(window->style & WS_DISABLED);
    });
}
}
