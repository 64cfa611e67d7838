#pragma once
// Waiting for whatever a handle names.

#include <platform/types.h>

/// WaitForSingleObject for a handle of any kind: each waits in its own way (KernelObject::Wait).
DWORD Wait_By_Kind(HANDLE handle, DWORD milliseconds);
