#pragma once
// Inside the library: the entries of a string table by identifier, as places in its block, and the place that
// was asked for last by index. All memory is had when the table is loaded, 8 to 16 bytes a string; lookups
// change nothing outside the index. A table that is to be edited has one without cells: it knows the last
// place, and lookups by identifier walk.
//
// Filling the index costs as much as some walks over the table, and a program that starts asks for a string
// or two: so it is filled when there have been some lookups. While it is not filled, when edits have brought
// more entries than there is room for, and for identifiers made to hash alike, lookups walk; what they find
// is the same.

#include <kelmara/localization/table_image.h>

#include <cstdint>
#include <cstdlib>

/// The string of an entry; null when there is none.
struct FoundString {
    const char *text = nullptr;
    long length = 0;
};

class StringIndex {
  public:
    StringIndex() = default;
    ~StringIndex();
    StringIndex(const StringIndex &) = delete;
    StringIndex &operator=(const StringIndex &) = delete;

    /// Of the C runtime's heap, as the table's block: who edits tables need not have the memory services
    /// bound. Null without memory.
    static void *operator new(std::size_t size) noexcept { return std::malloc(size); }
    static void operator delete(void *index) { std::free(index); }

    /// Room for the entries of the table: 0, or 0x8007000E. Once.
    long Prepare(const TableImage &image);

    /// The string of the first entry with that identifier.
    FoundString Find_String(const TableImage &image, const char *identifier);

    bool Has_Room() const { return m_Cells != nullptr; }

    /// Where the entry of that index is or would be: a walk, from the last such place on if it lies before.
    /// So whoever changes an entry's size, or takes it out, asks for its place before.
    TableImage::Place Place_Of(const TableImage &image, long index);

    /// The block has changed or moved: no identifier is where it was.
    void Forget();

  private:
    struct Cell {
        std::uint32_t hash;
        TableImage::Place place; // 0: the cell is empty, for the header is there
    };
    static_assert(sizeof(Cell) == 8);

    Cell *Find_Cell(const TableImage &image, const char *identifier, std::size_t length,
                    std::uint32_t hash) const;
    bool Is_Due(const TableImage &image);
    bool Fill(const TableImage &image);

    Cell *m_Cells = nullptr;
    unsigned long m_Last = 0; // the number of cells, a power of 2, minus 1
    bool m_Filled = false;
    int m_Walks = 0; // since the table was loaded or changed; Most_Walks and more: not to be filled
    long m_Last_Index = 0;
    TableImage::Place m_Last_Place = TableImage::Nowhere; // Nowhere: there is none
};

/// The same, from a walk.
FoundString Walk_To_String(const TableImage &image, const char *identifier);
