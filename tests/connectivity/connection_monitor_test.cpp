#include <tests/connectivity/components_test.h>
#include <tests/support/replaced_import.h>
#include <tests/support/window_verbs.h>

#include <platform/user.h>

#include <atomic>
#include <optional>
#include <thread>

namespace {

class Monitored : public ComponentsTest {
  protected:
    void SetUp() override {
        ComponentsTest::SetUp();
        first.emplace(WS_POPUP, RECT()), second.emplace(WS_POPUP, RECT());
        EXPECT_EQ(utility->Set_Config("Home"), 0);
        Take_Calls();
    }
    void TearDown() override {
        ComponentsTest::TearDown();
        first.reset(), second.reset();
    }
    // What came to the two windows, "1+" for a new connection at the first, waiting for at least one.
    std::string Heard(int tries = 5000) {
        std::string heard;
        MSG message;
        for (; heard.empty() && tries > 0; --tries, Sleep(1)) {
            while (PeekMessageA(&message, nullptr, Connection_Message, Connection_Message, PM_REMOVE))
                heard += std::string(message.hwnd == *first ? "1" : "2") + (message.wParam ? "+" : "-");
        }
        return heard;
    }
    // Posted first, reset after.
    std::string After_Setting(HANDLE event) {
        SetEvent(event);
        const std::string heard = Heard();
        while (WaitForSingleObject(event, 0) == WAIT_OBJECT_0) Sleep(1);
        return heard;
    }
    std::optional<TestWindow> first, second;
};

TEST_F(Monitored, TellsTheWindowOfTheLatestStart) {
    utility->Monitor_Connections(*first);
    utility->Monitor_Connections(*second);
    EXPECT_EQ(After_Setting(fakes->connected) + After_Setting(fakes->connected), "1+1+");
    utility->Monitor_Disconnections(*second);
    EXPECT_EQ(After_Setting(fakes->disconnected) + After_Setting(fakes->connected), "2-2+");

    const HANDLE connected = fakes->connected, stop = utility->m_Connect_Stop_Event;
    utility->Stop_Connection_Monitor();
    SetEvent(connected);
    EXPECT_EQ(After_Setting(fakes->disconnected), "2-") << "the other runs on";
    utility->Monitor_Connections(*first);
    EXPECT_EQ(Heard(), "1+") << "what was set meanwhile";
    EXPECT_EQ(utility->Set_Config("Home"), 0);
    EXPECT_EQ(After_Setting(connected), "1+") << "the same name stops nothing";
    EXPECT_EQ(utility->Set_Config("Work"), 0);
    EXPECT_TRUE(!utility->m_Connect_Thread && !utility->m_Connect_Event && !utility->m_Disconnect_Event);
    EXPECT_FALSE(SetEvent(connected)) << "closed";
    utility->Monitor_Connections(*second);
    EXPECT_EQ(After_Setting(fakes->connected), "2+") << "of the new connection";
    EXPECT_EQ(utility->m_Connect_Stop_Event, stop);
}

TEST_F(Monitored, StandsComponentsThatHandOutNoEvents) {
    const HANDLE never_opened = reinterpret_cast<HANDLE>(0x7FFFFFF4);
    const struct {
        HANDLE handed;
        DWORD end;
        const char *heard;
    } components[] = {{nullptr, 0xFFFFFFFF, ""},
                      {INVALID_HANDLE_VALUE, 0xFFFFFFFF, ""},
                      {never_opened, 1, ""},
                      {CreateMutexA(nullptr, FALSE, nullptr), 1, "1+"}}; // to be had for ever, and not reset
    for (const auto &[handed, end, heard] : components) {
        EXPECT_EQ(utility->Set_Config("Work"), 0);
        fakes->make_event = [handed] { return handed; };
        utility->Monitor_Connections(*first);
        DWORD code = 0;
        EXPECT_EQ(WaitForSingleObject(utility->m_Connect_Thread, 5000), WAIT_OBJECT_0) << handed;
        EXPECT_TRUE(GetExitCodeThread(utility->m_Connect_Thread, &code) && code == end) << handed;
        Take_Calls();
        utility->Monitor_Connections(*second);
        EXPECT_EQ(Take_Calls(), "") << "it counts as running";
        EXPECT_EQ(Heard(1), heard) << handed;
        EXPECT_EQ(utility->Set_Config("Home"), 0);
    }
    fakes->answers = {{"Events", 5}}, fakes->make_event = [] { return INVALID_HANDLE_VALUE; };
    utility->Monitor_Disconnections(*first);
    EXPECT_FALSE(utility->m_Disconnect_Event || utility->m_Disconnect_Thread)
        << "what failed counts for nothing";
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
    }
    {
        const ReplacedImport none("libkelmara.so", "CreateEventA", reinterpret_cast<void *>(Create_None));
        utility->Monitor_Disconnections(*first);
    }
    EXPECT_FALSE(utility->m_Connect_Thread || utility->m_Disconnect_Thread);
    utility->Monitor_Disconnections(*second);
    utility->Monitor_Connections(*first);
    EXPECT_EQ(Take_Calls(), "Events up, Events down") << "what was handed out stays";
    EXPECT_EQ(After_Setting(fakes->connected) + After_Setting(fakes->disconnected), "1+1-");
}

