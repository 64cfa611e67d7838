#pragma once
// How names of keys and values compare: without regard to letter case, in the system's code page 1252.
//
// A character counts as the Unicode number of its capital letter, so that names stand in the order that they
// have where names are wide. Names may hold any byte, zero among them.

#include <cstddef>
#include <string_view>

/// Below 0, 0 or above 0, as `left` comes before, is the same name as, or comes after `right`.
int Compare_Names(std::string_view left, std::string_view right);

/// Equal for names that compare as equal.
std::size_t Hash_Of_Name(std::string_view name);
