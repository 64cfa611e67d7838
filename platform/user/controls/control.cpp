#include <platform/user/controls/control.h>

#include <platform/gdi/fonts.h>
#include <platform/user/thread_queue.h>

#include <utility>

void Capture_Pointer(HWND window, HWND part_of) {
    const std::shared_ptr<ThreadQueue> queue = ThreadQueue::Existing();
    if (!queue) return;
    const TreeLock lock;
    queue->pointer_held_by = window;
    queue->pointer_held_for = part_of;
}

void Release_Pointer(HWND window) {
    const std::shared_ptr<ThreadQueue> queue = ThreadQueue::Existing();
    const TreeLock lock;
    if (queue && queue->pointer_held_by == window) queue->pointer_held_by = queue->pointer_held_for = nullptr;
}

HWND Captured_By() {
    const std::shared_ptr<ThreadQueue> queue = ThreadQueue::Existing();
    const TreeLock lock;
    return queue ? queue->pointer_held_by : nullptr;
}

LRESULT Control::Answer(UINT message, WPARAM wparam, LPARAM lparam) {
    switch (message) {
    case WM_SETFONT:
        font_ = reinterpret_cast<HFONT>(wparam);
        Changed();
        return 0;
    case WM_GETFONT:
        return As_Parameter(font_);
    case WM_SETREDRAW:
        redraws_ = wparam != 0;
        if (redraws_ && std::exchange(changed_unseen_, false)) Changed();
        return 0;
    case WM_ENABLE:
        Changed();
        return 0;
    case WM_SETTEXT: {
        const LRESULT kept = Default(message, wparam, lparam);
        Changed();
        return kept;
    }
    case WM_CANCELMODE:
    case WM_NCDESTROY:
        Release_Pointer(window_);
        return Default(message, wparam, lparam);
    default:
        return Default(message, wparam, lparam);
    }
}

bool Control::Can_Be_Used() const {
    const WindowPointer window = Find_Window(window_);
    const TreeLock lock;
    if (!window || !window->Is_Visible_In_All()) return false;
    for (const Window *each = window.get(); each; each = each->parent) {
        if (each->style & WS_DISABLED) return false;
    }
    return true;
}

LONG Control::Line_Height() const {
    return Font_Of_Handle(font_).cell_height;
}

LONG Control::Width_Of_Text(const char *text, std::size_t length) const {
    return Width_Of(Font_Of_Handle(font_), text, static_cast<int>(length));
}

RECT Control::Client() const {
    RECT client = {};
    GetClientRect(window_, &client);
    return client;
}

bool Control::Is_In_Client(LPARAM point) const {
    const RECT client = Client();
    const POINT at = Point_Of(point);
    return at.x >= 0 && at.y >= 0 && at.x < client.right && at.y < client.bottom;
}

void Control::Changed() {
    if (redraws_)
        InvalidateRect(window_, nullptr, TRUE);
    else
        changed_unseen_ = true;
}

bool Control::Notify(UINT notice) {
    Notify_Parent(window_, notice);
    return Find_Window(window_) != nullptr;
}
