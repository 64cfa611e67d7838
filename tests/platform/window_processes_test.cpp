// Windows as other processes see and change them.

#include <platform/kernel.h>
#include <platform/user.h>
#include <tests/support/handles.h>
#include <tests/support/second_process.h>
#include <tests/support/window_verbs.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

HWND Window_From(const std::string &number) {
    return reinterpret_cast<HWND>(std::stoul(number));
}

std::string Number_Of(HWND window) {
    return std::to_string(reinterpret_cast<unsigned long>(window));
}

void Look_At_Messages() {
    MSG message;
    while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageA(&message);
}

} // namespace

SECOND_PROCESS(window_owner) {
    TestWindow main(WS_OVERLAPPEDWINDOW | WS_VISIBLE, {10, 20, 300, 200}, nullptr, 0, {}, "Their title");
    TestWindow popup(WS_POPUP, {10, 20, 30, 40}, main);
    TestWindow child(WS_CHILD, {10, 20, 30, 40}, main);
    process.Tell(Number_Of(main));
    process.Tell(Number_Of(popup));
    process.Tell(Number_Of(child));
    for (std::string command = process.Hear(); !command.empty(); command = process.Hear()) {
        if (command == "look") {
            main.Heard();
            Look_At_Messages();
            process.Tell(main.Heard());
        }
        if (command == "minimise") ShowWindow(main, SW_MINIMIZE);
        if (command == "zoom") ShowWindow(main, SW_SHOWMAXIMIZED);
        if (command == "hide") ShowWindow(main, SW_HIDE);
        if (command == "show") ShowWindow(main, SW_SHOW);
        if (command == "popup") ShowWindow(popup, SW_SHOW);
        if (command == "name") SetWindowTextA(main, "Another title");
        if (command == "place") process.Tell(Place_Of(main));
        if (command == "end") return 0;
        if (command != "look" && command != "place") process.Tell("done");
    }
    return 0;
}

namespace {

struct Owner {
    Owner()
        : process("window_owner"),
          main(Window_From(process.Hear())),
          popup(Window_From(process.Hear())),
          child(Window_From(process.Hear())) {}
    std::string Do(const std::string &command) {
        process.Tell(command);
        return process.Hear();
    }

