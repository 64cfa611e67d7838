#pragma once
// Inside the library: a view of a string table's block that never looks outside it.
//
// Every place is checked against the block before anything there is read, with one comparison or two; so a
// walk costs what it does without, and ends, for each step leads behind the fixed bytes of an entry.

#include <kelmara/localization/string_table.h>

#include <algorithm>
#include <cstring>

/// As it stands at the start of the file.
struct TableHeader {
    unsigned long First_Entry;         // offset 0, from the start of the file
    unsigned long Bytes_Per_Character; // offset 4
    long Entry_Count;                  // offset 8
    long Reserved[2];                  // offset 12
};
static_assert(sizeof(TableHeader) == 20 && offsetof(TableHeader, Entry_Count) == 8);

class TableImage {
  public:
    using Place = unsigned long; // bytes from the start of the block
    static constexpr Place Nowhere = ~Place{0};
    static constexpr Place Fixed_Size = sizeof(StringEntry);
    static constexpr long Frame_Size = 207; // of an entry, beside its string

    TableImage(char *block, long size) : m_Block(block), m_Size(static_cast<Place>(size)) {}

    /// Null when the block has no room for one.
    TableHeader *Header() const {
        return m_Size >= sizeof(TableHeader) ? reinterpret_cast<TableHeader *>(m_Block) : nullptr;
    }

    long Count() const {
        const Place first = First();
        if (first == Nowhere) return 0;
        const long room = static_cast<long>((m_Size - first) / Fixed_Size);
        return std::clamp(Header()->Entry_Count, 0L, room);
    }

    /// Where the first entry is or would be.
    Place First() const {
        const TableHeader *const header = Header();
        if (!header || header->First_Entry < sizeof(TableHeader) || header->First_Entry > m_Size)
            return Nowhere;
        return header->First_Entry;
    }

    StringEntry *Entry_At(Place at) const {
        if (at > m_Size || m_Size - at < Fixed_Size) return nullptr;
        return reinterpret_cast<StringEntry *>(m_Block + at);
    }

    /// Where the next entry is or would be.
    Place Behind(Place at) const {
        const StringEntry *const entry = Entry_At(at);
        if (!entry || entry->Size < Fixed_Size || entry->Size > m_Size - at) return Nowhere;
        return at + entry->Size;
    }

    /// Where the entry that many behind the one at a place is or would be.
    Place Place_Behind(Place at, long entries) const {
        for (; entries > 0 && at != Nowhere; --entries) at = Behind(at);
        return at;
    }

    /// The string's bytes, and how many of them lie in the block.
    static const char *Text(const StringEntry *entry) { return reinterpret_cast<const char *>(entry + 1); }
    long Text_Length(const StringEntry *entry) const {
        const char *const end = m_Block + m_Size;
        return std::clamp(static_cast<long>(entry->Length), 0L, static_cast<long>(end - Text(entry)));
    }

    template <std::size_t Size>
    static long Length_Of(const char (&field)[Size]) {
        const void *const end = std::memchr(field, 0, Size - 1);
        return end ? static_cast<long>(static_cast<const char *>(end) - field) : static_cast<long>(Size) - 1;
    }

  private:
    char *m_Block;
    Place m_Size;
};
