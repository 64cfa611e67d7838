// The suite's wait companion, called as the library calls it.

#include <reference_suite/companions/wait/wait_companion.h>

#include <platform/kernel.h>

#include <tests/support/built_modules.h>
#include <tests/support/second_process.h>
#include <tests/support/window_verbs.h>

#include <cstdlib>
#include <filesystem>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

HWND wait_window; // that Find_Wait_Window has found

BOOL Find_By_Text(HWND window, LPARAM) {
    if (Title_Of(window) == "Please wait ...") wait_window = window;
    return TRUE;
}

HWND Find_Wait_Window() {
    wait_window = nullptr;
    EnumChildWindows(nullptr, Find_By_Text, 0);
    return wait_window;
}

/// Loaded for the length of a scope.
class WaitCompanion {
  public:
    WaitCompanion() { EXPECT_TRUE(startup && finished && show); }
    ~WaitCompanion() { FreeLibrary(module_); }
    WaitCompanion(const WaitCompanion &) = delete;
    WaitCompanion &operator=(const WaitCompanion &) = delete;

  private:
    template <class Routine>
    Routine Find(const char *name) const {
        return reinterpret_cast<Routine>(GetProcAddress(module_, name));
    }

    const HMODULE module_ = LoadLibraryA(("z:" + Suite_Module("kmwait.so")).c_str());

  public:
    decltype(&Startup) const startup = Find<decltype(&Startup)>("Startup");
    decltype(&Finished) const finished = Find<decltype(&Finished)>("Finished");
    decltype(&Show) const show = Find<decltype(&Show)>("Show");
};

class WaitCompanions : public WindowTest {};

TEST_F(WaitCompanions, ShowOneWindowHoweverOftenTheyAreAsked) {
    const WaitCompanion companion;
    companion.finished();
    companion.show(true);
    EXPECT_EQ(Window_Count(), 0u);
    TestWindow mine(WS_POPUP | WS_VISIBLE, {0, 0, 9, 9});
    companion.startup();
    companion.startup();
    EXPECT_EQ(Window_Count(), 2u);
    const HWND window = Find_Wait_Window();
    EXPECT_TRUE(IsWindowVisible(window));
    EXPECT_EQ(Place_Of(window), "352 339 672 429");
    EXPECT_EQ(GetForegroundWindow(), mine) << "the program keeps the focus";
    companion.show(false);
    EXPECT_FALSE(IsWindowVisible(window));
    companion.show(true);
    EXPECT_TRUE(IsWindowVisible(window));
    SendMessageA(window, WM_CLOSE, 0, 0);
    EXPECT_TRUE(IsWindow(window)) << "not the user's to close";
    companion.finished();
    EXPECT_FALSE(IsWindow(window));
    companion.finished();
    companion.startup();
    EXPECT_TRUE(IsWindowVisible(Find_Wait_Window()));
    companion.finished();
}

// The caller's windows answer nothing meanwhile, and the caller's threads come and go.
TEST_F(WaitCompanions, AreCalledFromAnyThread) {
    const WaitCompanion companion;
    std::thread([&] { companion.startup(); }).join();
    EXPECT_TRUE(IsWindowVisible(Find_Wait_Window())) << "outlives the thread that opened it";
    std::vector<std::jthread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([&, i] {
            for (int round = 0; round < 100; ++round) {
                i % 2 ? companion.startup() : companion.finished();
                companion.show(round % 2 != 0);
            }
        });
    threads.clear();
    companion.startup();
    EXPECT_EQ(Window_Count(), 1u);
    companion.finished();
}

int Threads() {
    int count = 0;
    for ([[maybe_unused]] const auto &thread : std::filesystem::directory_iterator("/proc/self/task"))
        ++count;
    return count;
}

TEST_F(WaitCompanions, LeaveNothingBehindWhenTheyAreUnloaded) {
    const int threads = Threads();
    for (int round = 0; round < 20; ++round) {
        {
            const WaitCompanion companion;
            companion.startup();
        }
        EXPECT_EQ(GetModuleHandleA(("z:" + Suite_Module("kmwait.so")).c_str()), nullptr);
        EXPECT_EQ(Window_Count(), 0u);
        EXPECT_EQ(Threads(), threads);
    }
}

} // namespace

// Ends with the window open; a fork of it ends too.
SECOND_PROCESS(wait_companion_user) {
    static const auto *companion = new WaitCompanion;
    companion->startup();
    int status = 0;
#ifndef __SANITIZE_ADDRESS__ // its look for leaks takes what the window's thread had for lost in a fork
    const pid_t fork_id = fork();
    if (fork_id == 0) std::exit(0);
    waitpid(fork_id, &status, 0);
#endif
    companion->show(true);
    return WIFEXITED(status) && IsWindowVisible(Find_Wait_Window()) ? 0 : 1;
}

namespace {

TEST_F(WaitCompanions, EndWithTheProcess) {
    SecondProcess user("wait_companion_user");
    EXPECT_EQ(user.Wait(), 0);
    EXPECT_EQ(user.Errors(), "");
}

} // namespace
