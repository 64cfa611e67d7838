#pragma once
// KELMARA_API marks what the library exports; everything else stays inside it. KELMARA_INLINE marks inline
// functions that callers compile into themselves and the library exports all the same.

#include <platform/types.h>

#if defined(BUILDING_KELMARA)
#define KELMARA_API __attribute__((visibility("default")))
#define KELMARA_INLINE __attribute__((visibility("default"), used)) inline
#else
#define KELMARA_API
#define KELMARA_INLINE inline
#endif

// Stands before a private operation of an exported class, which then stays inside the library.
#define KELMARA_INTERNAL __attribute__((visibility("hidden")))
