#pragma once
// What lies under the pointer.

#include <platform/user.h>

struct Hit {
    HWND window = nullptr;
    HWND topmost = nullptr;
    LRESULT code = HTNOWHERE; // HTCLIENT, HTCAPTION, HTBORDER
};

/// The uppermost visible window of the calling thread at that place of the screen that lets the pointer not
/// through (HTTRANSPARENT). A disabled child leaves it to its parent. No window when there is none, when one
/// of another thread is in front, or when the topmost one is disabled. WM_NCHITTEST is sent on the way.
Hit Hit_At(POINT place);
