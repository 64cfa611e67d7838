// Waits for several objects and messages, and threads with handles. Each runs as the host would have it, and
// where the host does not let a thread sleep on several words at once.

#include <tests/support/handles.h>
#include <tests/support/second_process.h>
#include <tests/support/sleepers.h>
#include <tests/support/window_verbs.h>

#include <platform/runtime.h>

#include <atomic>
#include <csignal>
#include <cstring>
#include <ctime>
#include <functional>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <memory>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <thread>

namespace {

constexpr DWORD Round = 1000; // after which a sleeper looks anyway

enum class Host { Whole, Without_Sleeps_On_Several };

void Forbid_Sleeps_On_Several() {
    sock_filter steps[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_futex_waitv, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | ENOSYS),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    };
    const sock_fprog program = {4, steps};
    ASSERT_EQ(prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0), 0);
    ASSERT_EQ(prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program), 0);
}

double Processor_Milliseconds() {
    timespec used;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &used);
    return static_cast<double>(used.tv_sec) * 1e3 + static_cast<double>(used.tv_nsec) / 1e6;
}

/// A thread that waits once, for objects and messages, and is at it when the object is made.
class Waiter {
  public:
    explicit Waiter(std::vector<HANDLE> handles, Host host, DWORD milliseconds = INFINITE)
        : handles_(std::move(handles)), thread_([this, host, milliseconds] {
              if (host != Host::Whole) Forbid_Sleeps_On_Several();
              TestWindow own(WS_POPUP, {0, 0, 1, 1});
              window_ = own;
              number_ = gettid();
              const double before = Processor_Milliseconds();
              result_ = MsgWaitForMultipleObjects(static_cast<DWORD>(handles_.size()), handles_.data(), FALSE,
                                                  milliseconds, QS_ALLEVENTS);
              ended_ = GetTickCount();
              used_ = Processor_Milliseconds() - before;
          }) {
        while (number_ == 0) Sleep(0);
        Come_To_Rest();
    }
    void Come_To_Rest() const {
        Sleep(10); // past a sleep on the way
        Wait_Until_Asleep(number_);
    }
    DWORD Result() {
        if (thread_.joinable()) thread_.join();
        return result_;
    }
    /// When it ended, and what it took of the processor.
    DWORD Ended() const { return ended_; }
    double Used() const { return used_; }
    HWND Window() const { return window_; }

  private:
    const std::vector<HANDLE> handles_;
    std::atomic<HWND> window_{nullptr};
    std::atomic<int> number_{0};
    DWORD result_ = 0, ended_ = 0;
    double used_ = 0;
    std::jthread thread_;
};

struct Waits : WindowTest, ::testing::WithParamInterface<Host> {
    void SetUp() override {
        WindowTest::SetUp();
        never = CreateEventA(nullptr, TRUE, FALSE, nullptr);
    }
    void TearDown() override {
        CloseHandle(never);
        WindowTest::TearDown();
    }
    HANDLE never = nullptr;
};

INSTANTIATE_TEST_SUITE_P(, Waits, ::testing::Values(Host::Whole, Host::Without_Sleeps_On_Several),
                         [](const auto &host) { return host.param == Host::Whole ? "Sleeping" : "Looking"; });

using Messages = WindowTest;

unsigned Until_Told(void *go) {
    WaitForSingleObject(go, INFINITE);
    return 7;
}

HANDLE Start(unsigned (*routine)(void *), void *argument, unsigned *id = nullptr) {
    return reinterpret_cast<HANDLE>(_beginthreadex(nullptr, 0, routine, argument, 0, id));
}

SECOND_PROCESS(waits_holder) {
    const HANDLE mutex = CreateMutexA(nullptr, FALSE, process.Arguments()[0].c_str());
    process.Tell(std::to_string(WaitForSingleObject(mutex, INFINITE)));
    process.Hear();
    return 0;
}

SECOND_PROCESS(waits_for_both) {
    const HANDLE both[] = {CreateMutexA(nullptr, FALSE, "HELD"), CreateEventA(nullptr, FALSE, FALSE, "SET")};
    process.Tell("waits");
    MsgWaitForMultipleObjects(2, both, FALSE, INFINITE, QS_ALLEVENTS);
    return 0;
}

