#include <reference_suite/programs/road/running_twice.h>

#include <reference_suite/programs/road/narrator.h>
#include <reference_suite/programs/road/neighbour.h>

#include <kelmara/kelmara.h>

#include <platform/kernel.h>
#include <platform/user.h>

#include <cstdio>
#include <string>

namespace {

constexpr char Key[] = "Kelmara", Subkey[] = "Road";

std::string Title_Of(HWND window) {
    char title[200] = {};
    GetWindowTextA(window, title, sizeof title);
    return title;
}

/// The main window of a copy, for the length of a scope.
class MainWindow {
  public:
    explicit MainWindow(const char *title) {
        WNDCLASSA window_class = {};
        window_class.lpfnWndProc = DefWindowProcA;
        window_class.lpszClassName = "Road";
        RegisterClassA(&window_class);
        window_ = CreateWindowExA(0, "Road", title, WS_OVERLAPPEDWINDOW | WS_VISIBLE, 100, 100, 400, 300,
                                  nullptr, nullptr, nullptr, nullptr);
        Require(window_ != nullptr, "a program can have a window");
        Look_At_Messages();
    }
    ~MainWindow() { DestroyWindow(window_); }
    MainWindow(const MainWindow &) = delete;
    MainWindow &operator=(const MainWindow &) = delete;
    operator HWND() const { return window_; }

    static void Look_At_Messages() {
        MSG message;
        while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageA(&message);
    }

  private:
    HWND window_;
};

HWND Find_Window_Called(const std::string &title) {
    struct Search {
        const std::string &title;
        HWND found = nullptr;
    } search{title};
    EnumChildWindows(
        nullptr,
        [](HWND window, LPARAM context) -> BOOL {
            auto &wanted = *reinterpret_cast<Search *>(context);
            if (Title_Of(window) == wanted.title) wanted.found = window;
            return !wanted.found;
        },
        reinterpret_cast<LPARAM>(&search));
    return search.found;
}

} // namespace

void Start_Twice() {
    Begin_Chapter("A program that is started twice");
    const MainWindow window("The Road");
    Require(First_Instance(Key, Subkey, window), "this is the first copy");
    SetWindowTextA(window, "The Road, further on");
    Update_Instance(Key, window);
    ShowWindow(window, SW_MINIMIZE);
    Require(IsIconic(window), "its window can be made an icon");
    Tell("Process %lu registers its window, names it \"%s\",", GetCurrentProcessId(),
         Title_Of(window).c_str());
    Tell("and makes an icon of it.");
    Neighbour second("second copy");
    Require(second.Hear() == "the first lives", "the second copy finds the first");
    Require(second.Wait() == 0, "the second copy ends well");
    MainWindow::Look_At_Messages();
    Require(!IsIconic(window), "the first copy's window is restored");
    Require(GetForegroundWindow() == window, "the first copy's window is in front");
    Tell("Process %d, a second copy, finds it, restores it, brings it to the front and ends.", second.Id());
}

int Be_The_Second_Copy() {
    const MainWindow window("The Road");
    Require(Instance_Available(Key, Subkey), "a second copy sees that there is one");
    const bool first = First_Instance(Key, Subkey, window);
    std::printf("%s\n", first ? "none lives" : "the first lives");
    return first ? 1 : 0;
}

void Show_A_Wait_Window() {
    Begin_Chapter("A program that is busy");
    Open_Kelmara_Wait_Window();
    const std::string text = "Please wait ...";
    const HWND window = Find_Window_Called(text);
    Require(window && IsWindowVisible(window), "the wait window is open");
    Tell("The companion that \"Wait\" names shows \"%s\",", text.c_str());
    Show_Kelmara_Wait_Window(false);
    Require(!IsWindowVisible(window), "the wait window can be hidden");
    Show_Kelmara_Wait_Window(true);
    Require(IsWindowVisible(window), "the wait window can be shown again");
    Close_Kelmara_Wait_Window();
    Require(!IsWindow(window), "the wait window is closed");
    Tell("hides it, shows it again, and closes it.");
}
