#include <platform/kernel.h>

#include <tests/support/second_process.h>
#include <tests/support/test_machine.h>

#include <thread>

namespace {

using Mutexes = MachineTest;

constexpr char Name[] = "TEST-MUTEX";

// Takes the named mutex `times` times, says what each wait gave, and waits to be killed or told to go on.
SECOND_PROCESS(mutex_holder) {
    const HANDLE mutex = CreateMutexA(nullptr, FALSE, process.Arguments().at(0).c_str());
    process.Tell(std::to_string(GetLastError()));
    process.Tell(std::to_string(WaitForSingleObject(mutex, INFINITE)));
    while (process.Hear() == "release") process.Tell(ReleaseMutex(mutex) ? "released" : "refused");
    return 0;
}

TEST_F(Mutexes, ReportWhetherTheyAreFresh) {
    const HANDLE first = CreateMutexA(nullptr, FALSE, Name);
    EXPECT_EQ(GetLastError(), 0u);
    const HANDLE again = CreateMutexA(nullptr, TRUE, "Global\\TEST-MUTEX");
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_ALREADY_EXISTS));
    EXPECT_EQ(reinterpret_cast<long>(first) % 4, 0);
    EXPECT_FALSE(ReleaseMutex(again)) << "the wish to own one that exists is ignored";
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_NOT_OWNER));
    EXPECT_TRUE(CloseHandle(first));
    EXPECT_TRUE(CloseHandle(again));
    EXPECT_FALSE(CloseHandle(again));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_HANDLE));
    const HANDLE fresh = CreateMutexA(nullptr, FALSE, Name);
    EXPECT_EQ(GetLastError(), 0u) << "the name went with its last handle";
    CloseHandle(fresh);
}

TEST_F(Mutexes, AreTakenAgainByTheirOwnerAndByNobodyElse) {
    const HANDLE mutex = CreateMutexA(nullptr, TRUE, Name);
    const HANDLE same = CreateMutexA(nullptr, FALSE, Name);
    EXPECT_EQ(WaitForSingleObject(same, 0), WAIT_OBJECT_0);
    std::thread([&] {
        EXPECT_EQ(WaitForSingleObject(mutex, 0), WAIT_TIMEOUT);
        EXPECT_EQ(WaitForSingleObject(mutex, 30), WAIT_TIMEOUT);
        EXPECT_FALSE(ReleaseMutex(mutex));
        EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_NOT_OWNER));
    }).join();
    EXPECT_TRUE(ReleaseMutex(mutex));
    EXPECT_TRUE(ReleaseMutex(same));
    EXPECT_FALSE(ReleaseMutex(mutex));
    EXPECT_EQ(WaitForSingleObject(mutex, INFINITE), WAIT_OBJECT_0);
    EXPECT_TRUE(ReleaseMutex(mutex));
    CloseHandle(mutex);
    CloseHandle(same);
    EXPECT_EQ(WaitForSingleObject(mutex, 0), WAIT_FAILED);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_HANDLE));
}

TEST_F(Mutexes, OfAnEndedThreadAreHandedOnAsAbandoned) {
    for (const char *name : {Name, static_cast<const char *>(nullptr)}) {
        const HANDLE mutex = CreateMutexA(nullptr, FALSE, name);
        std::thread([&] { WaitForSingleObject(mutex, INFINITE); }).join();
        EXPECT_EQ(WaitForSingleObject(mutex, 1000), WAIT_ABANDONED);
        EXPECT_TRUE(ReleaseMutex(mutex));
        EXPECT_FALSE(ReleaseMutex(mutex)) << "one release is enough";
        EXPECT_EQ(WaitForSingleObject(mutex, 1000), WAIT_OBJECT_0) << "and it is in order again";
        EXPECT_TRUE(ReleaseMutex(mutex));
        CloseHandle(mutex);
    }
}

TEST_F(Mutexes, OfAKilledProcessAreHandedOnAsAbandoned) {
    const HANDLE mutex = CreateMutexA(nullptr, FALSE, Name);
    for (int round = 0; round < 2; ++round) {
        SecondProcess holder("mutex_holder", {Name});
        EXPECT_EQ(holder.Hear(), std::to_string(ERROR_ALREADY_EXISTS));
        EXPECT_EQ(holder.Hear(), round == 0 ? "0" : "128")
            << "the second owner puts it in order and dies too";
        EXPECT_EQ(WaitForSingleObject(mutex, 20), WAIT_TIMEOUT);
        holder.Kill();
        holder.Wait();
    }
    EXPECT_EQ(WaitForSingleObject(mutex, INFINITE), WAIT_ABANDONED);
    EXPECT_TRUE(ReleaseMutex(mutex));
    CloseHandle(mutex);
}

