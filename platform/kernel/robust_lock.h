#pragma once
// Locks of the host in memory that processes share: one whose holder ends is taken over by the next.

#include <platform/kernel/sleep_word.h>

#include <cerrno>
#include <linux/futex.h>
#include <pthread.h>

inline void Make_Robust_Lock(pthread_mutex_t &lock, int type = PTHREAD_MUTEX_DEFAULT) {
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_setpshared(&attributes, PTHREAD_PROCESS_SHARED);
    pthread_mutexattr_setrobust(&attributes, PTHREAD_MUTEX_ROBUST);
    pthread_mutexattr_settype(&attributes, type);
    pthread_mutex_init(&lock, &attributes);
    pthread_mutexattr_destroy(&attributes);
}

/// True when the caller has the lock now, after a holder that ended as well. `locked` is what taking it gave.
inline bool Owns_After(int locked, pthread_mutex_t &lock) {
    if (locked == EOWNERDEAD) return pthread_mutex_consistent(&lock) == 0;
    return locked == 0;
}

/// What the host keeps of a lock: the number of the thread that holds it, a mark when somebody sleeps on it,
/// and a mark that its holder has ended.
inline std::atomic<std::uint32_t> &Word_Of(pthread_mutex_t &lock) {
    return reinterpret_cast<std::atomic<std::uint32_t> &>(lock.__data.__lock);
}

inline const std::atomic<std::uint32_t> &Word_Of(const pthread_mutex_t &lock) {
    return reinterpret_cast<const std::atomic<std::uint32_t> &>(lock.__data.__lock);
}

/// Whether that word says that a living thread holds the lock.
inline bool Is_Held(std::uint32_t word) {
    return (word & FUTEX_TID_MASK) != 0 && !(word & FUTEX_OWNER_DIED);
}

/// Has the host wake one sleeper when the lock is given up, or its holder ends. False when nobody holds it.
/// A sleeper that is woken and does not take the lock wakes another; one that takes it leaves the mark.
inline bool Announce_Sleeper(pthread_mutex_t &lock, SleepWord &sleep) {
    std::atomic<std::uint32_t> &word = Word_Of(lock);
    std::uint32_t value = word.load();
    do {
        if (!Is_Held(value)) return false;
    } while (!word.compare_exchange_weak(value, value | FUTEX_WAITERS));
    sleep = {&word, value | FUTEX_WAITERS};
    return true;
}