TEST_P(Waits, EndAtOnceForWhateverComes) {
    const TestHandle automatic(CreateEventA(nullptr, FALSE, FALSE, "AUTO"));
    const TestHandle manual(CreateEventA(nullptr, TRUE, FALSE, nullptr));
    const TestHandle go(CreateEventA(nullptr, FALSE, FALSE, nullptr));
    const TestHandle thread(Start(Until_Told, go)), mutex(CreateMutexA(nullptr, TRUE, nullptr));
    const TestHandle left(CreateMutexA(nullptr, FALSE, nullptr)), held(CreateMutexA(nullptr, FALSE, "HELD"));
    SecondProcess holder("waits_holder", {"HELD"}), stranger("waits_holder", {"ANOTHER"});
    ASSERT_EQ(holder.Hear(), "0");
    const TestHandle process(OpenProcess(SYNCHRONIZE, FALSE, static_cast<DWORD>(stranger.Id())));
    std::atomic<bool> over{false};
    std::jthread leaver([&] {
        WaitForSingleObject(left, INFINITE);
        while (!over) Sleep(1);
    });
    while (WaitForSingleObject(left, 0) == WAIT_OBJECT_0) ReleaseMutex(left);

    Waiter *waiter = nullptr;
    const struct {
        const char *name;
        HANDLE object;
        std::function<void()> comes;
        DWORD result;
    } cases[] = {
        {"automatic event", automatic, [&] { SetEvent(automatic); }, WAIT_OBJECT_0 + 1},
        {"manual event", manual, [&] { SetEvent(manual), ResetEvent(manual); }, WAIT_OBJECT_0 + 1},
        {"mutex given up", mutex, [&] { ReleaseMutex(mutex); }, WAIT_OBJECT_0 + 1},
        {"mutex of a thread that ends", left, [&] { over = true; }, WAIT_ABANDONED + 1},
        {"mutex of a killed process", held, [&] { holder.Kill(); }, WAIT_ABANDONED + 1},
        {"thread", thread, [&] { SetEvent(go); }, WAIT_OBJECT_0 + 1},
        {"process", process, [&] { stranger.Kill(), stranger.Wait(); }, WAIT_OBJECT_0 + 1},
        {"message", manual, [&] { PostMessageA(waiter->Window(), WM_USER, 0, 0); }, WAIT_OBJECT_0 + 2},
    };
    for (const auto &each : cases) {
        Waiter waits({never, each.object}, GetParam());
        waiter = &waits;
        EXPECT_EQ(SendMessageA(waits.Window(), WM_NULL, 0, 0), 0) << "answered, and the wait goes on";
        waits.Come_To_Rest();
        const DWORD start = GetTickCount();
        each.comes();
        EXPECT_EQ(waits.Result(), each.result) << each.name;
        EXPECT_LT(waits.Ended() - start, Round - 200) << each.name << ": woken, not found by a look";
    }
}

TEST_P(Waits, UseNoProcessorTime) {
    const TestHandle other(CreateEventA(nullptr, FALSE, FALSE, "OTHER"));
    Waiter waits({never, other}, GetParam(), 400);
    EXPECT_EQ(waits.Result(), WAIT_TIMEOUT);
    EXPECT_LT(waits.Used(), GetParam() == Host::Whole ? 4 : 40) << "milliseconds of 400";
}

// Both events are set at once, so that one wait is often released by both of them.
TEST_P(Waits, TakeEachSettingOfAnAutomaticEventOnce) {
    const TestHandle stop(CreateEventA(nullptr, TRUE, FALSE, nullptr));
    const TestHandle one(CreateEventA(nullptr, FALSE, FALSE, nullptr)),
        two(CreateEventA(nullptr, FALSE, FALSE, "TWO"));
    std::atomic<unsigned> taken[3] = {};
    std::vector<std::jthread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&, i] {
            if (GetParam() != Host::Whole) Forbid_Sleeps_On_Several();
            const HANDLE handles[] = {stop, i % 2 ? one : two, i % 2 ? two : one};
            for (;;) {
                const DWORD result = MsgWaitForMultipleObjects(3, handles, FALSE, INFINITE, QS_ALLEVENTS);
                if (result == 0) return;
                ++taken[i % 2 ? result : 3 - result];
            }
        });
    }
    const unsigned rounds = GetParam() == Host::Whole ? 2000 : 100;
    const DWORD start = GetTickCount();
    for (unsigned i = 1; i <= rounds; ++i) {
        SetEvent(one);
        SetEvent(two);
        while ((taken[1] < i || taken[2] < i) && GetTickCount() - start < 30000) Sleep(0);
        ASSERT_TRUE(taken[1] == i && taken[2] == i) << taken[1] << " and " << taken[2] << " of " << i;
    }
    SetEvent(stop);
}