    SecondProcess process;
    HWND main, popup, child;
};

TEST_F(WindowTest, Another_Process_S_Windows_Are_Seen_And_Brought_Forward) {
    Owner other;
    EXPECT_TRUE(IsWindow(other.main));
    EXPECT_FALSE(IsWindow(other.child)); // known to its process alone
    EXPECT_EQ(Title_Of(other.main), "Their title");
    other.Do("name");
    EXPECT_EQ(Title_Of(other.main), "Another title");
    EXPECT_EQ(GetWindowTextLengthA(other.main), 13);
    DWORD process_id = 0;
    EXPECT_NE(GetWindowThreadProcessId(other.main, &process_id), 0u);
    EXPECT_EQ(process_id, static_cast<DWORD>(other.process.Id()));
    EXPECT_EQ(GetForegroundWindow(), other.main);
    EXPECT_EQ(GetLastActivePopup(other.main), other.main);
    other.Do("popup");
    EXPECT_EQ(GetLastActivePopup(other.main), other.popup);
    EXPECT_TRUE(IsWindowVisible(other.popup));

    other.Do("minimise");
    EXPECT_TRUE(IsIconic(other.main));
    EXPECT_TRUE(ShowWindow(other.main, SW_RESTORE));
    EXPECT_FALSE(IsIconic(other.main));
    TestWindow mine(WS_POPUP | WS_VISIBLE, {0, 0, 9, 9});
    EXPECT_EQ(GetForegroundWindow(), mine);
    EXPECT_EQ(other.Do("look"), "WM_WINDOWPOSCHANGING WM_WINDOWPOSCHANGED WM_MOVE WM_SIZE");
    EXPECT_EQ(other.Do("place"), "10 20 300 200");
    mine.Heard();
    EXPECT_TRUE(SetForegroundWindow(other.main));
    EXPECT_EQ(other.Do("look"), "WM_ACTIVATE WM_SETFOCUS");
    Look_At_Messages();
    EXPECT_EQ(mine.Heard(), "WM_ACTIVATE WM_KILLFOCUS");
    EXPECT_EQ(GetFocus(), nullptr);

    RECT r;
    EXPECT_EQ(Error_Of(GetWindowRect(other.main, &r)), ERROR_ACCESS_DENIED);
    EXPECT_EQ(Error_Of(PostMessageA(other.main, WM_USER, 0, 0)), ERROR_ACCESS_DENIED);
    EXPECT_EQ(Error_Of(DestroyWindow(other.main)), ERROR_ACCESS_DENIED);
}

TEST_F(WindowTest, A_Window_Restored_From_Outside_Gets_Where_It_Belongs) {
    Owner other;
    other.Do("minimise");
    ShowWindow(other.main, SW_RESTORE);
    other.Do("hide"); // its thread has not looked yet
    other.Do("show");
    other.Do("look");
    EXPECT_FALSE(IsIconic(other.main));
    EXPECT_EQ(other.Do("place"), "10 20 300 200");
    other.Do("zoom");
    other.Do("minimise");
    ShowWindow(other.main, SW_RESTORE);
    EXPECT_TRUE(IsZoomed(other.main));
    other.Do("look");
    EXPECT_EQ(other.Do("place"), "-4 -4 1028 772");
}

const LOGFONTA Some_Font = {};

// In a forked child: true when it has windows of its own and leaves its parent's alone.
bool Works_On_Its_Own(HWND parent_s) {
    if (Window_Count() != 0 || DestroyWindow(parent_s) || !IsWindow(parent_s)) return false;
    const HWND own = TestWindow::Make();
    DWORD process_id = 0;
    GetWindowThreadProcessId(own, &process_id);
    const HMENU menu = CreateMenu();
    const HFONT font = CreateFontIndirectA(&Some_Font);
    return process_id == static_cast<DWORD>(getpid()) && DestroyWindow(own) && menu && DestroyMenu(menu) &&
           DeleteObject(font);
}

TEST_F(WindowTest, A_Fork_Has_None_Of_Its_Parent_S_Windows) {
    TestWindow mine(WS_POPUP | WS_VISIBLE, {0, 0, 9, 9});
    std::atomic<bool> over{false};
    std::jthread busy([&] { // holds their locks for most of the time
        while (!over) DestroyMenu(CreateMenu()), DeleteObject(CreateFontIndirectA(&Some_Font));
    });
    for (int i = 0; i < 20; ++i) {
        const pid_t child = fork();
        if (child == 0) {
            alarm(20);
            _exit(Works_On_Its_Own(mine) ? 0 : 1);
        }
        int status = -1;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        EXPECT_EQ(status, 0);
    }
    over = true;
    EXPECT_TRUE(IsWindow(mine));
    EXPECT_TRUE(IsWindowVisible(mine));
}

TEST_F(WindowTest, A_Table_That_Cannot_Be_Had_Says_Nothing_Of_A_Window) {
    rlimit before;
    getrlimit(RLIMIT_NOFILE, &before);
    const rlimit none = {0, before.rlim_max};
    setrlimit(RLIMIT_NOFILE, &none);
    const long error = Error_Of(IsWindow(reinterpret_cast<HWND>(4000)));
    setrlimit(RLIMIT_NOFILE, &before);
    EXPECT_TRUE(error != NO_ERROR && error != ERROR_INVALID_WINDOW_HANDLE) << error;
    EXPECT_EQ(Error_Of(IsWindow(reinterpret_cast<HWND>(4000))), ERROR_INVALID_WINDOW_HANDLE);
}

TEST_F(WindowTest, A_Hung_Process_Holds_Nobody_Up) {
    Owner other;
    kill(other.process.Id(), SIGSTOP);
    EXPECT_EQ(Title_Of(other.main), "Their title");
    EXPECT_TRUE(ShowWindow(other.main, SW_MINIMIZE));
    EXPECT_TRUE(IsIconic(other.main));
    EXPECT_TRUE(SetForegroundWindow(other.main));
    kill(other.process.Id(), SIGCONT);
}

TEST_F(WindowTest, A_Killed_Process_S_Windows_Are_Dead_At_Once) {
    Owner other;
    ASSERT_EQ(GetForegroundWindow(), other.main);
    kill(other.process.Id(), SIGKILL);
    siginfo_t info; // its remains stay: nobody has reaped it
    ASSERT_EQ(waitid(P_PID, static_cast<id_t>(other.process.Id()), &info, WEXITED | WNOWAIT), 0);
    EXPECT_FALSE(IsWindow(other.main));
    EXPECT_FALSE(IsWindow(other.popup));
    EXPECT_EQ(GetForegroundWindow(), nullptr);
    EXPECT_EQ(GetWindowThreadProcessId(other.main, nullptr), 0u);
    EXPECT_EQ(Title_Of(other.main), "");
    Owner next;
    EXPECT_NE(next.main, other.main);
    EXPECT_FALSE(IsWindow(other.main));
}

} // namespace

