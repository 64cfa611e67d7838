#pragma once
// A table from short texts, or numbers, to blocks of data and their sizes: made for a number of entries that
// is roughly known, filled, then read. No single entry can be removed.
//
//     CHashTable table;
//     if (table.Initialize(lines) != 0) return;
//     table.Add("GREETING", text, length);
//     char *found;
//     if (table.Find("GREETING", &found, nullptr) == 0) Show(found);
//
// Data are the caller's and must live as long as the table, except for the copies of Add_Volatile, which the
// table owns. A key has up to 255 characters, is copied, and counts byte for byte. A `long` key is the text
// of its four bytes, the most significant first, each zero byte an underscore: 0x4142 is "__AB". A null text
// is a key that no entry has.
//
// Before Initialize, and after one that failed, Add, Add_Volatile and Find throw an `int` -1. One thread at a
// time, as all lists; reads do not disturb one another while nobody adds. A copy shares everything with its
// original: of the two only one may be initialised or destroyed afterwards, and only that one may add.

#include <kelmara/containers/list.h>
#include <kelmara/foundation/auto_deleteable_object.h>

inline constexpr int Hash_Key_Size = 256; // bytes, with the terminator

/// Does not move in memory until the table is reset. Its key must not be changed.
struct HashTableEntry {
    char Key[Hash_Key_Size]; // offset 0
    char *Data;              // offset 256
    long Size;               // offset 260, as the caller gave it
    bool Is_Volatile;        // offset 264, the table owns Data
    bool In_Use;             // offset 265, taken from its pool
};
static_assert(offsetof(HashTableEntry, Data) == 256 && offsetof(HashTableEntry, Size) == 260);
static_assert(offsetof(HashTableEntry, Is_Volatile) == 264 && offsetof(HashTableEntry, In_Use) == 265);
static_assert(sizeof(HashTableEntry) == 268);

/// One word, and behind it that many pointers to entries, the oldest first.
struct HashTableBucket {
    long Count;
    HashTableEntry **Entries() { return reinterpret_cast<HashTableEntry **>(this + 1); }
};
static_assert(sizeof(HashTableBucket) == 4);

/// A pool block whose entries are all handed out.
struct HashTablePool {
    int Size; // entries
    HashTableEntry *Block;
};
static_assert(sizeof(HashTablePool) == 8);

class KeyIndex;

class KELMARA_API CHashTable : public CAutoDeleteableObject {
  public:
    /// Throws what a list's constructor throws.
    CHashTable();
    CHashTable(const CHashTable &other);
    CHashTable &operator=(const CHashTable &other);
    ~CHashTable() override;

    /// Makes `count` buckets and entries; any count serves, about the number of entries serves best. A table
    /// that is initialised loses all it has first. 0, or 0x8007000E and the table is as after construction,
    /// also for a count below 0 or of more entries than a `long` can count bytes. With a count of 0 nothing
    /// is ever added.
    long Initialize(int count);

    /// Adds an entry that stores the pointer. Of two entries with one key the older one is found. Nothing is
    /// added, and nothing told, for a longer key and when memory of any kind runs out, that of the list's
    /// items too.
    void Add(const char *key, char *data, long size);
    void Add(long key, char *data, long size);
    /// The same with a ds_malloc copy of `size` bytes that the table owns. No bytes are a copy too; for a
    /// size below 0, and null in place of bytes, nothing is added. Where Add throws, no copy is left.
    void Add_Volatile(const char *key, const char *data, long size);
    void Add_Volatile(long key, const char *data, long size);

    /// 0 and the entry's data and size; 1168 and both cleared when there is none. Either output may be null.
    long Find(const char *key, char **data_out, long *size_out);
    long Find(long key, char **data_out, long *size_out);

    /// Gives the entry that Find finds other data. 0; 1168 and `*old_data` as it was when there is none, and
    /// in a table that is not initialised. The old data go to `old_data`, if given. An entry of Add_Volatile
    /// stays the table's to release: `data` must be a ds_malloc block, which the table takes over, and its
    /// old block is the caller's from then on with `keep_old`, otherwise released and null in `old_data`. A
    /// block that replaces itself is not released.
    long Replace_Data(const char *key, char *data, long size, char **old_data, bool keep_old);
    long Replace_Data(long key, char *data, long size, char **old_data, bool keep_old);

    /// All entries, those that are never found because of an older one too.
    long Get_Num_Entries();

    /// A walk over the entries in the order of their addition, which stands on the first. 0 when there is no
    /// memory. To be given back by Return_Iterator, before the table ends or is initialised anew.
    ///
    ///     long walk = table.Get_Entries_Iterator();
    ///     void *data = table.Reset_Iterator(walk);         // of the first entry
    ///     data = table.Iterate_Next(walk, key, &size);     // of the second
    long Get_Entries_Iterator();
    /// Back to the first entry, whose data it gives; null when there is none. For 0, here and below, the walk
    /// of no entries.
    void *Reset_Iterator(long iterator);
    /// Steps on and gives the entry's data, its key in `key_out`, of 256 bytes, and its size; either may be
    /// null. Past the end null, with an empty key and the size as it was; data may be null as well.
    void *Iterate_Next(long iterator, char *key_out, long *size_out);
    void Return_Iterator(long iterator);

    /// `release(raw)` will be called, once, when the table ends or is initialised anew, before the entries
    /// go; what it throws is swallowed. What was associated before is forgotten.
    void Associate_Raw_Data(char *raw, void (*release)(void *));

  protected:
    /// The bucket of a key, by its first four bytes; -1 when there are no buckets.
    int Determine_Location(const char *key);
    /// The oldest entry of a key, null when there is none.
    HashTableEntry *Get_Hash_Entry(const char *key);
    /// An entry that is the caller's until the table is reset. Null when there is no memory or no bucket.
    HashTableEntry *Next_Pool_Entry();
    /// Releases everything; the table is then as after construction.
    void Reset();

    // To be read: an entry that was not put into its bucket by Add is not found. Offsets are frozen; the
    // pointer to the virtual table is at 0.
    int Bucket_Count = 0;                       // offset 4
    HashTableBucket **Buckets = nullptr;        // offset 8, null: not initialised. Behind the last one
                                                // stands the index of keys
    char *Raw_Data = nullptr;                   // offset 12
    void (*Raw_Data_Release)(void *) = nullptr; // offset 16
    HashTableEntry *Pool_Block = nullptr;       // offset 20, where entries are taken
    int Pool_Size = 0;                          // offset 24, its entries: Bucket_Count
    int Pool_Free = 0;                          // offset 28, those not handed out
    HashTablePool *Old_Pools = nullptr;         // offset 32
    int Old_Pool_Count = 0;                     // offset 36
    CDSList Entry_List;                         // offset 40, all entries in the order of their addition

  private:
    friend struct HashTableLayout;

    KELMARA_INTERNAL KeyIndex *&Index();
    KELMARA_INTERNAL bool Make_Pool();
    KELMARA_INTERNAL bool Make_Buckets();
    KELMARA_INTERNAL bool Keep_Old_Pool();
    KELMARA_INTERNAL bool Add_Entry(const char *key, char *data, long size, bool is_volatile);
    KELMARA_INTERNAL bool Grow_Bucket(int location);
    KELMARA_INTERNAL bool Append(HashTableEntry *entry);
    KELMARA_INTERNAL void Give_Back_Last(HashTableEntry *entry);
    KELMARA_INTERNAL void Release_Raw_Data();
    KELMARA_INTERNAL void Drop_Entries();
    KELMARA_INTERNAL void Release_Blocks();
};
static_assert(sizeof(CHashTable) == 80);
