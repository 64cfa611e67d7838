#pragma once
// The test program's own operator new, which every module in it shares, failing when told to. To be included
// by one file of a program.

#include <cstdlib>
#include <new>

/// Of this thread: 1 is the next; 0: none fails.
inline thread_local unsigned long allocations_until_failure = 0;
inline thread_local bool fails_for_ever = false;

inline bool Must_Fail() {
    if (allocations_until_failure == 0) return false;
    if (allocations_until_failure > 1) return --allocations_until_failure, false;
    if (!fails_for_ever) allocations_until_failure = 0;
    return true;
}

// GCC takes the malloc behind the operator for a mismatch once it is inlined.
[[gnu::noinline]] void *operator new(std::size_t size) {
    if (Must_Fail()) throw std::bad_alloc();
    if (void *block = std::malloc(size ? size : 1)) return block;
    throw std::bad_alloc();
}

[[gnu::noinline]] void *operator new(std::size_t size, const std::nothrow_t &) noexcept {
    return Must_Fail() ? nullptr : std::malloc(size ? size : 1);
}

[[gnu::noinline]] void operator delete(void *block) noexcept {
    std::free(block);
}

[[gnu::noinline]] void operator delete(void *block, std::size_t) noexcept {
    std::free(block);
}
