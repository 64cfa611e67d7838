#pragma once
// How a call ends that answers TRUE, or FALSE with the reason as the last error; and how one ends in which
// memory runs out: no exception leaves a call.

#include <platform/kernel.h>

#include <new>

inline BOOL Succeed_Or_Tell(long error) {
    if (error == NO_ERROR) return TRUE;
    SetLastError(static_cast<DWORD>(error));
    return FALSE;
}

/// What a step answers, a code of errors.h; ERROR_NOT_ENOUGH_MEMORY when memory runs out in it.
template <class Step>
long Code_Of(Step step) {
    try {
        return step();
    } catch (const std::bad_alloc &) {
        return ERROR_NOT_ENOUGH_MEMORY;
    }
}

/// What a call answers; `failed`, with ERROR_NOT_ENOUGH_MEMORY as the last error, when memory runs out in it.
template <class Result, class Call>
Result Within_Memory(Result failed, Call call) {
    try {
        return call();
    } catch (const std::bad_alloc &) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return failed;
    }
}
