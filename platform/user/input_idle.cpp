#include <platform/user/shared_windows.h>

#include <platform/kernel.h>
#include <platform/kernel/outcome.h>
#include <platform/kernel/process_object.h>

#include <algorithm>

namespace {

enum class Input { None, Busy, Idle };

constexpr DWORD Look_Every = 5; // milliseconds
constexpr DWORD Longest_Wait = 60000;
constexpr DWORD Patience_For_A_Queue = 10000;

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

// A program that has just been started has no queue yet.
bool May_Get_A_Queue(ProcessObject &process, DWORD waited) {
    return process.Was_Started_Here() && waited < Patience_For_A_Queue && !process.Has_Ended();
}

DWORD Wait_Until_Idle(ProcessObject &process, DWORD milliseconds) {
    const std::shared_ptr<SharedWindows> shared = SharedWindows::Current();
    if (!shared) return WAIT_FAILED;
    const DWORD begin = GetTickCount();
    for (;;) {
        const DWORD waited = GetTickCount() - begin;
        const Input state = State_Of(*shared, static_cast<DWORD>(process.Id()));
        if (state == Input::Idle) return 0;
        if (state == Input::None && !May_Get_A_Queue(process, waited)) return Failed(ERROR_NOT_GUI_PROCESS);
        if (waited >= std::min(milliseconds, Longest_Wait)) return WAIT_TIMEOUT;
        Sleep(Look_Every);
    }
}

} // namespace

extern "C" {

DWORD WaitForInputIdle(HANDLE process, DWORD milliseconds) {
    if (Is_Current_Process(process)) return 0;
    const HandleUse use(process, ObjectKind::Process);
    if (!use) return Failed(ERROR_INVALID_HANDLE);
    auto &other = use.As<ProcessObject>();
    if (static_cast<DWORD>(other.Id()) == GetCurrentProcessId()) return 0;
    return Within_Memory(WAIT_FAILED, [&] { return Wait_Until_Idle(other, milliseconds); });
}
}