TEST_F(Mutexes, AreHandedOverBetweenProcesses) {
    SecondProcess holder("mutex_holder", {Name});
    EXPECT_EQ(holder.Hear(), "0");
    EXPECT_EQ(holder.Hear(), "0");
    const HANDLE mutex = CreateMutexA(nullptr, FALSE, Name);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_ALREADY_EXISTS));
    EXPECT_EQ(WaitForSingleObject(mutex, 0), WAIT_TIMEOUT);
    holder.Tell("release");
    EXPECT_EQ(holder.Hear(), "released");
    EXPECT_EQ(WaitForSingleObject(mutex, INFINITE), WAIT_OBJECT_0);
    EXPECT_TRUE(ReleaseMutex(mutex));
    CloseHandle(mutex);
    EXPECT_EQ(holder.Wait(), 0);
}

TEST_F(Mutexes, ClosedWhileOwnedStayWithTheirOwnerAsLongAsAnybodyHasThem) {
    const HANDLE mutex = CreateMutexA(nullptr, TRUE, Name);
    CloseHandle(mutex);
    const HANDLE fresh = CreateMutexA(nullptr, TRUE, Name);
    EXPECT_EQ(GetLastError(), 0u) << "the name went with its only handle";
    SecondProcess second("mutex_holder", {Name});
    EXPECT_EQ(second.Hear(), std::to_string(ERROR_ALREADY_EXISTS));
    CloseHandle(fresh);
    const HANDLE again = CreateMutexA(nullptr, FALSE, Name);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_ALREADY_EXISTS)) << "the second process has it";
    std::thread([&] { EXPECT_EQ(WaitForSingleObject(again, 20), WAIT_TIMEOUT); }).join();
    EXPECT_EQ(WaitForSingleObject(again, 20), WAIT_OBJECT_0) << "still this thread's";
    EXPECT_TRUE(ReleaseMutex(again));
    CloseHandle(again);
}

TEST_F(Mutexes, ClosedWhileOwnedGoWhenTheirOwnerEnds) {
    std::thread([] { CloseHandle(CreateMutexA(nullptr, TRUE, Name)); }).join();
    const HANDLE mutex = CreateMutexA(nullptr, FALSE, Name);
    EXPECT_EQ(GetLastError(), 0u);
    EXPECT_EQ(WaitForSingleObject(mutex, 0), WAIT_OBJECT_0);
    ReleaseMutex(mutex);
    CloseHandle(mutex);
}

TEST_F(Mutexes, CanBeClosedUnderAWaiter) {
    const HANDLE owned = CreateMutexA(nullptr, TRUE, Name);
    const HANDLE waited_for = CreateMutexA(nullptr, FALSE, Name);
    std::thread waiter([&] {
        EXPECT_EQ(WaitForSingleObject(waited_for, INFINITE), WAIT_OBJECT_0);
        EXPECT_FALSE(ReleaseMutex(waited_for)) << "its handle is gone; the thread's end gives it up";
    });
    Sleep(20);
    CloseHandle(waited_for);
    ReleaseMutex(owned);
    waiter.join();
    EXPECT_EQ(WaitForSingleObject(owned, 0), WAIT_ABANDONED);
    ReleaseMutex(owned);
    CloseHandle(owned);
}

TEST_F(Mutexes, StandHandlesThatComeAndGoWhileTheyAreUsed) {
    std::atomic<bool> done{false};
    std::atomic<long> inside{0}, taken{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            while (!done) {
                const HANDLE mutex = CreateMutexA(nullptr, FALSE, Name);
                for (int use = 0; use < 5; ++use) {
                    if (WaitForSingleObject(mutex, INFINITE) != WAIT_OBJECT_0) continue;
                    EXPECT_EQ(++inside, 1);
                    ++taken;
                    --inside;
                    EXPECT_TRUE(ReleaseMutex(mutex));
                }
                EXPECT_TRUE(CloseHandle(mutex));
            }
        });
    }
    Sleep(300);
    done = true;
    for (std::thread &thread : threads) thread.join();
    EXPECT_GT(taken, 100);
    const HANDLE fresh = CreateMutexA(nullptr, FALSE, Name);
    EXPECT_EQ(GetLastError(), 0u) << "none of them lingers";
    CloseHandle(fresh);
}

TEST_F(Mutexes, ShareTheirNamesWithOtherKinds) {
    const HANDLE mapping = CreateFileMappingA(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, 100, Name);
    EXPECT_EQ(CreateMutexA(nullptr, FALSE, Name), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_HANDLE));
    CloseHandle(mapping);
    EXPECT_EQ(CreateMutexA(nullptr, FALSE, std::string(260, 'n').c_str()), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_FILENAME_EXCED_RANGE));
    EXPECT_EQ(CreateMutexA(nullptr, FALSE, "a\\b"), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_PATH_NOT_FOUND));
    const HANDLE longest = CreateMutexA(nullptr, FALSE, std::string(259, 'n').c_str());
    const HANDLE other = CreateMutexA(nullptr, FALSE, (std::string(258, 'n') + "m").c_str());
    EXPECT_EQ(GetLastError(), 0u);
    EXPECT_TRUE(longest && other);
    CloseHandle(longest);
    CloseHandle(other);
}

} // namespace
