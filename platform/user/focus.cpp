#include <platform/user/state_changes.h>
#include <platform/user/window_table.h>

#include <platform/kernel.h>
#include <platform/kernel/outcome.h>

namespace {

std::shared_ptr<ThreadQueue> Own_Queue() {
    return Within_Memory(std::shared_ptr<ThreadQueue>(), [] { return ThreadQueue::Own(); });
}

WindowPointer Pointer_To(const Window *window) {
    return window ? Find_Window(window->handle) : nullptr;
}

// The caller holds the lock.
bool May_Have_Focus(const Window &window) {
    for (const Window *each = &window; each->parent; each = each->parent) {
        if (each->style & WS_DISABLED || each->Is(WS_MINIMIZE)) return false;
    }
    return true;
}

void Move_Focus(ThreadQueue &queue, const WindowPointer &window) {
    WindowPointer before;
    {
        const TreeLock lock;
        if (queue.focus == window.get()) return;
        before = Pointer_To(queue.focus);
        queue.focus = window && !window->gone ? window.get() : nullptr;
    }
    const auto handle = [](const WindowPointer &of) { return reinterpret_cast<WPARAM>(Handle_Of(of.get())); };
    if (before) Send_To(before, WM_KILLFOCUS, handle(window), 0);
    bool still;
    {
        const TreeLock lock;
        still = window && queue.focus == window.get();
    }
    if (still) Send_To(window, WM_SETFOCUS, handle(before), 0);
}

// What answers WM_ACTIVATE need not care for the focus, which is never in a window that is not active.
void Bring_Focus_Along(ThreadQueue &queue, const WindowPointer &window) {
    bool may_have_it;
    {
        const TreeLock lock;
        if (queue.active != window.get() || (window && Has_Focus_Within(*window))) return;
        may_have_it = window && May_Have_Focus(*window);
    }
    Move_Focus(queue, may_have_it ? window : nullptr);
}

// Which popup of its owners was active last.
void Remember_Popup(const Window &window) {
    const auto handle = reinterpret_cast<std::uint32_t>(window.handle);
    for (const Window *each = &window; each && each->row; each = each->owner)
        each->row->last_popup.store(handle, std::memory_order_release);
}

} // namespace

bool Has_Focus_Within(const Window &window) {
    const TreeLock lock;
    const Window *focus = window.queue->focus;
    return focus && (focus == &window || Is_Descendant(*focus, window));
}

void Activate(ThreadQueue &queue, const WindowPointer &window, Foreground foreground) {
    WindowPointer before;
    {
        const TreeLock lock;
        if (window && (window->gone || !window->row || window->queue.get() != &queue)) return;
        if (window) Remember_Popup(*window);
        before = Pointer_To(queue.active);
        queue.active = window.get();
        if (window) Restack(*window, nullptr);
        const HWND in_front = queue.Shared()->Foreground();
        const bool had_it = before && in_front == before->handle;
        const bool takes_it = window && (foreground == Foreground::Take || !in_front);
        if (takes_it || had_it) queue.Shared()->Set_Foreground(Handle_Of(window.get()));
        queue.in_foreground = window && (takes_it || had_it);
    }
    if (before == window) return;
    const auto handle = [](const WindowPointer &of) { return As_Parameter(Handle_Of(of.get())); };
    if (before) Send_To(before, WM_ACTIVATE, WA_INACTIVE, handle(window));
    bool still;
    {
        const TreeLock lock;
        still = window && queue.active == window.get();
    }
    if (still) Send_To(window, WM_ACTIVATE, WA_ACTIVE, handle(before));
    Bring_Focus_Along(queue, window);
}

void Cancel_Pointer_In(const WindowPointer &window) {
    WindowPointer holder;
    if (!window->queue) return;
    {
        const TreeLock lock;
        holder = Find_Window(window->queue->pointer_held_for);
        if (!holder || (holder != window && !Is_Descendant(*holder, *window))) return;
    }
    Send_To(holder, WM_CANCELMODE, 0, 0);
}

void Bring_To_Front(const WindowPointer &window) {
    {
        const TreeLock lock;
        if (!window->row) return;
    }
    if (window->queue->Is_Own())
        Activate(*window->queue, window, Foreground::Take);
    else
        window->shared->Set_Foreground(window->handle);
}

extern "C" {

HWND SetFocus(HWND handle) {
    const std::shared_ptr<ThreadQueue> queue = Own_Queue();
    if (!queue) return nullptr;
    WindowPointer window, root;
    HWND before;
    {
        const TreeLock lock;
        before = Handle_Of(queue->focus);
        if (handle) {
            window = Within_Memory(WindowPointer(), [&] { return Find_Window_Or_Tell(handle); });
            if (!window) return nullptr;
            if (window->queue != queue) return Succeed_Or_Tell(ERROR_ACCESS_DENIED), nullptr;
            if (!May_Have_Focus(*window)) return Succeed_Or_Tell(ERROR_INVALID_PARAMETER), nullptr;
            root = Pointer_To(&Root_Of(*window));
            if (queue->active == root.get() || root->queue != queue) root.reset();
        }
    }
    if (root) Activate(*queue, root, Foreground::Leave);
    Move_Focus(*queue, window);
    return before;
}

HWND GetFocus() {
    const std::shared_ptr<ThreadQueue> queue = ThreadQueue::Existing();
    const TreeLock lock;
    return queue ? Handle_Of(queue->focus) : nullptr;
}

HWND GetActiveWindow() {
    const std::shared_ptr<ThreadQueue> queue = ThreadQueue::Existing();
    const TreeLock lock;
    return queue ? Handle_Of(queue->active) : nullptr;
}

BOOL SetForegroundWindow(HWND handle) {
    MachineWindow on_machine;
    const WindowPointer window = Within_Memory(WindowPointer(), [&]() -> WindowPointer {
        on_machine = Find_On_Machine(handle);
        return on_machine ? Find_Window(handle) : Find_Window_Or_Tell(handle);
    });
    if (!on_machine) return FALSE;
    if (window)
        Bring_To_Front(window);
    else
        on_machine.shared->Set_Foreground(handle);
    return TRUE;
}

HWND GetForegroundWindow() {
    return Within_Memory(HWND(nullptr), []() -> HWND {
        const std::shared_ptr<SharedWindows> shared = SharedWindows::Current();
        return shared ? shared->Foreground() : nullptr;
    });
}

HWND GetLastActivePopup(HWND handle) {
    return Within_Memory(HWND(nullptr), [&]() -> HWND {
        const MachineWindow on_machine = Find_On_Machine(handle);
        if (!on_machine) return Find_Window_Or_Tell(handle) ? handle : nullptr;
        const auto popup = reinterpret_cast<HWND>(on_machine.row->last_popup.load(std::memory_order_acquire));
        return popup && on_machine.shared->Find(popup) ? popup : handle;
    });
}
}
