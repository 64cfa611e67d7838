#include <tests/support/handles.h>
#include <tests/support/second_process.h>
#include <tests/support/sleepers.h>
#include <tests/support/test_machine.h>

#include <platform/user.h>

#include <atomic>
#include <csignal>
#include <memory>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

using Events = MachineTest;

constexpr BOOL Manual = TRUE, Automatic = FALSE;
constexpr DWORD Long_Enough = 10000;

HANDLE Create(BOOL manual, BOOL initial = FALSE, const char *name = "TEST-EVENT") {
    return CreateEventA(nullptr, manual, initial, name);
}

/// A thread that waits once, and is at it when the object is made.
class Waiter {
  public:
    explicit Waiter(HANDLE event, DWORD milliseconds = INFINITE)
        : thread_([this, event, milliseconds] {
              number_ = gettid();
              result_ = WaitForSingleObject(event, milliseconds);
          }) {
        while (number_ == 0) Sleep(0);
        Wait_Until_Asleep(number_);
    }
    DWORD Result() {
        if (thread_.joinable()) thread_.join();
        return result_;
    }
    bool Still_Waits() const { return result_ == STILL_ACTIVE; }

  private:
    std::atomic<int> number_{0};
    std::atomic<DWORD> result_{STILL_ACTIVE};
    std::jthread thread_;
};

SECOND_PROCESS(event_waiter) {
    const HANDLE event = OpenEventA(SYNCHRONIZE, FALSE, "TEST-EVENT");
    process.Tell("waits");
    process.Tell(std::to_string(WaitForSingleObject(event, INFINITE)));
    return 0;
}

SECOND_PROCESS(event_setter) {
    process.Hear();
    const HANDLE event = OpenEventA(EVENT_MODIFY_STATE, FALSE, "TEST-EVENT");
    process.Tell(SetEvent(event) ? "set" : "refused");
    process.Hear();
    return 0;
}

