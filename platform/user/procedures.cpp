#include <platform/user/thread_queue.h>
#include <platform/user/window_table.h>

#include <platform/kernel.h>
#include <platform/kernel/outcome.h>

#include <cstdio>
#include <cstdlib>
#include <utility>

namespace {

LONG *Word_Of(Window &window, int index) {
    switch (index) {
    case GWL_ID:
        return &window.id;
    case GWL_USERDATA:
        return &window.user_data;
    default:
        return nullptr;
    }
}

// The bits that say what a window is, not how it looks.
constexpr DWORD Kept_Style_Bits = State_Bits | WS_CHILD;

LONG Exchange(Window &window, int index, LONG value) {
    LONG before = 0;
    switch (index) {
    case GWL_WNDPROC:
        before = reinterpret_cast<LONG>(window.procedure);
        if (value) window.procedure = reinterpret_cast<WNDPROC>(value);
        return before;
    case GWL_STYLE:
        before = static_cast<LONG>(window.Style());
        window.style = (window.style & Kept_Style_Bits) | (static_cast<DWORD>(value) & ~Kept_Style_Bits);
        return before;
    case GWL_EXSTYLE:
        before = static_cast<LONG>(window.extended_style);
        window.extended_style = static_cast<DWORD>(value);
        return before;
    default:
        LONG *word = Word_Of(window, index);
        if (word) return std::exchange(*word, value);
        SetLastError(ERROR_INVALID_INDEX);
        return 0;
    }
}

LONG Read_Word(Window &window, int index) {
    switch (index) {
    case GWL_WNDPROC:
        return reinterpret_cast<LONG>(window.procedure);
    case GWL_STYLE:
        return static_cast<LONG>(window.Style());
    case GWL_EXSTYLE:
        return static_cast<LONG>(window.extended_style);
    default:
        const LONG *word = Word_Of(window, index);
        if (!word) SetLastError(ERROR_INVALID_INDEX);
        return word ? *word : 0;
    }
}

LRESULT Send_To_Other_Thread(const WindowPointer &window, UINT message, WPARAM wparam, LPARAM lparam) {
    std::shared_ptr<SentMessage> sent;
    const long error = Code_Of([&]() -> long {
        std::shared_ptr<ThreadQueue> sender = ThreadQueue::Own();
        if (!sender) return static_cast<long>(GetLastError());
        sent = std::make_shared<SentMessage>();
        sent->window = window;
        sent->message = message;
        sent->wparam = wparam;
        sent->lparam = lparam;
        sent->sender = std::move(sender);
        return NO_ERROR;
    });
    return Succeed_Or_Tell(error) ? ThreadQueue::Send(sent, *window->queue) : 0;
}

} // namespace

LRESULT Call_Procedure(const WindowPointer &window, UINT message, WPARAM wparam, LPARAM lparam) {
    if (TreeLock::Held_By_This_Thread()) {
        std::fprintf(stderr,
                     "kelmara machine: a window's procedure was about to run under the tree's lock\n");
        std::abort();
    }
    const WindowPointer held = window;
    WNDPROC procedure;
    {
        const TreeLock lock;
        if (held->gone) return 0;
        procedure = held->procedure;
    }
    return procedure(held->handle, message, wparam, lparam);
}

LRESULT Send_To(const WindowPointer &window, UINT message, WPARAM wparam, LPARAM lparam) {
    const bool own = !window->queue || window->queue->Is_Own();
    return own ? Call_Procedure(window, message, wparam, lparam)
               : Send_To_Other_Thread(window, message, wparam, lparam);
}

void Notify_Parent(HWND control, UINT notice) {
    const HWND parent = GetParent(control);
    const auto id = static_cast<UINT>(GetDlgCtrlID(control)) & 0xFFFF;
    if (parent) SendMessageA(parent, WM_COMMAND, id | notice << 16, As_Parameter(control));
}

extern "C" {

LRESULT SendMessageA(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    const WindowPointer found = Within_Memory(WindowPointer(), [&] { return Find_Window_Or_Tell(window); });
    return found ? Send_To(found, message, wparam, lparam) : 0;
}

LRESULT CallWindowProcA(WNDPROC procedure, HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    if (!procedure) return 0;
    const WindowPointer held = Within_Memory(WindowPointer(), [&] { return Find_Window(window); });
    return procedure(window, message, wparam, lparam);
}

LONG GetWindowLongA(HWND window, int index) {
    return Within_Memory(0L, [&]() -> LONG {
        const WindowPointer found = Find_Window_Or_Tell(window);
        if (!found) return 0;
        const TreeLock lock;
        return Read_Word(*found, index);
    });
}

LONG SetWindowLongA(HWND window, int index, LONG value) {
    return Within_Memory(0L, [&]() -> LONG {
        const WindowPointer found = Find_Window_Or_Tell(window);
        if (!found) return 0;
        const TreeLock lock;
        return Exchange(*found, index, value);
    });
}

DWORD GetWindowThreadProcessId(HWND window, DWORD *process_id) {
    return Within_Memory(DWORD{0}, [&]() -> DWORD {
        const MachineWindow on_machine = Find_On_Machine(window);
        if (on_machine) {
            const ThreadRow &thread = on_machine.shared->Thread_Of(*on_machine.row);
            if (process_id) *process_id = thread.process_id.load(std::memory_order_relaxed);
            return thread.thread_id.load(std::memory_order_relaxed);
        }
        const WindowPointer found = Find_Window_Or_Tell(window);
        if (!found || !found->queue) return 0;
        if (process_id) *process_id = GetCurrentProcessId();
        return found->queue->Thread_Id();
    });
}
}
