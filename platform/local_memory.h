#pragma once
// Blocks of the process's local heap, as the telephony records of KERNEL32's callers stand in.
//
// A handle is the block's address. Any thread may make any call; a block is one caller's at a time.

#include <platform/errors.h>
#include <platform/types.h>

using HLOCAL = void *;

inline constexpr UINT LMEM_FIXED = 0;
inline constexpr UINT LMEM_ZEROINIT = 0x40;

extern "C" {

/// A block of exactly that size, which may be 0, at a multiple of 8. Null on failure:
/// ERROR_NOT_ENOUGH_MEMORY; ERROR_INVALID_PARAMETER for any flag but LMEM_ZEROINIT.
PLATFORM_API HLOCAL LocalAlloc(UINT flags, UINT size);

/// Bytes. 0 and ERROR_INVALID_HANDLE for what is no block, or none any more.
PLATFORM_API UINT LocalSize(HLOCAL block);

/// Null when it is freed, and for null; the same pointer, with ERROR_INVALID_HANDLE, for what is no block.
PLATFORM_API HLOCAL LocalFree(HLOCAL block);
}
