#pragma once
// One string of a table, as all of the group works on it: bytes of the machine's code page.

#include <string>

namespace tools::ltx {

struct TableString {
    std::string text, identifier, comments;
    long type = 0;

    bool operator==(const TableString &) const = default;
};

/// What an entry of a table has room for.
inline constexpr std::size_t Longest_Text = 32767, Longest_Identifier = 63, Longest_Comments = 127;

/// What no table can carry of it, as a text for people; empty when it can be carried.
std::string Limit_Passed(const TableString &string);

} // namespace tools::ltx
