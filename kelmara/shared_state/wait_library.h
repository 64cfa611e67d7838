#pragma once
// Inside the library: the exit routine of the wait window.

/// Closes a window that was left open, and gives the companion back for good.
void Release_Wait_Library();
