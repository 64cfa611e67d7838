#include <platform/user/window_table.h>

#include <platform/kernel.h>
#include <platform/kernel/outcome.h>

#include <algorithm>
#include <cstring>

namespace {

// Empty, and false, unless the window is another process's.
bool Find_Title(HWND handle, std::string &title) {
    if (Find_Window(handle)) return false;
    const MachineWindow found = Find_On_Machine(handle);
    if (found) title = SharedWindows::Title(*found.row);
    return static_cast<bool>(found);
}

int Give(const std::string &title, LPSTR text, int size) {
    const std::size_t length = std::min(title.size(), static_cast<std::size_t>(size) - 1);
    std::memcpy(text, title.data(), length);
    text[length] = 0;
    return static_cast<int>(length);
}

} // namespace

extern "C" {

int GetWindowTextA(HWND handle, LPSTR text, int size) {
    if (!text || size <= 0) return 0;
    std::string title;
    if (Within_Memory(false, [&] { return Find_Title(handle, title); })) return Give(title, text, size);
    *text = 0;
    const LRESULT told = SendMessageA(handle, WM_GETTEXT, static_cast<WPARAM>(size), As_Parameter(text));
    text[size - 1] = 0; // whatever the procedure has done
    return static_cast<int>(std::clamp<LRESULT>(told, 0, size - 1));
}

int GetWindowTextLengthA(HWND handle) {
    std::string title;
    if (Within_Memory(false, [&] { return Find_Title(handle, title); }))
        return static_cast<int>(title.size());
    return static_cast<int>(SendMessageA(handle, WM_GETTEXTLENGTH, 0, 0));
}

BOOL SetWindowTextA(HWND handle, LPCSTR text) {
    const WindowPointer window = Within_Memory(WindowPointer(), [&] { return Find_Window_Or_Tell(handle); });
    return window && Send_To(window, WM_SETTEXT, 0, As_Parameter(text ? text : "")) > 0;
}
}
