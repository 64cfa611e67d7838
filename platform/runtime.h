#pragma once
// The machine's C runtime, where it differs from the host's: its random numbers.
//
// They have names of their own beside the host's `rand` and `srand`, which give up to 2,147,483,647.

#include <platform/types.h>

inline constexpr int Machine_Rand_Max = 32767;

extern "C" {

/// The next number of the calling thread's series, 0 to 32767. Every thread of every process starts the
/// series of seed 1, which begins 41, 18467, 6334. Fit for shuffling, not for secrets.
PLATFORM_API int Machine_Rand();

/// Starts the series of `seed` for the calling thread. A series is the same on every machine.
PLATFORM_API void Machine_Seed_Rand(unsigned int seed);
}