TEST_F(Events, TellFreshOnesFromThoseThatWereThere) {
    EXPECT_EQ(Error_Of(OpenEventA(EVENT_ALL_ACCESS, FALSE, "TEST-EVENT")), ERROR_FILE_NOT_FOUND);
    {
        const TestHandle manual(Create(Manual, TRUE)), again(Create(Automatic, FALSE, "Local\\TEST-EVENT"));
        EXPECT_EQ(manual.error, 0);
        EXPECT_EQ(again.error, ERROR_ALREADY_EXISTS);
        for (int i = 0; i < 2; ++i) EXPECT_EQ(WaitForSingleObject(again, 0), WAIT_OBJECT_0) << "manual, set";
        SetLastError(77);
        const TestHandle opened(OpenEventA(SYNCHRONIZE, FALSE, "TEST-EVENT"));
        EXPECT_EQ(opened.error, 77);
        EXPECT_TRUE(ResetEvent(opened));
        EXPECT_EQ(WaitForSingleObject(manual, 0), WAIT_TIMEOUT);
        EXPECT_EQ(Error_Of(CreateMutexA(nullptr, FALSE, "TEST-EVENT")), ERROR_INVALID_HANDLE);
    }
    EXPECT_EQ(Error_Of(OpenEventA(EVENT_ALL_ACCESS, FALSE, "TEST-EVENT")), ERROR_FILE_NOT_FOUND);
    const TestHandle mutex(CreateMutexA(nullptr, FALSE, "TEST-EVENT"));
    EXPECT_EQ(Error_Of(OpenEventA(EVENT_ALL_ACCESS, FALSE, "TEST-EVENT")), ERROR_INVALID_HANDLE);
    EXPECT_EQ(Error_Of(OpenEventA(EVENT_ALL_ACCESS, FALSE, nullptr)), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(Error_Of(SetEvent(mutex)), ERROR_INVALID_HANDLE);
}

TEST_F(Events, EndOneWaitForEachTimeTheyAreSet) {
    for (const char *name : {"NAMED", static_cast<const char *>(nullptr)}) {
        const TestHandle event(Create(Automatic, FALSE, name));
        Waiter first(event), second(event), third(event);
        SetEvent(event);
        EXPECT_EQ(first.Result(), WAIT_OBJECT_0) << "who waits longest is first";
        EXPECT_TRUE(second.Still_Waits() && third.Still_Waits());
        SetEvent(event);
        SetEvent(event);
        EXPECT_EQ(second.Result(), WAIT_OBJECT_0);
        EXPECT_EQ(third.Result(), WAIT_OBJECT_0) << "set twice in a row";
        EXPECT_EQ(WaitForSingleObject(event, 0), WAIT_TIMEOUT);
        SetEvent(event);
        SetEvent(event);
        EXPECT_EQ(WaitForSingleObject(event, INFINITE), WAIT_OBJECT_0);
        EXPECT_EQ(WaitForSingleObject(event, 20), WAIT_TIMEOUT) << "set is set, however often";
    }
}

TEST_F(Events, OfTheManualKindEndAllWaitsEvenIfTheyAreResetAtOnce) {
    const TestHandle event(Create(Manual, FALSE, nullptr));
    std::vector<std::unique_ptr<Waiter>> waiters; // more than have a place to wait in
    for (int i = 0; i < 130; ++i) waiters.push_back(std::make_unique<Waiter>(event));
    SetEvent(event);
    for (auto &waiter : waiters) EXPECT_EQ(waiter->Result(), WAIT_OBJECT_0);
    ResetEvent(event);
    Waiter first(event), second(event), third(event, Long_Enough);
    SetEvent(event);
    ResetEvent(event);
    for (Waiter *waiter : {&first, &second, &third}) EXPECT_EQ(waiter->Result(), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(event, 0), WAIT_TIMEOUT);
}

SECOND_PROCESS(waiter_for_either) {
    const HANDLE both[] = {Create(Automatic, FALSE, "ONE"), Create(Automatic, FALSE, "OTHER")};
    process.Tell("waits");
    process.Tell(std::to_string(MsgWaitForMultipleObjects(2, both, FALSE, INFINITE, 0)));
    process.Hear();
    return 0;
}

TEST_F(Events, StayResetWhenAWaitThatTheyHadReleasedTakesAnother) {
    const TestHandle one(Create(Automatic, FALSE, "ONE")), other(Create(Automatic, FALSE, "OTHER"));
    SecondProcess waiter("waiter_for_either");
    EXPECT_EQ(waiter.Hear(), "waits");
    Wait_Until_Asleep(waiter.Id(), waiter.Id());
    kill(static_cast<pid_t>(waiter.Id()), SIGSTOP);
    SetEvent(other);
    ResetEvent(other);
    SetEvent(one);
    kill(static_cast<pid_t>(waiter.Id()), SIGCONT);
    EXPECT_EQ(waiter.Hear(), "0");
    EXPECT_EQ(WaitForSingleObject(other, 0), WAIT_TIMEOUT);
}

TEST_F(Events, WakeOtherProcessesAndPassOverKilledOnes) {
    const TestHandle event(Create(Automatic));
    const auto begin_to_wait = [](SecondProcess &process) {
        EXPECT_EQ(process.Hear(), "waits");
        Wait_Until_Asleep(process.Id(), process.Id());
    };
    SecondProcess killed("event_waiter");
    begin_to_wait(killed);
    SecondProcess waiting("event_waiter");
    begin_to_wait(waiting);
    killed.Kill();
    killed.Wait();
    SetEvent(event);
    EXPECT_EQ(waiting.Hear(), "0") << "not lost to the one that was killed";
    EXPECT_EQ(WaitForSingleObject(event, 0), WAIT_TIMEOUT);

    SecondProcess stopped("event_waiter");
    begin_to_wait(stopped);
    SecondProcess next("event_waiter");
    begin_to_wait(next);
    kill(static_cast<pid_t>(stopped.Id()), SIGSTOP);
    SetEvent(event);
    stopped.Kill();
    EXPECT_EQ(next.Hear(), "0") << "nor to one that is killed before it can take it";
    EXPECT_EQ(WaitForSingleObject(event, 0), WAIT_TIMEOUT);

    Waiter here(event);
    SecondProcess setter("event_setter");
    setter.Tell("set it");
    EXPECT_EQ(setter.Hear(), "set");
    EXPECT_EQ(here.Result(), WAIT_OBJECT_0);
}

SECOND_PROCESS(tireless_setter) {
    const HANDLE event = Create(Automatic);
    for (process.Tell("ready");; ResetEvent(event)) SetEvent(event);
}

TEST_F(Events, AreNotHeldUpWithoutEndByAStoppedProcess) {
    SecondProcess stopped("tireless_setter");
    EXPECT_EQ(stopped.Hear(), "ready");
    const TestHandle event(Create(Automatic));
    bool was_inside = false;
    for (int round = 0; round < 200 && !was_inside; ++round) {
        kill(stopped.Id(), SIGSTOP);
        int status;
        waitpid(stopped.Id(), &status, WUNTRACED);
        std::atomic<bool> done{false};
        std::jthread other([&] {
            ResetEvent(event);
            EXPECT_EQ(WaitForSingleObject(event, 0), WAIT_TIMEOUT);
            EXPECT_EQ(WaitForSingleObject(event, 20), WAIT_TIMEOUT);
            was_inside = !SetEvent(event);
            EXPECT_TRUE(!was_inside || GetLastError() == ERROR_SERVICE_REQUEST_TIMEOUT);
            done = true;
        });
        for (DWORD start = GetTickCount(); !done && GetTickCount() - start < Long_Enough;) Sleep(1);
        if (!done) stopped.Kill();
        ASSERT_TRUE(done);
        kill(stopped.Id(), SIGCONT);
        usleep(static_cast<useconds_t>(37 * round));
    }
    EXPECT_TRUE(was_inside);
    stopped.Kill();
    stopped.Wait();
    EXPECT_TRUE(SetEvent(event)) << "what a killed one held";
    EXPECT_EQ(WaitForSingleObject(event, INFINITE), WAIT_OBJECT_0);
}

} // namespace