TEST_P(Waits, HandMutexesOnToEveryKindOfWait) {
    const TestHandle mutex(CreateMutexA(nullptr, FALSE, "HANDED-ON"));
    constexpr int Rounds = 10000;
    int count = 0, found_by_looks = 0;
    std::vector<std::jthread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&, i] {
            if (GetParam() != Host::Whole) Forbid_Sleeps_On_Several();
            const HANDLE handles[] = {never, mutex};
            for (int round = 0; round < Rounds; ++round) {
                const DWORD start = GetTickCount();
                if (i % 2)
                    EXPECT_EQ(WaitForSingleObject(mutex, INFINITE), WAIT_OBJECT_0);
                else
                    EXPECT_EQ(MsgWaitForMultipleObjects(2, handles, FALSE, INFINITE, 0), WAIT_OBJECT_0 + 1);
                const bool is_woken = GetParam() == Host::Whole || i % 2;
                if (is_woken && GetTickCount() - start >= Round) ++found_by_looks;
                if (++count % 4 == 0) Sleep(0);
                ReleaseMutex(mutex);
            }
        });
    }
    threads.clear();
    EXPECT_EQ(count, 4 * Rounds);
    EXPECT_EQ(found_by_looks, 0) << "every release wakes somebody";
}

TEST_P(Waits, AreNotLostToOnesThatAreStoppedOrKilled) {
    const TestHandle mutex(CreateMutexA(nullptr, TRUE, "HELD")), event(CreateEventA(nullptr, 0, 0, "SET"));
    SecondProcess first("waits_for_both");
    ASSERT_EQ(first.Hear(), "waits");
    Wait_Until_Asleep(first.Id(), first.Id());
    Waiter second({never, mutex}, GetParam()), third({never, event}, GetParam());
    kill(first.Id(), SIGSTOP);
    ReleaseMutex(mutex);
    EXPECT_EQ(second.Result(), WAIT_OBJECT_0 + 1) << "whoever was woken";
    first.Kill();
    first.Wait();
    SetEvent(event);
    EXPECT_EQ(third.Result(), WAIT_OBJECT_0 + 1);
}

