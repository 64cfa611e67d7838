#pragma once
// How the numbers of a `.ltx` file lie, beside StringEntry. Little-endian.

#include <kelmara/localization/string_table.h>

namespace tools::ltx {

struct TableHeader {
    unsigned long first_entry;         // offset 0, from the start of the file
    unsigned long bytes_per_character; // offset 4
    long count;                        // offset 8
    long reserved[2];                  // offset 12
};
static_assert(sizeof(TableHeader) == 20 && offsetof(TableHeader, count) == 8);

inline constexpr std::size_t Tail_Size = 3;                                // bytes behind a text
inline constexpr std::size_t Frame_Size = sizeof(StringEntry) + Tail_Size; // of an entry, beside its text
static_assert(Frame_Size == 207);

} // namespace tools::ltx
