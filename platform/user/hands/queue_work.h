#pragma once
// What the hands share: putting something in the thread's queue and working it off.

#include <platform/user.h>

/// True within a message that the hands brought about; they do nothing then.
bool Hands_Are_Busy();

/// Posts and works off the queue, up to a thousand messages; WM_QUIT is left in it. False when it could not
/// be posted.
bool Post_And_Work(HWND window, UINT message, WPARAM wparam, LPARAM lparam);
