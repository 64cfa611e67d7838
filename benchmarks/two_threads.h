#pragma once
// Two threads that sleep on a word each and wake each other: the least that it takes to be heard by another
// thread and to hear of it.

#include <atomic>
#include <linux/futex.h>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>

namespace measure {

class TwoThreads {
  public:
    ~TwoThreads() {
        Move_On(there_, Stop);
        answerer_.join();
    }
    void There_And_Back() {
        Move_On(there_, ++round_);
        Sleep_While(back_, round_ - 1);
    }

  private:
    static constexpr int Stop = -1;

    static void Sleep_While(std::atomic<int> &word, int value) {
        while (word == value) syscall(SYS_futex, &word, FUTEX_WAIT_PRIVATE, value, nullptr, nullptr, 0);
    }
    static void Move_On(std::atomic<int> &word, int to) {
        word = to;
        syscall(SYS_futex, &word, FUTEX_WAKE_PRIVATE, 1, nullptr, nullptr, 0);
    }
    void Answer() {
        for (int round = 0;; Move_On(back_, ++round)) {
            Sleep_While(there_, round);
            if (there_ == Stop) return;
        }
    }

    std::atomic<int> there_{0}, back_{0};
    int round_ = 0;
    std::thread answerer_{[this] { Answer(); }};
};

} // namespace measure
