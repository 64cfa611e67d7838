#include <platform/user/window_table.h>

#include <platform/kernel.h>
#include <platform/kernel/outcome.h>
#include <platform/machine.h>

#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <new>
#include <pthread.h>
#include <unordered_map>

namespace {

constinit std::recursive_mutex tree_lock;
constinit thread_local unsigned tree_lock_depth = 0;

struct Windows {
    std::unordered_map<HWND, WindowPointer> by_handle;
    WindowPointer desktop;
};

constinit Windows *the_windows = nullptr; // under the lock

const HWND Desktop_Handle = reinterpret_cast<HWND>(16); // generation 0: no other window has it

WindowPointer Make_Desktop() {
    auto desktop = std::make_shared<Window>();
    auto desktop_class = std::make_shared<WindowClass>();
    desktop_class->name = "#32769";
    desktop_class->procedure = DefWindowProcA;
    desktop->handle = Desktop_Handle;
    desktop->procedure = DefWindowProcA;
    desktop->window_class = std::move(desktop_class);
    desktop->style = WS_POPUP | WS_VISIBLE;
    return desktop;
}

// A forked child has none of the windows; the lock may be another thread's of the parent for ever.
void Begin_Anew_In_Child() {
    new (&tree_lock) std::recursive_mutex;
    tree_lock_depth = 0;
    the_windows = nullptr;
}

Windows &The_Windows() {
    [[maybe_unused]] static const int told = pthread_atfork(nullptr, nullptr, Begin_Anew_In_Child);
    const TreeLock lock;
    if (!the_windows) {
        auto fresh = std::make_unique<Windows>();
        fresh->desktop = Make_Desktop();
        the_windows = fresh.release();
    }
    return *the_windows;
}

std::unordered_map<HWND, WindowPointer> &Table() {
    return The_Windows().by_handle;
}

} // namespace

TreeLock::TreeLock() {
    tree_lock.lock();
    ++tree_lock_depth;
}

TreeLock::~TreeLock() {
    --tree_lock_depth;
    tree_lock.unlock();
}

bool TreeLock::Held_By_This_Thread() {
    return tree_lock_depth != 0;
}

Window &Desktop() {
    return *The_Windows().desktop;
}

Window &Desktop_Of_The_Screen() {
    Desktop().rectangle = {0, 0, GetSystemMetrics(SM_CXSCREEN), GetSystemMetrics(SM_CYSCREEN)};
    return Desktop();
}

void Enter_In_Table(const WindowPointer &window) {
    Table().emplace(window->handle, window);
}

void Remove_From_Table(HWND handle) {
    Table().erase(handle);
}

WindowPointer Any_Window_Of(const ThreadQueue &queue) {
    for (const auto &[handle, window] : Table()) {
        if (window->queue.get() == &queue) return window;
    }
    return nullptr;
}

WindowPointer Find_Window(HWND handle) {
    if (!handle) return nullptr;
    const TreeLock lock;
    if (handle == Desktop_Handle) {
        Desktop_Of_The_Screen();
        return The_Windows().desktop;
    }
    const auto found = Table().find(handle);
    return found == Table().end() ? nullptr : found->second;
}

MachineWindow Find_On_Machine(HWND handle) {
    MachineWindow found;
    found.shared = SharedWindows::Current();
    if (found.shared) found.row = found.shared->Find(handle);
    return found;
}

// A table that cannot be had has told why.
static bool Is_On_Machine_Or_Tell(HWND handle) {
    const MachineWindow found = handle ? Find_On_Machine(handle) : MachineWindow();
    if (!found && (found.shared || !handle)) SetLastError(ERROR_INVALID_WINDOW_HANDLE);
    return static_cast<bool>(found);
}

WindowPointer Find_Window_Or_Tell(HWND handle) {
    WindowPointer window = Find_Window(handle);
    if (!window && Is_On_Machine_Or_Tell(handle)) SetLastError(ERROR_ACCESS_DENIED);
    return window;
}

extern "C" {

BOOL IsWindow(HWND window) {
    return Within_Memory(FALSE,
                         [&]() -> BOOL { return Find_Window(window) || Is_On_Machine_Or_Tell(window); });
}

HWND GetDesktopWindow() {
    return Desktop_Handle;
}

unsigned long Window_Count() {
    const TreeLock lock;
    return Table().size();
}
}
