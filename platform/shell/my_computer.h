#pragma once
// My Computer: the machine's drives, and the classes that are registered for it.

#include <platform/shell/folder.h>

/// A new folder. May throw std::bad_alloc.
HRESULT Open_My_Computer(REFIID iid, void **out);
