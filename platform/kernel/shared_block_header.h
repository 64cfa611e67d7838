#pragma once
// What stands in front of a shared block's contents in its file, and what the file is called.

#include <platform/types.h>

#include <string>

enum class SharedBlockKind : std::uint32_t { Mutex = 1, Mapping = 2, Internal = 3, Event = 4 };

inline constexpr std::uint32_t Shared_Block_Layout_Version = 1;
inline constexpr std::uint32_t Shared_Block_Contents_Offset = 4096;

/// First page of every block's file. The layout is frozen for a given magic and layout version.
struct SharedBlockHeader {
    char magic[8];                // offset 0, "KMSHARED"
    std::uint32_t layout_version; // offset 8
    std::uint32_t word_size;      // offset 12, bytes of a pointer of the maker
    std::uint32_t kind;           // offset 16, a SharedBlockKind
    std::uint32_t size;           // offset 20, bytes of the contents
    char name[264];               // offset 24, terminated
    std::uint64_t thread_numbers; // offset 288, whose numbers of threads these are (the host's PID namespace)
};
static_assert(offsetof(SharedBlockHeader, layout_version) == 8 && offsetof(SharedBlockHeader, size) == 20);
static_assert(offsetof(SharedBlockHeader, name) == 24 && offsetof(SharedBlockHeader, thread_numbers) == 288);

inline constexpr std::size_t Longest_Block_Name = sizeof(SharedBlockHeader::name) - 1; // bytes

/// What a block's file is called, in the machine's folder of shared memory.
std::string Block_File_Name(const std::string &name);

/// That of a block that this process makes; the name is no longer than the longest.
SharedBlockHeader New_Block_Header(SharedBlockKind kind, const std::string &name, std::uint32_t size);
bool Write_Block_Header(int descriptor, const SharedBlockHeader &header);

/// False for a file that has none of this layout version and word size.
bool Read_Block_Header(int descriptor, SharedBlockHeader &header);
/// The header of a block that somebody holds, and why it cannot be shared as the `wanted` one of its name:
/// NO_ERROR when it can, of whatever size it is.
long Read_Held_Header(int descriptor, const SharedBlockHeader &wanted, SharedBlockHeader &header);
