#pragma once
// What a failed call of the host is to Windows, and what a code of Windows is to the C runtime.

#include <string>

/// The code of errors.h for a number of errno.
long Error_Of_Errno(int number);

/// The same for a call on a path, with ERROR_FILE_NOT_FOUND only when the folder that it lies in is there.
long Error_At(const std::string &host_path, int number);

/// The errno that Windows' C runtime sets for a code.
int Errno_Of_Error(long error);
