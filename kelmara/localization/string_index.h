#pragma once
// Inside the library: the entries of a string table by identifier.
//
// Filling the index costs as much as some 50 to 100 walks over the table, and a program that starts asks for
// a string or two: so it is filled when there have been as many lookups. While it is not filled, and when
// there is no memory for all of its entries, lookups walk; what they find is the same.

#include <kelmara/containers/hash_table.h>
#include <kelmara/localization/table_image.h>

/// The string of an entry; null when there is none.
struct FoundString {
    const char *text = nullptr;
    long length = 0;
};

class StringIndex : public CHashTable {
  public:
    /// A bucket for each string of the table: 0, or 0x8007000E.
    long Prepare(const TableImage &image);

    /// The string of the first entry with that identifier.
    FoundString Find_String(const TableImage &image, const char *identifier);

    /// The block has changed or moved.
    void Forget();

  private:
    void Fill(const TableImage &image);

    bool m_Filled = false;
    int m_Walks = 0; // since the table was loaded or changed
};

/// The same, from a walk.
FoundString Walk_To_String(const TableImage &image, const char *identifier);
