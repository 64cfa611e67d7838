// The client side of the wait window, with companions that tell what they are asked, each time in a process
// of its own: what it was asked is the process's standard error.

#include <kelmara/shared_state/wait_window.h>

#include <platform/kernel.h>

#include <tests/support/companion_test.h>

#include <atomic>
#include <cstdlib>
#include <map>
#include <thread>

namespace {

void Open_From_All_Sides() {
    std::atomic<int> ready{0};
    std::vector<std::jthread> threads;
    for (int i = 0; i < 6; ++i)
        threads.emplace_back([&] {
            for (++ready; ready < 6;) Sleep(0);
            Open_Kelmara_Wait_Window();
        });
}

const std::map<std::string, void (*)()> verbs = {
    {"open", Open_Kelmara_Wait_Window},
    {"close", Close_Kelmara_Wait_Window},
    {"show", [] { Show_Kelmara_Wait_Window(true); }},
    {"hide", [] { Show_Kelmara_Wait_Window(false); }},
    {"race", Open_From_All_Sides},
    {"last word", [] { std::atexit(Open_Kelmara_Wait_Window); }},
};

SECOND_PROCESS(waiter) {
    Set_Debug_Output_Sink([](const char *text, void *) { std::fputs(text, stderr); }, nullptr);
    for (const std::string &verb : process.Arguments()) verbs.at(verb)();
    return 0;
}

using WaitWindow = CompanionTest;

TEST_F(WaitWindow, ForwardsToItsCompanionAndIsClosedWithTheProcess) {
    Install("wait_companion_whole", "Wait");
    const std::pair<std::vector<std::string>, std::string> rows[] = {
        {{"show", "hide"}, ""},
        {{"close"}, "loaded\nFinished\nFinished\nunloaded\n"},
        {{"open", "hide", "show"}, "loaded\nStartup\nShow 0\nShow 1\nFinished\nunloaded\n"},
        {{"open", "close", "open"}, "loaded\nStartup\nFinished\nStartup\nFinished\nunloaded\n"},
        {{"last word"}, "loaded\nStartup\nFinished\nunloaded\n"}, // before the library's own routine
    };
    for (const auto &[calls, told] : rows)
        EXPECT_EQ(Run("waiter", calls), Outcome(0, told)) << testing::PrintToString(calls);
    setenv("WAIT_COMPANION", "throws", 1);
    EXPECT_EQ(Run("waiter", {"open", "show"}), Outcome(0, "loaded\nStartup\nShow 1\nFinished\nunloaded\n"));
    unsetenv("WAIT_COMPANION");
}

TEST_F(WaitWindow, IsLoadedOnceByThreadsThatComeTogether) {
    Install("wait_companion_whole", "Wait");
    std::string told = "loaded\n";
    for (int i = 0; i < 6; ++i) told += "Startup\n";
    for (int round = 0; round < 5; ++round)
        EXPECT_EQ(Run("waiter", {"race"}), Outcome(0, told + "Finished\nunloaded\n"));
}

TEST_F(WaitWindow, DoesWithoutACompanionOrPartsOfIt) {
    const std::vector<std::string> calls = {"open", "show", "close"};
    EXPECT_EQ(Run("waiter", calls), Outcome(0, "")) << "none is named";
    for (const std::string &path : {std::string(), std::string("c:\\nowhere.dll"), std::string(256, 'p')}) {
        Write_Value("Wait", path);
        EXPECT_EQ(Run("waiter", calls), Outcome(0, "")) << path;
    }
    Install("wait_companion_that_only_finishes", "Wait");
    EXPECT_EQ(Run("waiter", calls), Outcome(0, "loaded\nFinished\nFinished\nunloaded\n"));
}

} // namespace
