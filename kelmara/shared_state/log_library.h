#pragma once
// Inside the library: the exit routine of the log.

/// Gives the companion back, for good.
void Release_Log_Library();
