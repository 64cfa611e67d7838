#include <platform/user/hands/keys.h>
#include <platform/user/thread_queue.h>
#include <platform/user/window_table.h>

#include <platform/kernel.h>
#include <platform/kernel/outcome.h>

#include <algorithm>

namespace {

constexpr DWORD Most_Objects = 63;
constexpr DWORD Look_At_Objects_Every = 5; // milliseconds

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

// The index of the first object that is to be had, WAIT_TIMEOUT for none.
DWORD Try_Objects(DWORD count, const HANDLE *handles) {
    for (DWORD i = 0; i < count; ++i) {
        const DWORD result = WaitForSingleObject(handles[i], 0);
        if (result == WAIT_FAILED) return WAIT_FAILED;
        if (result != WAIT_TIMEOUT) return result + i;
    }
    return WAIT_TIMEOUT;
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
    if (all || count > Most_Objects || (count && !handles)) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return WAIT_FAILED;
    }
    const auto queue = Own_Queue();
    if (!queue) return WAIT_FAILED;
    const DWORD begin = GetTickCount();
    for (;;) {
        const std::uint32_t seen = queue->Seen();
        const DWORD object = Try_Objects(count, handles);
        if (object != WAIT_TIMEOUT) return object;
        if (queue->Has(mask)) return WAIT_OBJECT_0 + count;
        queue->Answer_Sent();
        const DWORD passed = GetTickCount() - begin;
        if (milliseconds != INFINITE && passed >= milliseconds) return WAIT_TIMEOUT;
        queue->Row().Set_Idle();
        const DWORD left = milliseconds == INFINITE ? INFINITE : milliseconds - passed;
        queue->Sleep(seen, std::min<DWORD>(left, count ? Look_At_Objects_Every : 1000));
    }
}
}
