#include <tests/connectivity/components_test.h>
#include <tests/support/replaced_import.h>
#include <tests/support/window_verbs.h>

#include <platform/user.h>

#include <atomic>
#include <thread>

namespace {

constexpr char Nothing[] = "";

class Monitored : public ComponentsTest {
  protected:
    void SetUp() override {
        ComponentsTest::SetUp();
        utility = new OpenedUtility;
        EXPECT_EQ(utility->Set_Config("Home"), 0);
        first = new TestWindow(WS_POPUP, {0, 0, 9, 9}), second = new TestWindow(WS_POPUP, {0, 0, 9, 9});
        Take_Calls();
    }
    void TearDown() override {
        delete utility;
        delete first, delete second;
        ComponentsTest::TearDown();
    }
    // What came to the two windows, "1+" for a new connection at the first; waits for at least one.
    std::string Heard(bool wait = true) {
        std::string heard;
        MSG message;
        for (int tries = wait ? 5000 : 1; heard.empty() && tries > 0; --tries) {
            while (PeekMessageA(&message, nullptr, Connection_Message, Connection_Message, PM_REMOVE)) {
                heard += message.hwnd == *first ? "1" : message.hwnd == *second ? "2" : "?";
                heard += message.wParam == 1 ? "+" : message.wParam == 0 ? "-" : "?";
                EXPECT_EQ(message.lParam, 0);
            }
            if (heard.empty() && tries > 1) Sleep(1);
        }
        return heard;
    }
    // Posted first, reset after.
    static bool Becomes_Reset(HANDLE event) {
        for (int tries = 5000; tries > 0; --tries, Sleep(1))
            if (WaitForSingleObject(event, 0) == WAIT_TIMEOUT) return true;
        return false;
    }
    std::string After_Setting(HANDLE event) {
        SetEvent(event);
        std::string heard = Heard();
        EXPECT_TRUE(Becomes_Reset(event));
        return heard;
    }
    OpenedUtility *utility = nullptr;
    TestWindow *first = nullptr, *second = nullptr;
};

TEST_F(Monitored, TellsTheWindowOfTheLatestStart) {
    utility->Stop_Connection_Monitor();
    utility->Monitor_Connections(*first);
    utility->Monitor_Connections(*second);
    EXPECT_EQ(Take_Calls(), "Events up");
    for (int i = 0; i < 3; ++i) EXPECT_EQ(After_Setting(fakes->connected), "1+");
    utility->Monitor_Disconnections(*second);
    EXPECT_EQ(Take_Calls(), "Events down");
    EXPECT_EQ(After_Setting(fakes->disconnected) + After_Setting(fakes->connected), "2-2+");

    const HANDLE connected = fakes->connected, stop = utility->m_Connect_Stop_Event;
    utility->Stop_Connection_Monitor();
    SetEvent(connected);
    EXPECT_EQ(After_Setting(fakes->disconnected), "2-") << "the other runs on";
    utility->Monitor_Connections(*first);
    EXPECT_EQ(Heard(), "1+") << "what was set meanwhile";
    EXPECT_EQ(utility->m_Connect_Stop_Event, stop);
    EXPECT_EQ(utility->Set_Config("Home"), 0);
    EXPECT_EQ(After_Setting(connected), "1+") << "the same name stops nothing";
    EXPECT_EQ(Take_Calls().find("Events"), std::string::npos);

    EXPECT_EQ(utility->Set_Config("Work"), 0);
    EXPECT_TRUE(!utility->m_Connect_Thread && !utility->m_Connect_Event && !utility->m_Disconnect_Event);
    EXPECT_EQ(utility->m_Connect_Stop_Event, stop);
    EXPECT_FALSE(SetEvent(connected)) << "closed";
    utility->Monitor_Connections(*second);
    EXPECT_EQ(After_Setting(fakes->connected), "2+") << "of the new connection";
}

// True once it has ended by itself, with this.
bool Ends_With(HANDLE thread, DWORD expected) {
    DWORD code = 0;
    return WaitForSingleObject(thread, 5000) == WAIT_OBJECT_0 && GetExitCodeThread(thread, &code) &&
           code == expected;
}

TEST_F(Monitored, StandsComponentsThatHandOutNoEvents) {
    const HANDLE closed = CreateEventA(nullptr, TRUE, FALSE, nullptr);
    CloseHandle(closed);
    const HANDLE mutex = CreateMutexA(nullptr, FALSE, nullptr); // to be had for ever, and not reset
    const struct {
        HANDLE handed;
        DWORD end;
        const char *heard;
    } components[] = {{nullptr, 0xFFFFFFFF, Nothing},
                      {INVALID_HANDLE_VALUE, 0xFFFFFFFF, Nothing},
                      {closed, 1, Nothing},
                      {mutex, 1, "1+"}};
    for (const auto &[handed, end, heard] : components) {
        EXPECT_EQ(utility->Set_Config("Work"), 0);
        fakes->make_event = [handed] { return handed; };
        utility->Monitor_Connections(*first);
        EXPECT_TRUE(Ends_With(utility->m_Connect_Thread, end)) << handed;
        Take_Calls();
        utility->Monitor_Connections(*second);
        EXPECT_EQ(Take_Calls(), "") << "it counts as running";
        EXPECT_EQ(Heard(false), heard) << handed;
        EXPECT_EQ(utility->Set_Config("Home"), 0);
    }
    Forget();
    fakes->answers = {{"Events", 5}};
    fakes->make_event = [] { return INVALID_HANDLE_VALUE; };
    utility->Monitor_Disconnections(*first);
    EXPECT_FALSE(utility->m_Disconnect_Event);
    Forget();
    utility->Monitor_Disconnections(*first);
    EXPECT_EQ(After_Setting(fakes->disconnected), "1-") << "asked again";
    OpenedUtility().Monitor_Connections(*first);
}

std::uintptr_t Begin_None(void *, unsigned, unsigned (*)(void *), void *, unsigned, unsigned *) {
    return 0;
}

HANDLE Create_None(const SECURITY_ATTRIBUTES *, BOOL, BOOL, LPCSTR) {
    return nullptr;
}

TEST_F(Monitored, StaysStoppedWithoutAThreadOrAnEventToStopItBy) {
    {
        const ReplacedImport none("libkelmara.so", "_beginthreadex", reinterpret_cast<void *>(Begin_None));
        utility->Monitor_Connections(*first);
        EXPECT_FALSE(utility->m_Connect_Thread);
    }
    {
        const ReplacedImport none("libkelmara.so", "CreateEventA", reinterpret_cast<void *>(Create_None));
        utility->Monitor_Disconnections(*first);
    }
    utility->Monitor_Disconnections(*second);
    utility->Monitor_Connections(*first);
    EXPECT_EQ(Take_Calls(), "Events up, Events down") << "what was handed out stays";
    EXPECT_EQ(After_Setting(fakes->connected) + After_Setting(fakes->disconnected), "1+1-");
}

TEST_F(Monitored, ServesTheWindowsOfItsThread) {
    utility->Monitor_Disconnections(*first);
    utility->Monitor_Connections(*first);
    std::atomic<HWND> window{nullptr};
    std::atomic<int> heard{0};
    unsigned end = 0;
    std::thread thread([&] {
        TestWindow own(WS_POPUP, {0, 0, 9, 9}, nullptr, 0, [&](HWND, UINT message, WPARAM, LPARAM) {
            if (message == WM_USER) Sleep(1), ++heard;
            return std::optional<LRESULT>();
        });
        window = own;
        end = OpenedUtility::Connect_Monitor_Thread(utility);
    });
    while (!window) Sleep(1);
    for (int i = 0; i < 200; ++i) PostMessageA(window, WM_USER, 0, 0);
    SendMessageA(window, WM_USER, 0, 0);
    EXPECT_GE(heard, 1);
    while (heard < 201) Sleep(1);
    for (int i = 0; i < 1000; ++i) PostMessageA(window, WM_USER, 0, 0);
    SetEvent(utility->m_Connect_Stop_Event);
    thread.join();
    EXPECT_EQ(end, 1u);
    EXPECT_LT(heard, 1201) << "busy with messages, and stopped all the same";
}

TEST_F(Monitored, EndsInEveryOrder) {
    std::atomic<bool> over{false};
    const HWND window = *first;
    std::thread pouring([&] {
        while (!over) PostMessageA(window, WM_USER, 0, 0), Sleep(0);
    });
    unsigned seed = 7;
    for (int round = 0; round < 60; ++round) {
        OpenedUtility each;
        for (int step = 0; step < 12; ++step) {
            const TestWindow brief(WS_POPUP, {0, 0, 9, 9});
            const HWND doomed = step % 4 == 0 ? HWND(brief) : HWND(*first);
            seed = seed * 1103515245 + 12345;
            switch (seed >> 16 & 7) {
            case 0:
                EXPECT_EQ(each.Set_Config(step & 1 ? "Home" : "Work"), 0);
                break;
            case 1:
                each.Monitor_Connections(doomed);
                break;
            case 2:
                each.Monitor_Disconnections(doomed);
                break;
            case 3:
                each.Stop_Connection_Monitor();
                break;
            case 4:
                each.Stop_Disconnection_Monitor();
                break;
            case 5:
                SetEvent(each.m_Connect_Event);
                break;
            case 6:
                SetEvent(each.m_Disconnect_Event);
                break;
            default:
                Heard(false);
            }
        }
    }
    over = true;
    pouring.join();
    MSG message;
    while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) {
    }
}

} // namespace
