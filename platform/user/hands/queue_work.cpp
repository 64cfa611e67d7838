#include <platform/user/hands/queue_work.h>

#include <platform/user/controls/groups.h>

#include <platform/kernel/outcome.h>

namespace {

constexpr int Most_Messages = 1000; // a program may post to itself for ever

constinit thread_local bool busy = false;

struct Busy {
    Busy() { busy = true; }
    ~Busy() { busy = false; }
    Busy(const Busy &) = delete;
    Busy &operator=(const Busy &) = delete;
};

HWND Topmost_Of(HWND window) {
    return Within_Memory(HWND(nullptr), [&]() -> HWND {
        const TreeLock lock;
        const WindowPointer found = Find_Window(window);
        return found ? Root_Of(*found).handle : nullptr;
    });
}

bool Has_Tab_Stops(HWND window) {
    return window && Within_Memory(false, [window] { return !Tab_Stops(window).empty(); });
}

void Hand_Over(MSG &message) {
    const HWND topmost = Topmost_Of(message.hwnd);
    if (Has_Tab_Stops(topmost) && IsDialogMessageA(topmost, &message)) return;
    TranslateMessage(&message);
    DispatchMessageA(&message);
}

} // namespace

bool Hands_Are_Busy() {
    return busy;
}

bool Post_And_Work(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    if (!PostMessageA(window, message, wparam, lparam)) return false;
    const Busy working;
    MSG next;
    for (int i = 0; i < Most_Messages && PeekMessageA(&next, nullptr, 0, 0, PM_REMOVE); ++i) {
        if (next.message == WM_QUIT) {
            PostQuitMessage(static_cast<int>(next.wParam));
            return true;
        }
        Hand_Over(next);
    }
    return true;
}
