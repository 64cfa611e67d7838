#include <platform/user/shared_windows.h>

#include <platform/kernel.h>
#include <platform/kernel/outcome.h>
#include <platform/kernel/process_object.h>

#include <algorithm>

namespace {

enum class Input { None, Busy, Idle };

constexpr DWORD Look_Every = 5; // milliseconds

Input State_Of(SharedWindows &shared, DWORD process_id) {
    Input state = Input::None;
    shared.For_Each_Thread_Of(process_id, [&state](const ThreadRow &row) {
        state = row.idle.load(std::memory_order_acquire) ? Input::Idle : Input::Busy;
        return state != Input::Idle;
    });
    return state;
}

DWORD Failed(long error) {
    SetLastError(static_cast<DWORD>(error));
    return WAIT_FAILED;
}

DWORD Wait_Until_Idle(DWORD process_id, DWORD milliseconds) {
    const std::shared_ptr<SharedWindows> shared = SharedWindows::Current();
    if (!shared) return WAIT_FAILED;
    const DWORD begin = GetTickCount();
    for (;;) {
        const Input state = State_Of(*shared, process_id);
        if (state == Input::None) return Failed(ERROR_NOT_GUI_PROCESS);
        if (state == Input::Idle) return 0;
        if (milliseconds != INFINITE && GetTickCount() - begin >= milliseconds) return WAIT_TIMEOUT;
        Sleep(Look_Every);
    }
}

} // namespace

extern "C" {

DWORD WaitForInputIdle(HANDLE process, DWORD milliseconds) {
    if (Is_Current_Process(process)) return 0;
    const HandleUse use(process, ObjectKind::Process);
    if (!use) return Failed(ERROR_INVALID_HANDLE);
    const auto process_id = static_cast<DWORD>(use.As<ProcessObject>().Id());
    if (process_id == GetCurrentProcessId()) return 0;
    return Within_Memory(WAIT_FAILED, [&] { return Wait_Until_Idle(process_id, milliseconds); });
}
}
