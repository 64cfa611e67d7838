#pragma once
// Handles that close themselves, and the error of a call that failed.

#include <platform/kernel.h>

/// 0 for a call that succeeded.
template <class Result>
long Error_Of(Result result) {
    return result ? 0 : static_cast<long>(GetLastError());
}

struct TestHandle {
    explicit TestHandle(HANDLE opened) : handle(opened) {}
    ~TestHandle() {
        if (handle) CloseHandle(handle);
    }
    TestHandle(const TestHandle &) = delete;
    TestHandle &operator=(const TestHandle &) = delete;
    operator HANDLE() const { return handle; }

    const HANDLE handle;
    const long error = static_cast<long>(GetLastError()); // as it was made
};
