#pragma once
// A mutex held for the length of a scope, and a wait on one.
//
//     CMutexHolder lock;
//     lock.Acquire(mutex, -1);
//     if (!lock.Is_Held()) return false;
//
// A holder lives on one thread's stack and releases what it holds in its destructor, also when an exception
// leaves the scope. It does not own the mutex handle, which must stay open meanwhile. A mutex whose last
// owner ended without a release counts as acquired, by both calls: the caller owns it, once.

#include <kelmara/foundation/new_delete.h>

class KELMARA_API CMutexHolder {
  public:
    KELMARA_CLASS_ALLOCATION

    constexpr CMutexHolder() = default;
    ~CMutexHolder();
    CMutexHolder(const CMutexHolder &) = delete;
    CMutexHolder &operator=(const CMutexHolder &) = delete;

    /// Waits for `mutex`, or for the one of an earlier call when it is null. Does nothing when the lock is
    /// held already. `timeout` is in milliseconds; then a wait that fails leaves the lock not held and writes
    /// a line to the debugger. With -1 it waits on, with a line every 2 seconds; only a mutex that cannot be
    /// waited for at all, twice in a row, ends that wait without the lock.
    void Acquire(HANDLE mutex, long timeout);

    bool Is_Held() const { return m_Held; }

  private:
    HANDLE m_Mutex = nullptr;
    bool m_Held = false;
};
static_assert(sizeof(CMutexHolder) == 8);

/// Waits at most `timeout` milliseconds, -1 for ever. 0: the caller owns the mutex and releases it; 1053: the
/// time is over; 6: it cannot be waited for, tried twice.
KELMARA_API long Get_Mutex(void *mutex, long timeout);
