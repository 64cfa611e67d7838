#include <platform/user.h>

#include <platform/kernel.h>
#include <platform/kernel/handle_table.h>

extern "C" {

DWORD WaitForInputIdle(HANDLE process, DWORD) {
    const HandleUse use(process, ObjectKind::Process);
    SetLastError(static_cast<DWORD>(use ? ERROR_NOT_GUI_PROCESS : ERROR_INVALID_HANDLE));
    return WAIT_FAILED;
}
}
