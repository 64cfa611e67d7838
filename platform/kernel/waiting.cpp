#include <platform/kernel/waiting.h>

#include <platform/kernel.h>
#include <platform/kernel/handle_table.h>

DWORD Wait_By_Kind(HANDLE handle, DWORD milliseconds) {
    const HandleUse use(handle);
    if (use) return use.Object().Wait(milliseconds);
    SetLastError(ERROR_INVALID_HANDLE);
    return WAIT_FAILED;
}
