#include <kelmara/shared_state/mutex_holder.h>

#include <platform/kernel.h>
#include <platform/machine.h>

#include <tests/support/test_machine.h>

#include <future>
#include <mutex>
#include <thread>

namespace {

class MutexHolders : public MachineTest {
  protected:
    void SetUp() override {
        MachineTest::SetUp();
        mutex = CreateMutexA(nullptr, FALSE, "HOLD");
        char text[20];
        std::snprintf(text, sizeof text, "%lx", GetCurrentProcessId());
        process_id = text;
        const auto sink = [](const char *output, void *context) {
            auto *self = static_cast<MutexHolders *>(context);
            std::lock_guard guard(self->lock);
            self->debug_output += output;
        };
        Set_Debug_Output_Sink(sink, this);
    }
    void TearDown() override {
        EXPECT_TRUE(Is_Free());
        Set_Debug_Output_Sink(nullptr, nullptr);
        CloseHandle(mutex);
        MachineTest::TearDown();
    }
    bool Is_Free() {
        const auto take = [this] {
            return WaitForSingleObject(mutex, 0) == WAIT_OBJECT_0 && ReleaseMutex(mutex);
        };
        return std::async(std::launch::async, take).get();
    }
    /// Runs `work` while another thread holds the mutex.
    template <class Work>
    void While_Taken(Work work) {
        std::promise<void> taken, done;
        std::thread holder([&] {
            WaitForSingleObject(mutex, INFINITE);
            taken.set_value();
            done.get_future().wait();
            ReleaseMutex(mutex);
        });
        taken.get_future().wait();
        work(done);
        holder.join();
    }

    HANDLE mutex = nullptr;
    std::mutex lock;
    std::string debug_output, process_id;
};

TEST_F(MutexHolders, ReleaseWhatTheyHoldAtTheEndOfTheScope) {
    {
        CMutexHolder holder;
        EXPECT_FALSE(holder.Is_Held());
        holder.Acquire(mutex, -1);
        holder.Acquire(nullptr, -1);
        holder.Acquire(INVALID_HANDLE_VALUE, 0);
        EXPECT_TRUE(holder.Is_Held()) << "what is held is not taken again";
        EXPECT_FALSE(Is_Free());
    }
    EXPECT_TRUE(Is_Free());
    EXPECT_EQ(debug_output, "");
}

TEST_F(MutexHolders, GiveUpWhenTheirTimeIsOver) {
    While_Taken([&](std::promise<void> &done) {
        CMutexHolder holder;
        holder.Acquire(mutex, 10);
        EXPECT_FALSE(holder.Is_Held());
        EXPECT_EQ(debug_output, "Non Infinite Wait Mutex Acquire Failed. PID: " + process_id + " \n");
        EXPECT_EQ(Get_Mutex(mutex, 0), 1053);
        done.set_value();
        holder.Acquire(nullptr, 5000); // the mutex of the first call
        EXPECT_TRUE(holder.Is_Held());
    });
}

TEST_F(MutexHolders, WaitWithoutEndAndSayHowLong) {
    While_Taken([&](std::promise<void> &done) {
        std::thread later([&] {
            Sleep(2300);
            done.set_value();
        });
        CMutexHolder holder;
        holder.Acquire(mutex, -1);
        EXPECT_TRUE(holder.Is_Held());
        later.join();
    });
    EXPECT_EQ(debug_output, "Mutex Wait Timeout after 2 seconds. PID: " + process_id + "   Trying Again\n");
}

TEST_F(MutexHolders, EndOnWhatIsNoMutex) {
    CMutexHolder holder;
    holder.Acquire(nullptr, -1);
    EXPECT_FALSE(holder.Is_Held());
    const std::string line = "Mutex Acquire Failed. PID: " + process_id + " \n";
    EXPECT_EQ(debug_output, line + line);
    for (const long timeout : {-1L, 0L}) EXPECT_EQ(Get_Mutex(nullptr, timeout), 6);
}

} // namespace
