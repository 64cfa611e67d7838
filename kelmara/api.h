#pragma once
// KELMARA_API marks what the library exports; everything else stays inside it.

#include <platform/types.h>

#if defined(BUILDING_KELMARA)
#define KELMARA_API __attribute__((visibility("default")))
#else
#define KELMARA_API
#endif

// Stands before a private operation of an exported class, which then stays inside the library.
#define KELMARA_INTERNAL __attribute__((visibility("hidden")))

// Stands before the definition, in a header, of an exported function that callers compile into themselves.
// They never emit it: the one source of the library that defines this as nothing does, and exports it.
// A caller that is not optimised calls that one.
#if !defined(KELMARA_INLINE) && defined(__OPTIMIZE__)
#define KELMARA_INLINE [[gnu::gnu_inline, gnu::always_inline]] inline
#elif !defined(KELMARA_INLINE)
#define KELMARA_INLINE [[gnu::gnu_inline]] inline
#endif
