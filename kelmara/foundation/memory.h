#pragma once
// The memory services: four entry points that hand every request to four bound routines.
//
// At the first call the routines are bound: those of the companion allocator library, whose path, of at most
// 254 characters, is the value "Memory" of the suite's registry key, unless a host has installed its own with
// Set_Local_Memory_Procs. From then on a call costs one test and one indirect call. A block goes back only
// through the entry points of the binding that gave it. Where the suite's key or value is missing, the first
// call tells the user in a message box and ends the process with 1; where the companion cannot be loaded or
// lacks an export, it ends the process with 1 and says nothing.
//
// Binding takes no lock: a program makes its first allocation before it starts threads, and the companion's
// "Initialize" makes none. Afterwards the entry points are as thread-safe as the bound routines. The
// library's exit routine takes the binding back; a call after that binds once more, and for good.

#include <kelmara/api.h>

/// A block of `size` bytes, owned by the caller until ds_free. Whatever the bound routine answers comes back
/// unchanged: null when there is no memory, and what it makes of a size of 0 or below.
KELMARA_API void *ds_malloc(long size);

/// The same, filled with zeroes.
KELMARA_API void *ds_malloc_clear(long size);

/// Resizes a block and gives its new address. A null `block` reaches the bound routine as it is. When the
/// answer is null the old block stands.
KELMARA_API void *ds_realloc(void *block, long size);

/// A null `block` reaches the bound routine as it is.
KELMARA_API void ds_free(void *block);

/// ds_malloc and ds_free with the signatures that containers store: to be handed round by address.
KELMARA_API void *ds_malloc_procptr(unsigned long size);
KELMARA_API void ds_free_procptr(void *block);

/// Binds a host's own routines in place of the companion's. Only before the first allocation of the process:
/// once anything is bound the call does nothing and reports nothing. The routines live as long as the
/// binding, that is until the library is unloaded.
KELMARA_API void Set_Local_Memory_Procs(void *(*alloc)(long), void *(*alloc_clear)(long),
                                        void *(*realloc)(void *, long), void (*release)(void *));
