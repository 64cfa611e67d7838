#pragma once
// Waiting for whatever a handle names.

#include <platform/kernel.h>

#include <algorithm>
#include <ctime>

/// The end of a wait, on the host's clock that nobody sets.
class Deadline {
  public:
    explicit Deadline(DWORD milliseconds)
        : never_(milliseconds == INFINITE), end_(Milliseconds_Now() + milliseconds) {}
    /// In milliseconds; INFINITE for a wait without an end.
    long long Left() const { return never_ ? INFINITE : std::max(0LL, end_ - Milliseconds_Now()); }
    bool Never() const { return never_; }

  private:
    static long long Milliseconds_Now() {
        timespec now;
        clock_gettime(CLOCK_MONOTONIC, &now);
        return static_cast<long long>(now.tv_sec) * 1000 + now.tv_nsec / 1000000;
    }

    const bool never_;
    const long long end_;
};

/// On that clock, as the host's calls want it; `milliseconds` is not INFINITE.
inline timespec Time_After(DWORD milliseconds) {
    timespec at;
    clock_gettime(CLOCK_MONOTONIC, &at);
    at.tv_sec += milliseconds / 1000;
    at.tv_nsec += static_cast<long>(milliseconds % 1000) * 1000000;
    if (at.tv_nsec >= 1000000000) {
        at.tv_nsec -= 1000000000;
        ++at.tv_sec;
    }
    return at;
}

/// WaitForSingleObject for a handle of any kind: each waits in its own way (KernelObject::Wait).
DWORD Wait_By_Kind(HANDLE handle, DWORD milliseconds);
