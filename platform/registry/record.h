#pragma once
// How the registry lies in its file: a header that never changes, then records, one for each change made.
//
// The checks of a record cover the file's number and the record's own offset: the image of a record inside a
// value's data, or one left over from another file, never passes for a record. The size has a check of its
// own, so that damaged content is stepped over, and behind a damaged size the next record is found at the
// cost of one look at every eighth byte. Records begin at multiples of 8; what fills them up is zero.
// The layout is frozen for a given magic and layout version.

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

struct RegistryFileHeader {
    char magic[8];                // offset 0, "KMREGIST"
    std::uint32_t layout_version; // offset 8
    std::uint32_t word_size;      // offset 12, bytes of a pointer of the maker
    std::uint64_t number;         // offset 16, made at random for each file
    std::uint64_t made;           // offset 24, when the registry was first made, as a FILETIME
    std::uint32_t generation;     // offset 32, one more than that of the file that this one replaced
    std::uint32_t first_free_key; // offset 36, numbers of keys below it have been given out
    std::uint32_t unused;         // offset 40
    std::uint32_t check;          // offset 44, of everything before it
};
static_assert(offsetof(RegistryFileHeader, number) == 16 && offsetof(RegistryFileHeader, generation) == 32);
static_assert(offsetof(RegistryFileHeader, check) == 44 && sizeof(RegistryFileHeader) == 48);

inline constexpr std::uint32_t Registry_Layout_Version = 1;
inline constexpr std::uint32_t Records_Offset = sizeof(RegistryFileHeader);

/// Fills in what is the same for every file, a fresh number, and the check. False when the host has no
/// random number.
bool Complete_Header(RegistryFileHeader &header);
/// False for anything but a header of this layout version and word size.
bool Is_Header(const RegistryFileHeader &header);

enum class RecordKind : std::uint32_t {
    Make_Key = 1,     // key, parent in `detail`, name, class as data
    Delete_Key = 2,   // key
    Set_Value = 3,    // key, type in `detail`, name, data
    Delete_Value = 4, // key, name
    Carry_Key = 5,    // as Make_Key, from a file to the next: what is above the key does not change by it
};

struct RegistryRecord {
    RecordKind kind;
    std::uint32_t key;
    std::uint32_t detail = 0;
    std::uint64_t time = 0; // as a FILETIME
    std::string_view name = {};
    std::string_view data = {};
};

struct RecordHeader {
    std::uint32_t size;       // offset 0, of the whole record, a multiple of 8
    std::uint32_t size_check; // offset 4
    std::uint32_t check;      // offset 8, of everything behind it
    std::uint32_t kind;       // offset 12, a RecordKind
    std::uint64_t time;       // offset 16
    std::uint32_t key;        // offset 24
    std::uint32_t detail;     // offset 28
    std::uint32_t name_size;  // offset 32
    std::uint32_t data_size;  // offset 36; name and data follow
};
static_assert(offsetof(RecordHeader, kind) == 12 && offsetof(RecordHeader, key) == 24);
static_assert(offsetof(RecordHeader, data_size) == 36 && sizeof(RecordHeader) == 40);

inline constexpr std::uint32_t Longest_Key_Name = 255;
inline constexpr std::uint32_t Longest_Value_Name = 16383;
inline constexpr std::uint32_t Largest_Data = 64u << 20;

/// Bytes of the record of a name and data within the limits.
constexpr std::uint32_t Record_Size(std::size_t name_size, std::size_t data_size) {
    return static_cast<std::uint32_t>((sizeof(RecordHeader) + name_size + data_size + 7) & ~std::size_t{7});
}

/// Appends to `out` the record as it stands at `offset` of the file with that number.
void Append_Record(const RegistryRecord &record, std::uint64_t number, std::uint32_t offset,
                   std::vector<unsigned char> &out);

/// The size of the record at `offset`, whose header is given; 0 when none begins there.
std::uint32_t Size_Of_Record(const unsigned char *header, std::uint64_t number, std::uint32_t offset);

/// Reads the record that fills `bytes`; its name and data point into them. False for a damaged one.
bool Read_Record(std::span<const unsigned char> bytes, std::uint64_t number, std::uint32_t offset,
                 RegistryRecord &record);
