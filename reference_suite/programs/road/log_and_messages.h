#pragma once
// The third stretch: the log of all processes, and messages between them.

void Write_A_Log();

/// The neighbour of Write_A_Log; its exit code.
int Log_And_Answer();
