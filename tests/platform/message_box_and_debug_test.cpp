#include <platform/kernel.h>
#include <platform/machine.h>
#include <platform/user.h>

#include <tests/support/second_process.h>
#include <tests/support/test_machine.h>

#include <csignal>
#include <cstdlib>
#include <sys/time.h>
#include <thread>

namespace {

using MessageBoxes = MachineTest;
using DebugOutput = MachineTest;
using Process = MachineTest;

TEST_F(MessageBoxes, AnswerWithTheDefaultButtonOnStandardError) {
    testing::internal::CaptureStderr();
    for (const auto &[style, answer] : {
             std::pair{MB_OK | MB_ICONHAND | MB_SYSTEMMODAL, IDOK},
             {MB_OKCANCEL | MB_DEFBUTTON2, IDCANCEL},
             {MB_ABORTRETRYIGNORE | MB_DEFBUTTON3, IDIGNORE},
             {MB_YESNOCANCEL | MB_DEFBUTTON3 | MB_ICONQUESTION, IDCANCEL},
             {MB_YESNO | MB_DEFBUTTON3, IDYES}, // it has no third button
             {MB_RETRYCANCEL, IDRETRY},
             {0xFu, 0},
         }) {
        EXPECT_EQ(MessageBoxA(nullptr, "", "", style), answer) << style;
    }
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_MSGBOX_STYLE));
    testing::internal::GetCapturedStderr();
    testing::internal::CaptureStderr();
    MessageBoxA(nullptr, "100%s", nullptr, MB_OK);
    MessageBoxA(nullptr, nullptr, "caption", MB_OK);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "[Error] 100%s\n[caption] \n");
}

TEST_F(MessageBoxes, GoToTheirHandler) {
    std::string shown;
    const auto handler = [](HWND, const char *text, const char *caption, UINT style, void *context) {
        *static_cast<std::string *>(context) =
            std::string(caption) + "|" + text + "|" + std::to_string(style);
        Set_Message_Box_Handler(nullptr, nullptr); // may call back in
        return IDCANCEL;
    };
    Set_Message_Box_Handler(handler, &shown);
    EXPECT_EQ(MessageBoxA(nullptr, nullptr, nullptr, MB_OKCANCEL), IDCANCEL);
    EXPECT_EQ(shown, "Error||1");
}

TEST_F(DebugOutput, IsSilentUnlessSomebodyListens) {
    testing::internal::CaptureStderr();
    OutputDebugStringA("nobody");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    std::string heard;
    Set_Debug_Output_Sink([](const char *text, void *to) { *static_cast<std::string *>(to) += text; },
                          &heard);
    OutputDebugStringA("a%n");
    OutputDebugStringA(nullptr);
    Set_Debug_Output_Sink(nullptr, nullptr);
    OutputDebugStringA("b");
    EXPECT_EQ(heard, "a%n");
}

FirstProcess *ending = nullptr;

// Ends from where it is told: the main program, an exit routine, a thread, or two threads at once.
SECOND_PROCESS(ender) {
    ending = &process;
    const std::string where = process.Arguments().at(0);
    std::atexit([] { ending->Tell("last routine"); });
    if (where == "routine") std::atexit([] { ExitProcess(7); });
    if (where == "thread") std::thread([] { ExitProcess(8); }).join();
    if (where == "threads") {
        std::atexit([] { Sleep(50); });
        std::thread([] { ExitProcess(9); }).detach();
        Sleep(10);
        ExitProcess(9);
    }
    ExitProcess(0x103);
}

TEST_F(Process, EndsWithItsExitRoutinesRunOnce) {
    for (const auto &[where, code] : {std::pair{"main", 3}, {"routine", 7}, {"thread", 8}, {"threads", 9}}) {
        SecondProcess ender("ender", {where});
        EXPECT_EQ(ender.Hear(), "last routine") << where;
        EXPECT_EQ(ender.Hear(), "") << where;
        EXPECT_EQ(ender.Wait(), code) << where << ender.Errors();
    }
}

TEST_F(Process, SleepsItsTimeThoughSignalsArrive) {
    struct sigaction action = {}, before;
    action.sa_handler = [](int) {};
    sigaction(SIGALRM, &action, &before);
    const itimerval often = {{0, 5000}, {0, 5000}}, never = {};
    setitimer(ITIMER_REAL, &often, nullptr);
    const DWORD start = GetTickCount();
    Sleep(60);
    EXPECT_GE(GetTickCount() - start, 59u);
    setitimer(ITIMER_REAL, &never, nullptr);
    sigaction(SIGALRM, &before, nullptr);
}

} // namespace
