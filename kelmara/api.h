#pragma once
// KELMARA_API marks what the library exports; everything else stays inside it.

#include <platform/types.h>

#if defined(BUILDING_KELMARA)
#define KELMARA_API __attribute__((visibility("default")))
#else
#define KELMARA_API
#endif
