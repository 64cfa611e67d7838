#include <kelmara/dialogs/window_user_data.h>

#include <platform/kernel.h>

#include <tests/support/test_memory.h>
#include <tests/support/window_verbs.h>

#include <thread>

namespace {

void *Number(long number) {
    return reinterpret_cast<void *>(number);
}

HWND New_Window() {
    return TestWindow::Make(WS_POPUP, nullptr, "Static");
}

long Word_Of(HWND window) {
    return GetWindowLongA(window, GWL_USERDATA);
}

void Set_Word(HWND window, const void *word) {
    SetWindowLongA(window, GWL_USERDATA, reinterpret_cast<LONG>(word));
}

class UserData : public WindowTest {
  protected:
    void SetUp() override {
        WindowTest::SetUp();
        window = New_Window();
    }
    void TearDown() override {
        DestroyWindow(window);
        WindowTest::TearDown();
    }
    /// The three slots, and two that are none.
    static std::vector<long> Slots(HWND of) {
        return {GetWindowUserData(of, 0), GetWindowUserData(of, 1), GetWindowUserData(of, 2),
                GetWindowUserData(of, -1), GetWindowUserData(of, 3)};
    }

    HWND window = nullptr;
    NoLeak no_leak;
    const std::vector<long> nothing = std::vector<long>(5, -1);
};

TEST_F(UserData, Is_Shared_And_Goes_With_Its_Last_Owner) {
    const long procedure = GetWindowLongA(window, GWL_WNDPROC);
    EXPECT_EQ(Slots(window), nothing);
    auto *const record = static_cast<WindowUserData *>(InsertWindowUserData(window, 0, Number(7)));
    ASSERT_NE(record, nullptr);
    EXPECT_EQ(record->Magic, 0xCAFEBEEF);
    EXPECT_EQ(record->References, 1);
    EXPECT_EQ(Word_Of(window), reinterpret_cast<long>(record));
    EXPECT_EQ(Slots(window), (std::vector<long>{7, 0, procedure, -1, -1}));
    EXPECT_EQ(InsertWindowUserData(window, 1, Number(8)), record);
    EXPECT_EQ(InsertWindowUserData(window, 3, Number(9)), record) << "no slot, but an owner";
    EXPECT_EQ(record->References, 3);
    EXPECT_EQ(Slots(window), (std::vector<long>{7, 8, procedure, -1, -1}));
    DeleteWindowUserData(record);
    DeleteWindowUserData(record);
    EXPECT_EQ(GetWindowUserData(window, 1), 8);
    SetLastError(42);
    DeleteWindowUserData(record);
    EXPECT_EQ(GetLastError(), 42u);
    EXPECT_EQ(Word_Of(window), 0);
    DeleteWindowUserData(record);
    DeleteWindowUserData(nullptr);
    EXPECT_EQ(Slots(window), nothing);
}

TEST_F(UserData, Words_Of_Others_Are_Never_Followed) {
    const WindowUserData look_alike = {0xCAFEBEEF, 1, {1, 2, 3}, window, nullptr};
    const HWND other = New_Window();
    void *const record = InsertWindowUserData(other, 0, Number(1));
    for (const void *word : {Number(1), Number(-4), static_cast<void *>(window), record,
                             static_cast<void *>(const_cast<WindowUserData *>(&look_alike))}) {
        Set_Word(window, word);
        EXPECT_EQ(Slots(window), nothing);
        EXPECT_EQ(InsertWindowUserData(window, 0, Number(2)), nullptr);
        EXPECT_EQ(Word_Of(window), reinterpret_cast<long>(word));
        if (word != record) DeleteWindowUserData(const_cast<void *>(word));
    }
    EXPECT_EQ(GetWindowUserData(other, 0), 1);
    Set_Word(other, &look_alike);
    EXPECT_EQ(GetWindowUserData(other, 0), -1);
    DeleteWindowUserData(record);
    EXPECT_EQ(Word_Of(other), reinterpret_cast<long>(&look_alike)) << "the word had become somebody else's";
    DestroyWindow(other);
}

TEST_F(UserData, Windows_May_Go_First_And_Their_Handles_Come_Again) {
    const HWND first = New_Window();
    void *const record = InsertWindowUserData(first, 0, Number(1));
    DestroyWindow(first);
    EXPECT_EQ(Slots(first), nothing);
    for (const HWND none : {first, HWND{}, reinterpret_cast<HWND>(0x7FFFFFF0)})
        EXPECT_EQ(InsertWindowUserData(none, 0, Number(2)), nullptr);

    // As if a window had come with the handle: the old record goes without a look at its word.
    auto *const stale = static_cast<WindowUserData *>(record);
    stale->Window = window;
    void *const fresh = InsertWindowUserData(window, 0, Number(3));
    ASSERT_NE(fresh, record);
    DeleteWindowUserData(record);
    EXPECT_EQ(GetWindowUserData(window, 0), 3);
    DeleteWindowUserData(fresh);
    EXPECT_EQ(Word_Of(window), 0);
}

TEST_F(UserData, Threads_Keep_Records_Of_Their_Own_Windows_Side_By_Side) {
    std::vector<std::thread> threads;
    for (long number = 1; number <= 4; ++number) {
        threads.emplace_back([number] {
            const HWND own = New_Window();
            for (int round = 0; round < 500; ++round) {
                void *const record = InsertWindowUserData(own, 0, Number(number));
                EXPECT_EQ(GetWindowUserData(own, 0), number);
                DeleteWindowUserData(record);
            }
            DestroyWindow(own);
        });
    }
    for (std::thread &thread : threads) thread.join();
}

} // namespace
