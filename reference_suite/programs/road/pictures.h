#pragma once
// Pictures of windows, in the folder `pictures` of the machine's.

#include <platform/types.h>

#include <string>

/// Takes one, named so, and tells where it is.
void Take_Picture(HWND window, const std::string &name);
