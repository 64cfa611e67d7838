#include <platform/runtime.h>

#include <platform/kernel/thread_object.h>
#include <platform/runtime/runtime_error.h>

extern "C" {

std::uintptr_t _beginthreadex(void *, unsigned stack_size, unsigned (*routine)(void *), void *argument,
                              unsigned flags, unsigned *thread_id) {
    unsigned id = 0;
    long error = flags == 0 && routine ? NO_ERROR : ERROR_INVALID_PARAMETER;
    const HANDLE handle =
        error == NO_ERROR ? Start_Thread(stack_size, routine, argument, id, error) : nullptr;
    if (!Succeed_Or_Set_Errno(error)) return 0;
    if (thread_id) *thread_id = id;
    return reinterpret_cast<std::uintptr_t>(handle);
}

void _endthreadex(unsigned code) {
    ExitThread(code);
}
}
