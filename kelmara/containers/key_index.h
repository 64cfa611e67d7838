#pragma once
// Finds a hash table's entries by their whole keys; for the table's own use.
//
// The table's buckets go by a key's first four characters, which the keys of one table often share: all are
// then in one bucket. The index knows the oldest entry of every key. A table may lose it for want of memory,
// and then looks into its buckets. Its memory is the C runtime's, not that of the memory services, so that
// these see the table's own blocks and no others, and their failures are the table's.
//
// The index belongs to the table's buckets and is shared by all copies that share those. Finding changes
// nothing.

#include <cstddef>

struct HashTableEntry;

class KeyIndex {
  public:
    /// With room for so many entries. Null when there is no memory.
    static KeyIndex *Make(long entries);
    /// Null is ignored.
    static void Drop(KeyIndex *index);

    /// The entry whose key is `key`, of `length` bytes; null when there is none.
    HashTableEntry *Find(const char *key, std::size_t length) const;

    /// Takes in an entry whose key has `length` bytes, unless an older one has the same key. The index moves
    /// when it grows; when it cannot, and for keys made to hash alike, it is dropped and null. A null index
    /// stays so.
    static void Add(KeyIndex *&index, HashTableEntry *entry, std::size_t length);

  private:
    struct Cell {
        unsigned long Hash;
        HashTableEntry *Entry; // null: the cell is empty
    };

    static KeyIndex *Make_With_Cells(unsigned long count);
    Cell *Cells() const;
    bool Is_Full() const;
    Cell *Find_Cell(unsigned long hash, const char *key, std::size_t length) const;
    void Take_Over(const KeyIndex &smaller);

    unsigned long Last;  // the number of cells, a power of 2, minus 1
    unsigned long Count; // cells in use
};
