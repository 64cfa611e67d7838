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

/// WaitForSingleObject for a handle of any kind: each waits in its own way (KernelObject::Wait).
DWORD Wait_By_Kind(HANDLE handle, DWORD milliseconds);
