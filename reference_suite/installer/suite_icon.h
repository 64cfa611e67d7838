#pragma once
// Draws the suite's own icon: a globe with a bright spot, in 16 and 32 pixels and in few and many colours.

#include <string>

/// Writes it to a host path, where it takes the place of what is there at once. Empty on success, otherwise
/// what went wrong, as a sentence.
std::string Write_Suite_Icon(const std::string &path);
