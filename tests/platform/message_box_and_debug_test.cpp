#include <platform/kernel.h>
#include <platform/machine.h>
#include <platform/user.h>

#include <tests/support/second_process.h>
#include <tests/support/test_machine.h>

#include <cstdlib>
#include <thread>

namespace {

using ::testing::EndsWith;
using MessageBoxes = MachineTest;
using Process = MachineTest;

TEST_F(MessageBoxes, AnswerWithTheDefaultButtonOnStandardError) {
    testing::internal::CaptureStderr();
    for (const auto &[style, answer] : {
             std::pair{MB_OK | MB_ICONHAND | MB_SYSTEMMODAL, IDOK},
             {MB_ABORTRETRYIGNORE | MB_DEFBUTTON2, IDRETRY},
             {MB_YESNOCANCEL | MB_DEFBUTTON3 | MB_ICONQUESTION, IDCANCEL},
             {MB_YESNO | MB_DEFBUTTON3, IDYES}, // it has no third button
             {0xFu, 0},
         }) {
        EXPECT_EQ(MessageBoxA(nullptr, "", "", style), answer) << style;
    }
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_MSGBOX_STYLE));
    MessageBoxA(nullptr, "100%s", nullptr, MB_OK);
    MessageBoxA(nullptr, nullptr, "caption", MB_OK);
    EXPECT_THAT(testing::internal::GetCapturedStderr(), EndsWith("\n[Error] 100%s\n[caption] \n"));
}

TEST_F(MessageBoxes, GoToTheirHandler) {
    std::string shown;
    Set_Message_Box_Handler(
        [](HWND, const char *text, const char *caption, UINT style, void *to) {
            *static_cast<std::string *>(to) = std::string(caption) + "|" + text + "|" + std::to_string(style);
            Set_Message_Box_Handler(nullptr, nullptr); // may call back in
            return IDCANCEL;
        },
        &shown);
    EXPECT_EQ(MessageBoxA(nullptr, nullptr, nullptr, MB_OKCANCEL), IDCANCEL);
    EXPECT_EQ(shown, "Error||1");
    Set_Message_Box_Handler([](HWND, LPCSTR, LPCSTR, UINT, void *) -> int { throw 7; }, nullptr);
    EXPECT_THROW(MessageBoxA(nullptr, "", "", MB_OK), int);
    Set_Message_Box_Handler(nullptr, nullptr);
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

} // namespace
