#include <tests/support/handles.h>
#include <tests/support/second_process.h>
#include <tests/support/sleepers.h>
#include <tests/support/test_machine.h>

#include <atomic>
#include <thread>
#include <unistd.h>

namespace {

using Mutexes = MachineTest;

HANDLE Create(BOOL owned = FALSE, const char *name = "TEST-MUTEX") {
    return CreateMutexA(nullptr, owned, name);
}

// Takes the mutex, says what its making and the wait gave, and waits to be killed or told to release.
SECOND_PROCESS(mutex_holder) {
    const HANDLE mutex = Create();
    process.Tell(std::to_string(GetLastError()));
    process.Tell(std::to_string(WaitForSingleObject(mutex, INFINITE)));
    while (process.Hear() == "release") process.Tell(ReleaseMutex(mutex) ? "released" : "refused");
    return 0;
}

TEST_F(Mutexes, AreTakenAgainByTheirOwnerAndByNobodyElse) {
    const HANDLE mutex = Create(TRUE);
    const TestHandle same(Create(TRUE, "Global\\TEST-MUTEX"));
    EXPECT_EQ(same.error, ERROR_ALREADY_EXISTS);
    EXPECT_EQ(WaitForSingleObject(same, 0), WAIT_OBJECT_0);
    std::thread([&] {
        EXPECT_EQ(WaitForSingleObject(mutex, 0), WAIT_TIMEOUT);
        EXPECT_EQ(WaitForSingleObject(mutex, 30), WAIT_TIMEOUT);
        EXPECT_EQ(Error_Of(ReleaseMutex(mutex)), ERROR_NOT_OWNER);
    }).join();
    EXPECT_TRUE(ReleaseMutex(mutex));
    EXPECT_TRUE(ReleaseMutex(same));
    EXPECT_FALSE(ReleaseMutex(mutex));
    EXPECT_TRUE(CloseHandle(mutex));
    EXPECT_EQ(Error_Of(CloseHandle(mutex)), ERROR_INVALID_HANDLE);
    EXPECT_EQ(WaitForSingleObject(mutex, 0), WAIT_FAILED);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_HANDLE));
}

TEST_F(Mutexes, OfAnEndedThreadAreHandedOnAsAbandoned) {
    for (const char *name : {"NAMED", static_cast<const char *>(nullptr)}) {
        const TestHandle mutex(Create(FALSE, name));
        std::thread([&] { WaitForSingleObject(mutex, INFINITE); }).join();
        EXPECT_EQ(WaitForSingleObject(mutex, 1000), WAIT_ABANDONED);
        EXPECT_TRUE(ReleaseMutex(mutex));
        EXPECT_FALSE(ReleaseMutex(mutex)) << "one release is enough";
        EXPECT_EQ(WaitForSingleObject(mutex, 1000), WAIT_OBJECT_0) << "and it is in order again";
        EXPECT_TRUE(ReleaseMutex(mutex));
    }
}

TEST_F(Mutexes, AreHandedOverBetweenProcessesAndAbandonedByKilledOnes) {
    const TestHandle mutex(Create());
    for (const char *waited : {"0", "128"}) { // the second owner puts it in order and dies too
        SecondProcess holder("mutex_holder");
        EXPECT_EQ(holder.Hear(), std::to_string(ERROR_ALREADY_EXISTS));
        EXPECT_EQ(holder.Hear(), waited);
        EXPECT_EQ(WaitForSingleObject(mutex, 20), WAIT_TIMEOUT);
    }
    EXPECT_EQ(WaitForSingleObject(mutex, INFINITE), WAIT_ABANDONED);
    EXPECT_TRUE(ReleaseMutex(mutex));

    SecondProcess holder("mutex_holder");
    for (const char *line : {"183", "0"}) EXPECT_EQ(holder.Hear(), line);
    holder.Tell("release");
    EXPECT_EQ(WaitForSingleObject(mutex, INFINITE), WAIT_OBJECT_0);
    EXPECT_EQ(holder.Hear(), "released");
    EXPECT_TRUE(ReleaseMutex(mutex));
    EXPECT_EQ(holder.Wait(), 0);
}

