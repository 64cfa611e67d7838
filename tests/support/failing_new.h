#pragma once
// The test program's own operator new, which every module in it shares, failing when told to. To be included
// by one file of a program.

#include <tests/support/new_failures.h>

#include <cstdlib>
#include <new>

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
