#pragma once
// Waiting for whatever handles name.

#include <platform/kernel.h>
#include <platform/kernel/handle_table.h>

#include <algorithm>
#include <array>
#include <ctime>
#include <optional>
#include <span>

/// Who sleeps looks again after this time, for all that a thread may have been killed or stopped at before it
/// came to wake anybody.
inline constexpr long long Round_Milliseconds = 1000;

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

inline constexpr DWORD Most_Waited_For = 63;

/// The first of these objects that is to be had at once: its index, WAIT_ABANDONED + index, WAIT_TIMEOUT for
/// none, WAIT_FAILED with the last error.
DWORD Try_First(std::span<KernelObject *const> objects);

/// The same, waiting in line at all of them (63 at most) until one is to be had, and also until `further` has
/// moved on, if given: WAIT_TIMEOUT then too.
DWORD Wait_For_First(std::span<KernelObject *const> objects, const Deadline &deadline,
                     const SleepWord *further = nullptr);

/// What a call waits for, held by the call: whoever closes the handles meanwhile does not matter to it.
class WaitedFor {
  public:
    /// At most 63.
    WaitedFor(DWORD count, const HANDLE *handles);
    /// False when one of the handles is not open.
    bool All_There() const { return all_there_; }
    std::span<KernelObject *const> Objects() const { return {objects_.data(), count_}; }

  private:
    std::array<std::optional<HandleUse>, Most_Waited_For> uses_;
    std::array<KernelObject *, Most_Waited_For> objects_;
    std::size_t count_ = 0;
    bool all_there_ = true;
};

/// WaitForSingleObject for a handle of any kind: each waits in its own way (KernelObject::Wait).
DWORD Wait_By_Kind(HANDLE handle, DWORD milliseconds);
