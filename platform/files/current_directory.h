#pragma once
// The process's current directory, for the file calls and the C runtime.

#include <platform/types.h>

#include <string>

/// Codes of errors.h, as SetCurrentDirectoryA and GetCurrentDirectoryA tell them.
long Change_Directory(LPCSTR path);
long Find_Current_Directory(std::string &windows_path);