TEST_F(Monitored, ServesTheWindowsOfItsThreadAndIsStoppedAllTheSame) {
    utility->Monitor_Connections(*first);
    std::atomic<HWND> window{nullptr};
    std::atomic<int> heard{0};
    std::thread thread([&] {
        const TestWindow own(WS_POPUP, {}, nullptr, 0, [&](HWND, UINT message, WPARAM, LPARAM) {
            if (message == WM_USER) Sleep(1), ++heard;
            return std::optional<LRESULT>();
        });
        window = own;
        EXPECT_EQ(OpenedUtility::Connect_Monitor_Thread(utility), 1u);
    });
    while (!window) Sleep(1);
    for (int i = 0; i < 1000; ++i) PostMessageA(window, WM_USER, 0, 0);
    SendMessageA(window, WM_USER, 0, 0);
    while (heard < 20) Sleep(1);
    SetEvent(utility->m_Connect_Stop_Event);
    thread.join();
    EXPECT_LT(heard, 1001);
}

TEST_F(Monitored, IsStoppedThoughAMessageWentWithItsWindow) {
    utility->Monitor_Connections(*first);
    std::atomic<HWND> window{nullptr}, staying{nullptr};
    std::atomic<bool> busy{false}, over{false};
    std::thread thread([&] {
        const TestWindow own(WS_POPUP, {}, nullptr, 0, [&](HWND self, UINT message, WPARAM, LPARAM) {
            if (message == WM_USER) busy = true, Sleep(100);
            if (message == WM_USER + 1) DestroyWindow(self);
            return std::optional<LRESULT>();
        });
        const TestWindow other(WS_POPUP, {});
        staying = other;
        window = own;
        EXPECT_EQ(OpenedUtility::Connect_Monitor_Thread(utility), 1u);
        over = true;
    });
    while (!window) Sleep(1);
    PostMessageA(window, WM_USER, 0, 0);
    while (!busy) Sleep(1);
    PostMessageA(window, WM_USER, 0, 0);
    SendMessageA(window, WM_USER + 1, 0, 0);
    SetEvent(utility->m_Connect_Stop_Event);
    for (int tries = 0; tries < 5000 && !over; ++tries) Sleep(1);
    EXPECT_TRUE(over);
    PostMessageA(staying, WM_USER, 0, 0);
    thread.join();
}

TEST_F(Monitored, EndsInEveryOrder) {
    std::atomic<bool> over{false};
    const HWND lasting = *first;
    std::thread pouring([&] {
        while (!over) PostMessageA(lasting, WM_USER, 0, 0), Sleep(0);
    });
    unsigned seed = 7;
    for (int round = 0; round < 60; ++round) {
        OpenedUtility each;
        for (int step = 0; step < 12; ++step) {
            const TestWindow brief(WS_POPUP, {});
            const HWND window = step % 4 == 0 ? HWND(brief) : lasting;
            seed = seed * 1103515245 + 12345;
            switch (seed >> 16 & 7) {
            case 0:
                EXPECT_EQ(each.Set_Config(step & 1 ? "Home" : "Work"), 0);
                break;
            case 1:
                each.Monitor_Connections(window);
                break;
            case 2:
                each.Monitor_Disconnections(window);
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
                Heard(1);
            }
        }
    }
    over = true;
    pouring.join();
}

} // namespace
