#pragma once
// How a call of the C runtime fails: errno, and the last error beside it.

#include <platform/files/host_error.h>
#include <platform/kernel.h>

#include <cerrno>

/// False after setting both, unless `error` is NO_ERROR.
inline bool Succeed_Or_Set_Errno(long error) {
    if (error == NO_ERROR) return true;
    SetLastError(static_cast<DWORD>(error));
    errno = Errno_Of_Error(error);
    return false;
}
