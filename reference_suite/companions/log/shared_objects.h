#pragma once
// Handles that close themselves, and a named mutex held for the length of a scope.

#include <platform/kernel.h>

#include <memory>

struct HandleCloser {
    void operator()(HANDLE handle) const { CloseHandle(handle); }
};
using OwnedHandle = std::unique_ptr<void, HandleCloser>;

/// Not held when the time is over. What the last holder was killed with is the guarded thing's to stand.
class MutexLock {
  public:
    MutexLock(const OwnedHandle &mutex, DWORD milliseconds) : mutex_(mutex.get()) {
        const DWORD result = WaitForSingleObject(mutex_, milliseconds);
        held_ = result == WAIT_OBJECT_0 || result == WAIT_ABANDONED;
    }
    ~MutexLock() {
        if (held_) ReleaseMutex(mutex_);
    }
    MutexLock(const MutexLock &) = delete;
    MutexLock &operator=(const MutexLock &) = delete;
    explicit operator bool() const { return held_; }

  private:
    const HANDLE mutex_;
    bool held_;
};