// Changes the table without a pause until it is killed.
SECOND_PROCESS(window_churner) {
    process.Tell("ready");
    for (;;) TestWindow window(WS_POPUP | WS_VISIBLE, {0, 0, 9, 9}, nullptr, 0, {}, "Churned");
}

namespace {

TEST_F(WindowTest, Killed_Writers_Leave_A_Table_That_Works) {
    TestWindow mine(WS_POPUP, {0, 0, 9, 9}, nullptr, 0, {}, "Mine");
    for (int round = 0; round < 8; ++round) {
        SecondProcess churner("window_churner");
        ASSERT_EQ(churner.Hear(), "ready");
        std::this_thread::sleep_for(std::chrono::milliseconds(3 + round));
        churner.Kill();
        TestWindow fresh(WS_POPUP, {0, 0, 9, 9}, nullptr, 0, {}, "Fresh");
        EXPECT_EQ(Title_Of(fresh), "Fresh");
        EXPECT_EQ(Title_Of(mine), "Mine");
    }
}

TEST_F(WindowTest, The_Table_Has_Room_For_512_And_Uses_It_Again) {
    std::vector<HWND> windows;
    while (const HWND window = TestWindow::Make()) windows.push_back(window);
    EXPECT_EQ(windows.size(), 512u);
    EXPECT_EQ(Error_Of(TestWindow::Make()), ERROR_NOT_ENOUGH_QUOTA);
    for (const HWND window : windows) EXPECT_TRUE(DestroyWindow(window));
    const HWND again = TestWindow::Make();
    EXPECT_TRUE(IsWindow(again));
    EXPECT_EQ(std::count(windows.begin(), windows.end(), again), 0);
    DestroyWindow(again);
}

} // namespace

SECOND_PROCESS(slow_starter) {
    TestWindow window(WS_POPUP, {0, 0, 9, 9});
    process.Tell("made");
    process.Hear();
    Look_At_Messages();
    process.Tell("looked");
    process.Hear();
    return 0;
}

SECOND_PROCESS(without_windows) {
    process.Tell("ready");
    process.Hear();
    return 0;
}

namespace {

TEST_F(WindowTest, A_Process_Is_Idle_Once_It_Has_Waited_For_Input) {
    SecondProcess plain("without_windows"), slow("slow_starter");
    plain.Hear();
    slow.Hear();
    const auto open = [](SecondProcess &process) {
        return OpenProcess(PROCESS_ALL_ACCESS, TRUE, static_cast<DWORD>(process.Id()));
    };
    const TestHandle plain_process(open(plain)), slow_process(open(slow));
    EXPECT_EQ(WaitForInputIdle(plain_process, 3000), WAIT_FAILED);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_NOT_GUI_PROCESS));
    EXPECT_EQ(WaitForInputIdle(slow_process, 30), WAIT_TIMEOUT);
    slow.Tell("look");
    EXPECT_EQ(WaitForInputIdle(slow_process, INFINITE), 0u);
    slow.Hear();
    slow.Kill();
    WaitForSingleObject(slow_process, INFINITE);
    EXPECT_EQ(WaitForInputIdle(slow_process, 3000), WAIT_FAILED);
    EXPECT_EQ(WaitForInputIdle(GetCurrentProcess(), 3000), 0u);
}

} // namespace
