#include <reference_suite/programs/road/call_window.h>

#include <reference_suite/programs/road/narrator.h>

#include <kelmara/connectivity/connection_utility.h>

#include <platform/kernel.h>

namespace {

constexpr char Class_Name[] = "RoadCall";
constexpr DWORD Patience = 20000; // milliseconds

} // namespace

CallWindow::CallWindow() {
    WNDCLASSA window_class = {};
    window_class.lpfnWndProc = Take_Message;
    window_class.lpszClassName = Class_Name;
    RegisterClassA(&window_class);
    window_ =
        CreateWindowExA(0, Class_Name, "", WS_POPUP, 0, 0, 100, 100, nullptr, nullptr, nullptr, nullptr);
    Require(window_ != nullptr, "a window can be had for the call");
    SetWindowLongA(window_, GWL_USERDATA, reinterpret_cast<LONG>(this));
}

CallWindow::~CallWindow() {
    DestroyWindow(window_);
}

LRESULT CallWindow::Take_Message(HWND window, UINT message, WPARAM first, LPARAM second) {
    auto *const self = reinterpret_cast<CallWindow *>(GetWindowLongA(window, GWL_USERDATA));
    if (message != Connection_Message || !self) return DefWindowProcA(window, message, first, second);
    self->heard_ += first ? '+' : '-';
    return 0;
}

bool CallWindow::Hear_Of_A_Connection() {
    const DWORD begin = GetTickCount();
    for (DWORD waited = 0; heard_.empty() && waited < Patience; waited = GetTickCount() - begin) {
        MsgWaitForMultipleObjects(0, nullptr, FALSE, Patience - waited, QS_ALLEVENTS);
        MSG message;
        if (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageA(&message);
    }
    Require(!heard_.empty(), "the monitor tells the window of the connection");
    const bool is_up = heard_.front() == '+';
    heard_.erase(0, 1);
    return is_up;
}
