#include <kelmara/containers/key_index.h>

#include <kelmara/containers/hash_table.h>
#include <kelmara/containers/key_hash.h>

#include <bit>
#include <cstdlib>
#include <cstring>

namespace {

constexpr unsigned long Least_Cells = 8;

} // namespace

KeyIndex *KeyIndex::Make_With_Cells(unsigned long count) {
    auto *const index = static_cast<KeyIndex *>(std::calloc(1, sizeof(KeyIndex) + count * sizeof(Cell)));
    if (index) index->Last = count - 1;
    return index;
}

KeyIndex *KeyIndex::Make(long entries) {
    const unsigned long count = std::bit_ceil(static_cast<unsigned long>(entries) * 2 + 1);
    return Make_With_Cells(count > Least_Cells ? count : Least_Cells);
}

void KeyIndex::Drop(KeyIndex *index) {
    std::free(index);
}

KeyIndex::Cell *KeyIndex::Cells() const {
    return reinterpret_cast<Cell *>(const_cast<KeyIndex *>(this) + 1);
}

bool KeyIndex::Is_Full() const {
    return Count > Last / 2;
}

// The cell of the key's entry, or the empty one where it would be.
KeyIndex::Cell *KeyIndex::Find_Cell(unsigned long hash, const char *key, std::size_t length) const {
    Cell *const cells = Cells();
    for (unsigned long at = hash & Last;; at = (at + 1) & Last) {
        Cell &cell = cells[at];
        if (!cell.Entry) return &cell;
        if (cell.Hash != hash) continue;
        __builtin_prefetch(&cell.Entry->Data);
        if (std::memcmp(cell.Entry->Key, key, length + 1) == 0) return &cell;
    }
}

HashTableEntry *KeyIndex::Find(const char *key, std::size_t length) const {
    return Find_Cell(Hash_Of_Key(key, length), key, length)->Entry;
}

void KeyIndex::Add(KeyIndex *&index, HashTableEntry *entry, std::size_t length) {
    if (!index) return;
    const unsigned long hash = Hash_Of_Key(entry->Key, length);
    Cell *const cell = index->Find_Cell(hash, entry->Key, length);
    if (cell->Entry) return;
    const unsigned long way = (static_cast<unsigned long>(cell - index->Cells()) - hash) & index->Last;
    if (way > Longest_Way_To_A_Cell) {
        Drop(index);
        index = nullptr;
        return;
    }
    *cell = {hash, entry};
    ++index->Count;
    if (!index->Is_Full()) return;

    KeyIndex *const larger = Make_With_Cells((index->Last + 1) * 2);
    if (larger) larger->Take_Over(*index);
    Drop(index);
    index = larger;
}

void KeyIndex::Take_Over(const KeyIndex &smaller) {
    for (const Cell *cell = smaller.Cells(), *end = cell + smaller.Last + 1; cell != end; ++cell) {
        if (!cell->Entry) continue;
        unsigned long at = cell->Hash & Last;
        while (Cells()[at].Entry) at = (at + 1) & Last;
        Cells()[at] = *cell;
    }
    Count = smaller.Count;
}
