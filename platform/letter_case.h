#pragma once
// Letter case in the system's code page 1252, as the registry compares names.

#include <platform/types.h>

extern "C" {

/// Puts capital letters in the place of small ones in `length` characters, zero bytes among them. `length`.
PLATFORM_API DWORD CharUpperBuffA(LPSTR text, DWORD length);
}
