#include <platform/user/hands/hit.h>
#include <platform/user/hands/queue_work.h>

#include <platform/machine.h>
#include <platform/user/controls/control.h>

namespace {

LPARAM In_Client(HWND window, POINT place) {
    ScreenToClient(window, &place);
    return Packed_Point(place);
}

LPARAM Packed_Hit(LRESULT code, UINT message) {
    return static_cast<LPARAM>((static_cast<DWORD>(code) & 0xFFFF) | DWORD{message} << 16);
}

// What the pointer does goes to the window that holds it, else to what lies there.
Hit Receiver_At(POINT place) {
    const HWND held = Captured_By();
    if (held && IsWindow(held)) return {held, nullptr, HTCLIENT};
    return Within_Memory(Hit(), [place] { return Hit_At(place); });
}

// What the pointer is to look like is asked before each of its messages, unless a window holds it.
void Ask_For_Cursor(const Hit &hit, UINT message) {
    if (Captured_By()) return;
    SendMessageA(hit.window, WM_SETCURSOR, reinterpret_cast<WPARAM>(hit.window),
                 Packed_Hit(hit.code, message));
}

bool Move(POINT place, WPARAM buttons) {
    const Hit hit = Receiver_At(place);
    if (!hit.window) return false;
    Ask_For_Cursor(hit, WM_MOUSEMOVE);
    if (hit.code != HTCLIENT || !IsWindow(hit.window)) return true;
    return Post_And_Work(hit.window, WM_MOUSEMOVE, buttons, In_Client(hit.window, place));
}

void Activate_By_Click(HWND topmost) {
    if (!topmost || GetActiveWindow() == topmost) return;
    const bool is_child = GetWindowLongA(topmost, GWL_STYLE) & static_cast<LONG>(WS_CHILD);
    if (!is_child) SetForegroundWindow(topmost);
}

bool Press(POINT place) {
    const Hit hit = Receiver_At(place);
    if (!hit.window) return false;
    Activate_By_Click(hit.topmost);
    Ask_For_Cursor(hit, WM_LBUTTONDOWN);
    if (hit.code != HTCLIENT || !IsWindow(hit.window)) return true;
    return Post_And_Work(hit.window, WM_LBUTTONDOWN, MK_LBUTTON, In_Client(hit.window, place));
}

void Let_Go(POINT place) {
    const Hit hit = Receiver_At(place);
    if (!hit.window) return;
    Ask_For_Cursor(hit, WM_LBUTTONUP);
    if (hit.code == HTCLIENT && IsWindow(hit.window))
        Post_And_Work(hit.window, WM_LBUTTONUP, 0, In_Client(hit.window, place));
}

POINT Middle_Of(HWND window) {
    RECT r = {};
    GetWindowRect(window, &r);
    return {r.left + (r.right - r.left) / 2, r.top + (r.bottom - r.top) / 2};
}

// Whether a person would reach the window there, or something that stands in it.
bool Lies_Open(HWND window, POINT place) {
    if (!IsWindow(window) || !IsWindowEnabled(window)) return false;
    const Hit hit = Within_Memory(Hit(), [place] { return Hit_At(place); });
    return hit.window && (hit.window == window || IsChild(window, hit.window));
}

} // namespace

extern "C" {

bool Point_At(LONG x, LONG y) {
    return !Hands_Are_Busy() && Move({x, y}, 0);
}

bool Point_At_Window(HWND window) {
    const POINT middle = Middle_Of(window);
    return !Hands_Are_Busy() && Lies_Open(window, middle) && Move(middle, 0);
}

bool Click_At(LONG x, LONG y) {
    if (Hands_Are_Busy() || !Move({x, y}, 0)) return false;
    const bool pressed = Press({x, y});
    if (pressed) Let_Go({x, y});
    return pressed;
}

bool Click_Window(HWND window) {
    const POINT middle = Middle_Of(window);
    return !Hands_Are_Busy() && Lies_Open(window, middle) && Click_At(middle.x, middle.y);
}
}
