// Queues: order, filters, the end, other threads.

#include <platform/kernel.h>
#include <platform/user.h>
#include <tests/support/handles.h>
#include <tests/support/window_verbs.h>

#include <atomic>
#include <chrono>
#include <fstream>
#include <pthread.h>
#include <thread>
#include <unistd.h>

namespace {

const RECT Anywhere = {0, 0, 10, 10};

std::string Waiting(HWND window = nullptr, UINT first = 0, UINT last = 0) {
    std::string found;
    MSG message;
    while (PeekMessageA(&message, window, first, last, PM_REMOVE)) {
        found += (found.empty() ? "" : " ") + std::to_string(message.message);
        if (message.message == WM_QUIT) found += "=" + std::to_string(message.wParam);
    }
    return found;
}

TEST_F(WindowTest, Posted_Messages_Come_In_Order_And_By_Filter_And_The_End_Comes_Last) {
    TestWindow a(WS_POPUP, Anywhere), b(WS_POPUP, Anywhere);
    TestWindow child(WS_CHILD, Anywhere, a);
    const auto post_all = [&] {
        PostQuitMessage(7);
        PostMessageA(a, 1001, 0, 0);
        PostMessageA(b, 1002, 0, 0);
        PostMessageA(child, 1003, 0, 0);
        PostMessageA(nullptr, 1004, 0, 0);
    };
    post_all();
    EXPECT_EQ(Waiting(a), "1001 1003 18=7");
    EXPECT_EQ(Waiting(), "1002 1004");
    post_all();
    EXPECT_EQ(Waiting(nullptr, 1002, 1003), "1002 1003 18=7");
    EXPECT_EQ(Waiting(reinterpret_cast<HWND>(-1)), "1004");
    MSG message;
    EXPECT_TRUE(PeekMessageA(&message, nullptr, 0, 0, PM_NOREMOVE));
    EXPECT_EQ(message.hwnd, a);
    PostMessageA(b, 1005, 0, 0);
    DestroyWindow(a); // its messages go with it
    EXPECT_EQ(Waiting(), "1005");
    PostQuitMessage(3);
    EXPECT_EQ(GetMessageA(&message, nullptr, 0, 0), FALSE);
    EXPECT_EQ(message.wParam, 3u);
    EXPECT_EQ(GetMessageA(&message, a, 0, 0), -1);
    EXPECT_EQ(Error_Of(PostMessageA(a, 1001, 0, 0)), ERROR_INVALID_WINDOW_HANDLE);
    EXPECT_EQ(Error_Of(PostThreadMessageA(1, 1001, 0, 0)), ERROR_INVALID_THREAD_ID);
}

TEST_F(WindowTest, A_Full_Queue_Refuses) {
    TestWindow window(WS_POPUP, Anywhere);
    int posted = 0;
    while (posted < 20000 && PostMessageA(window, WM_USER, 0, 0)) ++posted;
    EXPECT_EQ(posted, 10000);
    EXPECT_EQ(Error_Of(PostMessageA(window, WM_USER, 0, 0)), ERROR_NOT_ENOUGH_QUOTA);
}

// A thread with a window, which answers until it is told to end.
class OtherThread {
  public:
    explicit OtherThread(TestProcedure procedure)
        : thread_([this, procedure = std::move(procedure)]() mutable {
              TestWindow made(WS_POPUP, Anywhere, nullptr, 0, std::move(procedure), "Other");
              window = made;
              MSG message;
              while (GetMessageA(&message, nullptr, 0, 0) > 0) DispatchMessageA(&message);
          }) {
        while (!window.load()) std::this_thread::yield();
    }
    ~OtherThread() {
        PostThreadMessageA(GetWindowThreadProcessId(window, nullptr), WM_QUIT, 0, 0);
        thread_.join();
    }
    std::atomic<HWND> window{nullptr};

  private:
    std::thread thread_;
};

TEST_F(WindowTest, Messages_To_Another_Thread_S_Window_Run_There_And_May_Call_Back) {
    const auto here = std::this_thread::get_id();
    TestWindow mine(WS_POPUP, Anywhere, nullptr, 0, [](HWND, UINT message, WPARAM w, LPARAM) {
        return message == WM_USER ? std::optional<LRESULT>(static_cast<LRESULT>(w) + 1) : std::nullopt;
    });
    const HWND back = mine;
    std::atomic<bool> ran_here{false};
    OtherThread other([&ran_here, here, back](HWND, UINT message, WPARAM w, LPARAM) {
        if (message != WM_USER) return std::optional<LRESULT>();
        ran_here = std::this_thread::get_id() == here;
        return std::optional<LRESULT>(10 * SendMessageA(back, WM_USER, w, 0));
    });
    EXPECT_EQ(SendMessageA(other.window, WM_USER, 4, 0), 50);
    EXPECT_FALSE(ran_here);
    EXPECT_EQ(Title_Of(other.window), "Other");
    EXPECT_EQ(Error_Of(DestroyWindow(other.window)), ERROR_ACCESS_DENIED);
    EXPECT_EQ(Error_Of(SetFocus(other.window)), ERROR_ACCESS_DENIED);
    EXPECT_FALSE(ShowWindow(other.window, SW_SHOWNA));
    EXPECT_TRUE(IsWindowVisible(other.window));
}

TEST_F(WindowTest, Another_Thread_S_Window_Is_Never_The_Active_One_Here) {
    OtherThread other({});
    ShowWindow(other.window, SW_SHOWNA);
    TestWindow popup(WS_POPUP | WS_VISIBLE, Anywhere, other.window);
    ShowWindow(popup, SW_HIDE);
    EXPECT_EQ(GetActiveWindow(), nullptr);
    EXPECT_EQ(GetForegroundWindow(), other.window) << "the owner's thread is to see to it";
    TestWindow child(WS_CHILD, Anywhere, other.window);
    SetFocus(child);
    EXPECT_EQ(GetFocus(), child);
    EXPECT_EQ(GetActiveWindow(), nullptr);
}

TEST_F(WindowTest, A_Throw_To_A_Sender_Leaves_Nobody_Waiting) {
    TestWindow mine(WS_POPUP, Anywhere, nullptr, 0, [](HWND, UINT message, WPARAM, LPARAM) {
        if (message == WM_USER) throw 7;
        return message == WM_USER + 1 ? std::optional<LRESULT>(3) : std::nullopt;
    });
    const HWND back = mine;
    std::atomic<LRESULT> second_answer{-1};
    OtherThread other([&second_answer, back](HWND, UINT message, WPARAM, LPARAM) {
        if (message != WM_USER) return std::optional<LRESULT>();
        SendMessageA(back, WM_USER, 0, 0);
        second_answer = SendMessageA(back, WM_USER + 1, 0, 0);
        return std::optional<LRESULT>(1);
    });
    EXPECT_THROW(SendMessageA(other.window, WM_USER, 0, 0), int);
    EXPECT_EQ(second_answer, 0); // not run any more
}

// Where the table of the machine's windows lies in this process. It begins with its lock.
pthread_mutex_t *Lock_Of_The_Table() {
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        if (line.ends_with("/block-windows"))
            return reinterpret_cast<pthread_mutex_t *>(std::stoul(line, nullptr, 16));
    }
    return nullptr;
}