TEST_P(Waits, AreForAsManyObjectsAsAreAllowedWhoeverClosesThemMeanwhile) {
    const TestHandle last(CreateEventA(nullptr, FALSE, FALSE, "LAST"));
    std::vector<HANDLE> handles(63, never);
    handles[61] = handles[62] = CreateEventA(nullptr, FALSE, FALSE, "LAST");
    Waiter waits(handles, GetParam());
    EXPECT_TRUE(CloseHandle(handles[62]));
    SetEvent(last);
    EXPECT_GE(waits.Result(), WAIT_OBJECT_0 + 61);
    EXPECT_EQ(WaitForSingleObject(last, 0), WAIT_TIMEOUT) << "once, though it was named twice";

    const auto wait = [&](DWORD count, BOOL all) {
        return MsgWaitForMultipleObjects(count, handles.data(), all, 0, QS_ALLEVENTS) == WAIT_FAILED
                   ? static_cast<long>(GetLastError())
                   : NO_ERROR;
    };
    SetEvent(handles[0] = last);
    EXPECT_EQ(wait(63, FALSE), ERROR_INVALID_HANDLE);
    handles.assign(64, last);
    EXPECT_EQ(wait(64, FALSE), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(wait(1, TRUE), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(WaitForSingleObject(last, 0), WAIT_OBJECT_0) << "nothing was taken";
}

TEST_F(Messages, TellMessagesByTheirMask) {
    const auto comes = [](DWORD mask) { return MsgWaitForMultipleObjects(0, nullptr, FALSE, 0, mask) == 0; };
    TestWindow own(WS_POPUP, {0, 0, 1, 1});
    constexpr struct {
        UINT message;
        DWORD masks;
    } cases[] = {{WM_USER, 0x108}, {WM_KEYUP, 0x109}, {WM_MOUSEMOVE, 0x10A}, {WM_LBUTTONDOWN, 0x10C}};
    for (const auto &each : cases) {
        PostMessageA(own, each.message, 0, 0);
        for (DWORD mask = 1; mask <= 0x100; mask *= 2)
            EXPECT_EQ(comes(mask), (each.masks & mask) != 0) << each.message << " by " << mask;
        MSG message;
        EXPECT_TRUE(PeekMessageA(&message, nullptr, 0, 0, PM_NOREMOVE) && comes(QS_ALLEVENTS));
        PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE);
        EXPECT_FALSE(comes(QS_ALLEVENTS));
    }
}

using Threads = MachineTest;

unsigned End_In_The_Middle(void *destroyed) {
    const std::shared_ptr<void> at_the_end(nullptr, [=](void *) { *static_cast<bool *>(destroyed) = true; });
    _endthreadex(9);
}

TEST_F(Threads, TellTheirEndAndWhatTheyGave) {
    const TestHandle go(CreateEventA(nullptr, FALSE, FALSE, nullptr));
    unsigned id = 0;
    DWORD code = 0;
    {
        const TestHandle thread(Start(Until_Told, go, &id));
        EXPECT_TRUE(id != 0 && static_cast<int>(id) != gettid());
        EXPECT_EQ(WaitForSingleObject(thread, 20), WAIT_TIMEOUT);
        EXPECT_TRUE(GetExitCodeThread(thread, &code) && code == STILL_ACTIVE);
        std::vector<std::jthread> joiners;
        for (int i = 0; i < 3; ++i)
            joiners.emplace_back([&] { EXPECT_EQ(WaitForSingleObject(thread, INFINITE), WAIT_OBJECT_0); });
        SetEvent(go);
        joiners.clear();
        EXPECT_EQ(WaitForSingleObject(thread, 0), WAIT_OBJECT_0) << "for good";
        EXPECT_TRUE(GetExitCodeThread(thread, &code) && code == 7);
    }
    bool destroyed = false;
    const TestHandle ends(Start(End_In_The_Middle, &destroyed));
    EXPECT_EQ(WaitForSingleObject(ends, INFINITE), WAIT_OBJECT_0);
    EXPECT_TRUE(GetExitCodeThread(ends, &code) && code == 9 && destroyed);
    EXPECT_EQ(Error_Of(GetExitCodeThread(go, &code)), ERROR_INVALID_HANDLE);
    errno = 0;
    EXPECT_EQ(_beginthreadex(nullptr, 0, Until_Told, nullptr, 4, nullptr), 0u);
    EXPECT_EQ(errno, EINVAL);
    EXPECT_EQ(_beginthreadex(nullptr, 0, nullptr, nullptr, 0, nullptr), 0u);
}

unsigned Take_And_End(void *mutex) {
    return WaitForSingleObject(mutex, INFINITE) == WAIT_OBJECT_0 ? 3 : 4;
}

// Also beside threads whose handles are closed before their end.
TEST_F(Threads, HaveLeftTheirMutexesWhenTheyHaveEnded) {
    const TestHandle go(CreateEventA(nullptr, TRUE, FALSE, nullptr)),
        mutex(CreateMutexA(nullptr, FALSE, nullptr));
    for (int i = 0; i < 200; ++i) {
        if (i % 10 == 0) CloseHandle(Start(Until_Told, go));
        const TestHandle thread(Start(Take_And_End, mutex));
        DWORD code = 0;
        ASSERT_EQ(WaitForSingleObject(thread, INFINITE), WAIT_OBJECT_0);
        ASSERT_EQ(WaitForSingleObject(mutex, 0), WAIT_ABANDONED);
        EXPECT_TRUE(ReleaseMutex(mutex) && GetExitCodeThread(thread, &code) && code == 3);
    }
    SetEvent(go);
}

} // namespace
