#pragma once
// Threads behind handles: the one that a started process begins with (process_object.h), and those that this
// process starts.

#include <platform/kernel/handle_table.h>

class ThreadObject : public KernelObject {
  public:
    ThreadObject() : KernelObject(ObjectKind::Thread) {}
    /// As GetExitCodeThread tells it: a code of errors.h.
    virtual long Find_Exit_Code(DWORD &code) = 0;
};

using ThreadRoutine = unsigned (*)(void *argument);

/// Starts a thread, with a stack of the host's usual size for 0. A handle to it, and its number at `id`; null
/// on failure, with a code of errors.h at `error`.
HANDLE Start_Thread(std::size_t stack_size, ThreadRoutine routine, void *argument, unsigned &id, long &error);

/// What the calling thread ends with, if Start_Thread has started it.
void Keep_Exit_Code(DWORD code);
