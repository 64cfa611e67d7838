#include <platform/runtime.h>

namespace {
thread_local std::uint32_t state = 1;
}

extern "C" {

int Machine_Rand() {
    state = state * 214013u + 2531011u;
    return static_cast<int>(state >> 16 & 0x7FFF);
}

void Machine_Seed_Rand(unsigned int seed) {
    state = seed;
}
}
