#pragma once
// The suite's own programs and modules, once copied to a machine, find the libraries beside themselves: there
// stand links to those that the installing process runs with. Links, not copies: a newer library of the same
// name is everybody's at once.

#include <string>

/// Links both libraries into a folder of the host, under the names that programs load them by; what has such
/// a name there is replaced, at no moment missing. Empty on success, otherwise what went wrong, as a
/// sentence.
std::string Link_Libraries(const std::string &folder);
