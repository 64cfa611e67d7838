#include <platform/user/window_table.h>

#include <platform/kernel.h>
#include <platform/kernel/outcome.h>

#include <algorithm>
#include <cstring>

namespace {

bool Find_Known_Text(HWND handle, std::string &text) {
    if (const MachineWindow found = Find_On_Machine(handle)) {
        text = SharedWindows::Title(*found.row);
        return true;
    }
    // The table that cannot be had says nothing of a window.
    if (!SharedWindows::Current()) return false;
    const WindowPointer window = Find_Window_Or_Tell(handle);
    if (!window) return false;
    const TreeLock lock;
    text = window->text;
    return true;
}

} // namespace

extern "C" int InternalGetWindowTextA(HWND handle, LPSTR text, int size) {
    if (!text || size <= 0) return 0;
    *text = 0;
    std::string known;
    if (!Within_Memory(false, [&] { return Find_Known_Text(handle, known); })) return 0;
    const std::size_t length = std::min(known.size(), static_cast<std::size_t>(size) - 1);
    std::memcpy(text, known.data(), length);
    text[length] = 0;
    return static_cast<int>(length);
}
