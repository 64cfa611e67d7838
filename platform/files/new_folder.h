#pragma once
// Making folders.

#include <platform/files.h>

/// One level; a code of errors.h, as CreateDirectoryA tells it.
long Make_Folder(LPCSTR path);

/// The folders that lead to a full path, and it; what is there stays. Nothing is told: whoever uses the
/// folder finds out.
void Make_Folders(LPCSTR path);
