#include <platform/kernel.h>

namespace {
constinit thread_local DWORD last_error = 0;
}

extern "C" {
DWORD GetLastError() {
    return last_error;
}
void SetLastError(DWORD code) {
    last_error = code;
}
}
