#include <platform/kernel.h>

#include <platform/files/host_error.h>
#include <platform/kernel/child_watch.h>
#include <platform/kernel/outcome.h>
#include <platform/kernel/process_descriptor.h>

#include <climits>
#include <csignal>
#include <new>

namespace {

long Find_Process(DWORD id, ProcessObject *&process) {
    if (id == 0 || id > INT_MAX) return ERROR_INVALID_PARAMETER;
    process = Find_Child(static_cast<pid_t>(id));
    if (process) return NO_ERROR;
    FileDescriptor descriptor(pidfd_open(static_cast<pid_t>(id), 0));
    if (!descriptor) {
        const bool none = errno == ESRCH || errno == EINVAL || errno == ENOENT;
        return none ? ERROR_INVALID_PARAMETER : Error_Of_Errno(errno);
    }
    if (pidfd_send_signal(descriptor.Get(), 0, nullptr, 0) != 0) {
        return errno == ESRCH ? ERROR_INVALID_PARAMETER : Error_Of_Errno(errno);
    }
    process =
        new (std::nothrow) ProcessObject(static_cast<pid_t>(id), std::move(descriptor), Origin::Elsewhere);
    if (!process) return ERROR_NOT_ENOUGH_MEMORY;
    if (!process->Has_Ended()) return NO_ERROR;
    process->Release();
    return ERROR_INVALID_PARAMETER;
}

long Find_Exit_Code(HANDLE handle, DWORD *code) {
    if (!code) return ERROR_INVALID_PARAMETER;
    if (Is_Current_Process(handle)) {
        *code = STILL_ACTIVE;
        return NO_ERROR;
    }
    const HandleUse use(handle, ObjectKind::Process);
    return use ? use.As<ProcessObject>().Find_Exit_Code(*code) : ERROR_INVALID_HANDLE;
}

long Terminate(HANDLE handle, UINT code) {
    if (Is_Current_Process(handle)) _exit(static_cast<int>(code & 0xFF));
    const HandleUse use(handle, ObjectKind::Process);
    if (!use) return ERROR_INVALID_HANDLE;
    auto &process = use.As<ProcessObject>();
    if (process.Id() == getpid()) _exit(static_cast<int>(code & 0xFF));
    return process.Terminate(code);
}

} // namespace

extern "C" {

HANDLE OpenProcess(DWORD, BOOL, DWORD process_id) {
    ProcessObject *process = nullptr;
    const long error = Code_Of([&] { return Find_Process(process_id, process); });
    return Succeed_Or_Tell(error) ? Open_Handle(process) : nullptr;
}

BOOL GetExitCodeProcess(HANDLE process, DWORD *exit_code) {
    return Succeed_Or_Tell(Find_Exit_Code(process, exit_code));
}

BOOL TerminateProcess(HANDLE process, UINT exit_code) {
    return Succeed_Or_Tell(Terminate(process, exit_code));
}

HANDLE GetCurrentProcess() {
    return INVALID_HANDLE_VALUE;
}

HANDLE GetCurrentThread() {
    return reinterpret_cast<HANDLE>(-2L);
}
}