TEST_F(WindowTest, A_Table_That_Somebody_Keeps_Locked_Refuses_After_A_While) {
    TestWindow mine(WS_POPUP, Anywhere);
    pthread_mutex_t *const lock = Lock_Of_The_Table();
    ASSERT_NE(lock, nullptr);
    ASSERT_EQ(pthread_mutex_lock(lock), 0);
    std::thread([] {
        EXPECT_EQ(Error_Of(TestWindow::Make()), ERROR_NOT_ENOUGH_QUOTA);
        // It has got no queue.
        EXPECT_EQ(Error_Of(PostThreadMessageA(static_cast<DWORD>(gettid()), WM_USER, 0, 0)),
                  ERROR_INVALID_THREAD_ID);
    }).join();
    pthread_mutex_unlock(lock);
    TestWindow again(WS_POPUP, Anywhere);
    EXPECT_TRUE(IsWindow(again));
}

TEST_F(WindowTest, A_Sender_Does_Not_Wait_For_A_Thread_That_Ends) {
    HWND window = nullptr;
    std::atomic<bool> sending{false};
    std::atomic<HWND> made{nullptr};
    std::thread ends([&] {
        made = TestWindow::Make();
        while (!sending) std::this_thread::yield();
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    });
    while (!(window = made)) std::this_thread::yield();
    sending = true;
    EXPECT_EQ(SendMessageA(window, WM_USER, 0, 0), 0);
    ends.join();
    EXPECT_FALSE(IsWindow(window));
}

TEST_F(WindowTest, Threads_May_Work_On_One_Window_At_Once) {
    TestWindow main(WS_POPUP | WS_VISIBLE, Anywhere);
    std::atomic<int> running{3};
    std::vector<std::thread> threads;
    const HWND window = main;
    for (int i = 0; i < 3; ++i) {
        threads.emplace_back([window, i, &running] {
            for (int round = 0; round < 300; ++round) {
                SetWindowLongA(window, GWL_USERDATA, GetWindowLongA(window, GWL_USERDATA));
                SetWindowTextA(window, std::string(static_cast<std::size_t>(round % 40), 'a' + i).c_str());
                MoveWindow(window, i, round, 10, 10, TRUE);
                Title_Of(window);
                PostMessageA(window, WM_USER, 0, 0);
            }
            --running;
        });
    }
    MSG message;
    while (running) {
        if (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageA(&message);
        TestWindow child(WS_CHILD, Anywhere, main);
    }
    for (std::thread &thread : threads) thread.join();
}

TEST_F(WindowTest, Waiting_For_Objects_And_Messages_Ends_With_What_Is_There) {
    const TestHandle set(CreateEventA(nullptr, TRUE, TRUE, nullptr)),
        not_set(CreateEventA(nullptr, TRUE, FALSE, nullptr));
    const HANDLE both[] = {not_set, set};
    EXPECT_EQ(MsgWaitForMultipleObjects(2, both, FALSE, INFINITE, QS_ALLEVENTS), WAIT_OBJECT_0 + 1);
    EXPECT_EQ(MsgWaitForMultipleObjects(1, both, FALSE, 20, QS_ALLEVENTS), WAIT_TIMEOUT);
    PostMessageA(nullptr, WM_USER, 0, 0);
    EXPECT_EQ(MsgWaitForMultipleObjects(2, both, FALSE, INFINITE, QS_ALLEVENTS), WAIT_OBJECT_0 + 1);
    EXPECT_EQ(MsgWaitForMultipleObjects(1, both, FALSE, INFINITE, QS_ALLEVENTS), WAIT_OBJECT_0 + 1);
    EXPECT_EQ(MsgWaitForMultipleObjects(0, nullptr, FALSE, INFINITE, QS_ALLEVENTS), WAIT_OBJECT_0);
    EXPECT_EQ(Waiting(), "1024");
}

} // namespace
