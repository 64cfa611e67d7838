#pragma once
// Taking a file out of its folder, for DeleteFileA and the C runtime.

#include <platform/files.h>

/// A code of errors.h, as DeleteFileA tells it.
long Delete_File(LPCSTR path);
