#pragma once
// Files that are open as streams: such a file cannot be deleted or renamed, by no process of the machine.
//
// The mark is a shared lock of the host on the open file, so that it goes with its last descriptor.

#include <string>

/// For as long as the file behind the descriptor is open.
void Mark_As_Open(int descriptor);

/// Before it is closed: children that were forked meanwhile have it open a little longer.
void Unmark_As_Open(int descriptor);

/// False for what is no plain file, and for one that may not be read.
bool Is_Open_Somewhere(const std::string &host_path);
