#include <platform/kernel.h>

#include <atomic>

namespace {
constinit std::atomic<UINT> error_mode{0};
}

extern "C" {
UINT SetErrorMode(UINT mode) {
    return error_mode.exchange(mode);
}
}
