#pragma once
// A lock of this process for what a forked child goes on using: the fork takes it and gives it back on both
// sides, so that the child finds the lock free and what it guards whole.

#include <mutex>

/// Made once, at first need, and kept for the life of the process. Nobody takes another of them while it
/// holds one, nor forks.
class ForkLock {
  public:
    ForkLock();
    ForkLock(const ForkLock &) = delete;
    ForkLock &operator=(const ForkLock &) = delete;
    void lock() { lock_.lock(); }
    void unlock() { lock_.unlock(); }

  private:
    friend struct ForkLocks;
    std::mutex lock_;
    ForkLock *next_;
};
