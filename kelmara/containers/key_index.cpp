#include <kelmara/containers/key_index.h>

#include <kelmara/containers/hash_table.h>

#include <bit>
#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace {

constexpr unsigned long Least_Cells = 8;
constexpr unsigned long Longest_Way = 512; // cells; keys of good will never come near

std::uint32_t Word_At(const char *text) {
    std::uint32_t word;
    std::memcpy(&word, text, sizeof word);
    return word;
}

// Both halves of the product, so that every bit of both words tells.
std::uint32_t Mix(std::uint32_t first, std::uint32_t second) {
    const std::uint64_t product = std::uint64_t{first} * second;
    return static_cast<std::uint32_t>(product) ^ static_cast<std::uint32_t>(product >> 32);
}

// Eight bytes at a time; the last step takes up to eight, those in the middle of four to seven twice.
std::uint32_t Hash_Of(const char *key, std::size_t length) {
    constexpr std::uint32_t salt = 0x9E3779B1, other_salt = 0x85EBCA6B;
    std::uint32_t hash = salt ^ static_cast<std::uint32_t>(length);
    for (; length > 8; key += 8, length -= 8) {
        hash = Mix(Word_At(key) ^ hash, Word_At(key + 4) ^ other_salt) + salt;
    }
    std::uint32_t first = 0, last = 0;
    if (length >= 4) {
        first = Word_At(key);
        last = Word_At(key + length - 4);
    } else {
        for (std::size_t i = 0; i < length; ++i) first = first << 8 | static_cast<unsigned char>(key[i]);
    }
    return Mix(Mix(first ^ hash, last ^ other_salt) ^ salt, other_salt);
}

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

// The cell of the key's entry, or the empty one where it would be; how far that is from its place by hash.
KeyIndex::Cell *KeyIndex::Find_Cell(unsigned long hash, const char *key, std::size_t length,
                                    unsigned long &way) const {
    Cell *const cells = Cells();
    for (way = 0;; ++way) {
        Cell &cell = cells[(hash + way) & Last];
        if (!cell.Entry) return &cell;
        if (cell.Hash != hash) continue;
        __builtin_prefetch(&cell.Entry->Data);
        if (std::memcmp(cell.Entry->Key, key, length + 1) == 0) return &cell;
    }
}

HashTableEntry *KeyIndex::Find(const char *key, std::size_t length) const {
    unsigned long way;
    return Find_Cell(Hash_Of(key, length), key, length, way)->Entry;
}

void KeyIndex::Add(KeyIndex *&index, HashTableEntry *entry, std::size_t length) {
    if (!index) return;
    const unsigned long hash = Hash_Of(entry->Key, length);
    unsigned long way;
    Cell *const cell = index->Find_Cell(hash, entry->Key, length, way);
    if (cell->Entry) return;
    if (way > Longest_Way) {
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
