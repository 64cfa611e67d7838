#include <reference_suite/companions/wait/wait_window_thread.h>

#include <platform/kernel.h>

#include <semaphore>

namespace {

// Where the window's thread answers. Here for good, for it may still be in `release` when the answer is had.
std::binary_semaphore Answer{0};

constexpr char Class_Name[] = "Kelmara Wait Window";
constexpr char Text[] = "Please wait ...";
constexpr int Width = 320, Height = 90; // pixels

constexpr UINT Show_Message = WM_USER + 1;  // wparam: whether to show; answered
constexpr UINT Close_Message = WM_USER + 2; // the window's thread ends behind it

LRESULT Procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    switch (message) {
    case Show_Message:
        ShowWindow(window, wparam ? SW_SHOWNOACTIVATE : SW_HIDE);
        Answer.release();
        return 0;
    case Close_Message:
        DestroyWindow(window);
        return 0;
    case WM_CLOSE: // the program's to close, not the user's
        return 0;
    case WM_DESTROY:
        PostQuitMessage(0);
        return 0;
    default:
        return DefWindowProcA(window, message, wparam, lparam);
    }
}

// Known as long as the window is there: the module, and the procedure with it, may lie elsewhere next time.
class RegisteredClass {
  public:
    RegisteredClass() {
        WNDCLASSA window_class = {};
        window_class.lpfnWndProc = Procedure;
        window_class.lpszClassName = Class_Name;
        RegisterClassA(&window_class);
    }
    ~RegisteredClass() { UnregisterClassA(Class_Name, nullptr); }
    RegisteredClass(const RegisteredClass &) = delete;
    RegisteredClass &operator=(const RegisteredClass &) = delete;
};

HWND Make_Window() {
    const HWND window = CreateWindowExA(
        0, Class_Name, Text, WS_POPUP | WS_CAPTION, (GetSystemMetrics(SM_CXSCREEN) - Width) / 2,
        (GetSystemMetrics(SM_CYSCREEN) - Height) / 2, Width, Height, nullptr, nullptr, nullptr, nullptr);
    if (window) ShowWindow(window, SW_SHOWNOACTIVATE);
    return window;
}

void Serve(HWND &window) {
    const RegisteredClass window_class;
    window = Make_Window();
    const bool opened = window != nullptr;
    Answer.release();
    if (!opened) return;
    MSG message;
    while (GetMessageA(&message, nullptr, 0, 0) > 0) DispatchMessageA(&message);
}

} // namespace

WaitWindowThread::WaitWindowThread() : process_(GetCurrentProcessId()) {}

void WaitWindowThread::Open() {
    if (Is_Forked()) return;
    const std::lock_guard guard(lock_);
    if (Is_Open()) return;
    thread_ = std::thread([this] { Serve(window_); });
    Answer.acquire();
    if (!window_) thread_.join();
}

void WaitWindowThread::Close() {
    if (Is_Forked()) return;
    const std::lock_guard guard(lock_);
    if (!Is_Open()) return;
    while (!PostMessageA(window_, Close_Message, 0, 0) && IsWindow(window_)) Sleep(1); // a full queue
    thread_.join();
}

void WaitWindowThread::Show(bool show) {
    if (Is_Forked()) return;
    const std::lock_guard guard(lock_);
    if (!Is_Open()) return;
    if (PostMessageA(window_, Show_Message, show, 0)) Answer.acquire();
}

bool WaitWindowThread::Is_Open() const {
    return thread_.joinable();
}

bool WaitWindowThread::Is_Forked() const {
    return process_ != GetCurrentProcessId();
}
