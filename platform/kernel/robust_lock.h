#pragma once
// Locks of the host in memory that processes share: one whose holder ends is taken over by the next.

#include <cerrno>
#include <pthread.h>

inline void Make_Robust_Lock(pthread_mutex_t &lock) {
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_setpshared(&attributes, PTHREAD_PROCESS_SHARED);
    pthread_mutexattr_setrobust(&attributes, PTHREAD_MUTEX_ROBUST);
    pthread_mutex_init(&lock, &attributes);
    pthread_mutexattr_destroy(&attributes);
}

/// True when the caller has the lock now, after a holder that ended as well. `locked` is what taking it gave.
inline bool Owns_After(int locked, pthread_mutex_t &lock) {
    if (locked == EOWNERDEAD) return pthread_mutex_consistent(&lock) == 0;
    return locked == 0;
}
