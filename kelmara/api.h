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
