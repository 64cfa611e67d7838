#pragma once
// The places of a text that values are put into when it serves as a format.

#include <string>
#include <vector>

namespace tools::ltx {

/// Each place as what it takes, in order: "%s", "%ld". Flags, width and precision are left out, an asterisk
/// for one of the two is a place "*" of its own, %i counts as %d. A conversion that the library does not know
/// ends the list, for it puts in nothing from there on. A percent sign with a blank behind it is one of the
/// text, as in "100 % sure".
std::vector<std::string> Format_Places(const std::string &text);

/// How a translation's places differ from those of its source, for people; empty when they do not.
std::string Difference_In_Places(const std::string &source, const std::string &translation);

} // namespace tools::ltx