TEST_F(Mutexes, ClosedWhileOwnedStayWithTheirOwnerAsLongAsAnybodyHasThem) {
    CloseHandle(Create(TRUE));
    const HANDLE fresh = Create(TRUE);
    EXPECT_EQ(GetLastError(), 0u) << "the name went with its only handle";
    SecondProcess second("mutex_holder");
    EXPECT_EQ(second.Hear(), std::to_string(ERROR_ALREADY_EXISTS));
    CloseHandle(fresh);
    const TestHandle again(Create());
    EXPECT_EQ(again.error, ERROR_ALREADY_EXISTS) << "the second process has it";
    std::thread([&] { EXPECT_EQ(WaitForSingleObject(again, 20), WAIT_TIMEOUT); }).join();
    EXPECT_EQ(WaitForSingleObject(again, 20), WAIT_OBJECT_0) << "still this thread's";
    EXPECT_TRUE(ReleaseMutex(again));
}

TEST_F(Mutexes, ClosedWhileOwnedGoWhenTheirOwnerEnds) {
    std::thread([] { CloseHandle(Create(TRUE)); }).join();
    const TestHandle mutex(Create());
    EXPECT_EQ(mutex.error, 0);
    EXPECT_EQ(WaitForSingleObject(mutex, 0), WAIT_OBJECT_0);
    ReleaseMutex(mutex);
}

TEST_F(Mutexes, CanBeClosedUnderAWaiter) {
    const TestHandle owned(Create(TRUE));
    const HANDLE waited_for = Create();
    std::atomic<int> number{0};
    std::thread waiter([&] {
        number = gettid();
        EXPECT_EQ(WaitForSingleObject(waited_for, INFINITE), WAIT_OBJECT_0);
        EXPECT_FALSE(ReleaseMutex(waited_for)) << "its handle is gone; the thread's end gives it up";
    });
    while (number == 0 || !Is_Asleep(number)) Sleep(1);
    CloseHandle(waited_for);
    ReleaseMutex(owned);
    waiter.join();
    EXPECT_EQ(WaitForSingleObject(owned, 0), WAIT_ABANDONED);
    ReleaseMutex(owned);
}

TEST_F(Mutexes, StandHandlesThatComeAndGoWhileTheyAreUsed) {
    std::atomic<bool> done{false};
    std::atomic<long> inside{0}, taken{0};
    const auto Use = [&] {
        while (!done) {
            const TestHandle mutex(Create());
            for (int use = 0; use < 5; ++use) {
                if (WaitForSingleObject(mutex, INFINITE) != WAIT_OBJECT_0) continue;
                EXPECT_EQ(++inside, 1);
                ++taken;
                --inside;
                EXPECT_TRUE(ReleaseMutex(mutex));
            }
        }
    };
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) threads.emplace_back(Use);
    Sleep(300);
    done = true;
    for (std::thread &thread : threads) thread.join();
    EXPECT_GT(taken, 100);
    EXPECT_EQ(TestHandle(Create()).error, 0) << "none of them lingers";
}

TEST_F(Mutexes, AreRefusedOtherKindsNamesAndNamesThatAreNone) {
    const TestHandle mapping(
        CreateFileMappingA(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, 100, "MAPPING"));
    EXPECT_EQ(Error_Of(Create(FALSE, "MAPPING")), ERROR_INVALID_HANDLE);
    EXPECT_EQ(Error_Of(Create(FALSE, "a\\b")), ERROR_PATH_NOT_FOUND);
    EXPECT_EQ(Error_Of(Create(FALSE, std::string(260, 'n').c_str())), ERROR_FILENAME_EXCED_RANGE);
    const TestHandle longest(Create(FALSE, std::string(259, 'n').c_str()));
    const TestHandle other(Create(FALSE, (std::string(258, 'n') + "m").c_str()));
    EXPECT_TRUE(longest && other && other.error == 0);
}

} // namespace
