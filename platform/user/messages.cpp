#include <platform/user/hands/keys.h>
#include <platform/user/thread_queue.h>
#include <platform/user/window_table.h>

#include <platform/kernel.h>
#include <platform/kernel/outcome.h>
#include <platform/kernel/waiting.h>

#include <algorithm>

namespace {

MSG Made_Now(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    return {window, message, wparam, lparam, GetTickCount(), {0, 0}};
}

std::shared_ptr<ThreadQueue> Own_Queue() {
    return Within_Memory(std::shared_ptr<ThreadQueue>(), [] { return ThreadQueue::Own(); });
}

long Post(HWND window, const MSG &message) {
    std::shared_ptr<ThreadQueue> queue;
    if (window) {
        const WindowPointer found = Find_Window_Or_Tell(window);
        if (!found) return static_cast<long>(GetLastError());
        queue = found->queue;
        if (!queue) return ERROR_ACCESS_DENIED; // the desktop's
    } else {
        queue = ThreadQueue::Own();
        if (!queue) return static_cast<long>(GetLastError());
    }
    return queue->Post(message);
}

bool Is_Usable(const ThreadQueue::Filter &filter) {
    if (!filter.window || filter.window == reinterpret_cast<HWND>(-1)) return true;
    return Within_Memory(false, [&] { return Find_Window_Or_Tell(filter.window) != nullptr; });
}

DWORD Wait_Failed(long error) {
    SetLastError(static_cast<DWORD>(error));
    return WAIT_FAILED;
}

} // namespace

extern "C" {

BOOL PostMessageA(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    return Succeed_Or_Tell(Code_Of([&] { return Post(window, Made_Now(window, message, wparam, lparam)); }));
}

BOOL PostThreadMessageA(DWORD thread_id, UINT message, WPARAM wparam, LPARAM lparam) {
    return Succeed_Or_Tell(Code_Of([&]() -> long {
        const std::shared_ptr<ThreadQueue> queue = ThreadQueue::Of_Thread(thread_id);
        return queue ? queue->Post(Made_Now(nullptr, message, wparam, lparam)) : ERROR_INVALID_THREAD_ID;
    }));
}

void PostQuitMessage(int exit_code) {
    if (const auto queue = Own_Queue()) queue->Post_Quit(exit_code);
}

BOOL PeekMessageA(MSG *message, HWND window, UINT first, UINT last, UINT remove) {
    const ThreadQueue::Filter filter = {window, first, last};
    const auto queue = Own_Queue();
    if (!queue || !Is_Usable(filter)) return FALSE;
    queue->Answer_Sent();
    if (queue->Take(filter, remove & PM_REMOVE, *message)) return TRUE;
    queue->Row().Set_Idle();
    return FALSE;
}

BOOL GetMessageA(MSG *message, HWND window, UINT first, UINT last) {
    const ThreadQueue::Filter filter = {window, first, last};
    const auto queue = Own_Queue();
    if (!queue || !Is_Usable(filter)) return -1;
    for (;;) {
        const std::uint32_t seen = queue->Seen();
        queue->Answer_Sent();
        if (queue->Take(filter, true, *message)) return message->message != WM_QUIT;
        if (!Is_Usable(filter)) return -1;
        queue->Row().Set_Idle();
        queue->Sleep(seen, 1000);
    }
}

BOOL TranslateMessage(const MSG *message) {
    if (message->message != WM_KEYDOWN) return FALSE;
    const unsigned char character = Character_Of_Key(*message);
    return character && PostMessageA(message->hwnd, WM_CHAR, character, message->lParam);
}

LRESULT DispatchMessageA(const MSG *message) {
    if (!message->hwnd) return 0;
    const WindowPointer window =
        Within_Memory(WindowPointer(), [&] { return Find_Window_Or_Tell(message->hwnd); });
    return window ? Send_To(window, message->message, message->wParam, message->lParam) : 0;
}

DWORD MsgWaitForMultipleObjects(DWORD count, const HANDLE *handles, BOOL all, DWORD milliseconds,
                                DWORD mask) {
    if (all || count > Most_Waited_For || (count && !handles)) return Wait_Failed(ERROR_INVALID_PARAMETER);
    const WaitedFor held(count, handles);
    if (!held.All_There()) return Wait_Failed(ERROR_INVALID_HANDLE);
    const auto queue = Own_Queue();
    if (!queue) return WAIT_FAILED;
    const Deadline deadline(milliseconds);
    for (;;) {
        const SleepWord woken = {&queue->Row().woken, queue->Seen()};
        const DWORD at_once = Try_First(held.Objects());
        if (at_once != WAIT_TIMEOUT) return at_once;
        if (queue->Has(mask)) return WAIT_OBJECT_0 + count;
        queue->Answer_Sent();
        if (deadline.Left() == 0) return WAIT_TIMEOUT;
        queue->Row().Set_Idle();
        const Deadline round(static_cast<DWORD>(std::min(deadline.Left(), Round_Milliseconds)));
        const DWORD result = Wait_For_First(held.Objects(), round, &woken);
        if (result != WAIT_TIMEOUT) return result;
    }
}
}
