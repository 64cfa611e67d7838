#pragma once
// How a call ends that answers TRUE, or FALSE with the reason as the last error.

#include <platform/kernel.h>

inline BOOL Succeed_Or_Tell(long error) {
    if (error == NO_ERROR) return TRUE;
    SetLastError(static_cast<DWORD>(error));
    return FALSE;
}
