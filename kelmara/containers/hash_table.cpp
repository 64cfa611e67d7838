#include <kelmara/containers/hash_table.h>

#include <kelmara/containers/iterator.h>
#include <kelmara/containers/key_index.h>
#include <kelmara/foundation/memory.h>

#include <platform/errors.h>

#include <algorithm>
#include <climits>
#include <cstring>

// GCC has offsets of members behind a virtual table, and says that it need not.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
struct HashTableLayout {
    static_assert(offsetof(CHashTable, Bucket_Count) == 4 && offsetof(CHashTable, Buckets) == 8);
    static_assert(offsetof(CHashTable, Raw_Data) == 12 && offsetof(CHashTable, Raw_Data_Release) == 16);
    static_assert(offsetof(CHashTable, Pool_Block) == 20 && offsetof(CHashTable, Pool_Size) == 24);
    static_assert(offsetof(CHashTable, Pool_Free) == 28 && offsetof(CHashTable, Old_Pools) == 32);
    static_assert(offsetof(CHashTable, Old_Pool_Count) == 36 && offsetof(CHashTable, Entry_List) == 40);
};
#pragma GCC diagnostic pop

namespace {

constexpr int Not_Initialised = -1; // thrown
constexpr int No_Location = -1;
constexpr int Most_Entries = LONG_MAX / sizeof(HashTableEntry); // of a pool block

template <class T>
void Free_Block(T *&block) {
    if (block) ds_free(block);
    block = nullptr;
}

template <class T>
T *Allocate_Clear(int count) {
    // NOLINTNEXTLINE(bugprone-sizeof-expression): T may be a pointer
    return static_cast<T *>(ds_malloc_clear(std::max(count, 1) * static_cast<long>(sizeof(T))));
}

class NumberKey {
  public:
    explicit NumberKey(long number) {
        for (int i = 0; i < 4; ++i) {
            const char byte = static_cast<char>(static_cast<unsigned long>(number) >> (24 - 8 * i));
            m_Text[i] = byte ? byte : '_';
        }
    }
    operator const char *() const { return m_Text; }

  private:
    char m_Text[5] = {};
};

// The copy that a volatile entry is to own.
class NewCopy {
  public:
    NewCopy(const char *data, long size) : m_Block(static_cast<char *>(ds_malloc(std::max(size, 1L)))) {
        if (m_Block && size > 0) std::memcpy(m_Block, data, static_cast<std::size_t>(size));
    }
    ~NewCopy() { Free_Block(m_Block); }
    NewCopy(const NewCopy &) = delete;
    NewCopy &operator=(const NewCopy &) = delete;
    char *Get() const { return m_Block; }
    void Hand_Over() { m_Block = nullptr; }

  private:
    char *m_Block;
};

void Release_Copy(HashTableEntry *entry) {
    if (entry->Is_Volatile) Free_Block(entry->Data);
}

CIterator *Walk_Of(long iterator) {
    return reinterpret_cast<CIterator *>(iterator);
}

} // namespace

CHashTable::CHashTable() = default;

CHashTable::CHashTable(const CHashTable &other) = default;

CHashTable &CHashTable::operator=(const CHashTable &other) = default;

CHashTable::~CHashTable() {
    Reset();
}

// --- making and releasing ---------------------------------------------------------------------------------

long CHashTable::Initialize(int count) {
    if (Buckets) Reset();
    if (count < 0 || count > Most_Entries) return E_OUTOFMEMORY;
    Bucket_Count = count;
    if (Make_Pool() && Make_Buckets()) return 0;
    Release_Blocks();
    return E_OUTOFMEMORY;
}

bool CHashTable::Make_Pool() {
    auto *const block = Allocate_Clear<HashTableEntry>(Bucket_Count);
    if (!block) return false;
    Pool_Block = block;
    Pool_Size = Pool_Free = Bucket_Count;
    return true;
}

bool CHashTable::Make_Buckets() {
    Buckets = Allocate_Clear<HashTableBucket *>(Bucket_Count + 1);
    if (!Buckets) return false;
    for (int i = 0; i < Bucket_Count; ++i) {
        Buckets[i] = static_cast<HashTableBucket *>(ds_malloc(sizeof(HashTableBucket)));
        if (!Buckets[i]) return false;
        Buckets[i]->Count = 0;
    }
    if (Bucket_Count > 0) Index() = KeyIndex::Make(Bucket_Count);
    return true;
}

// Where all copies of the table see it: one of them may make it move.
KeyIndex *&CHashTable::Index() {
    return reinterpret_cast<KeyIndex **>(Buckets)[Bucket_Count];
}

void CHashTable::Reset() {
    Release_Raw_Data();
    if (!Buckets) return;
    Drop_Entries();
    Release_Blocks();
}

void CHashTable::Release_Raw_Data() {
    if (!Raw_Data || !Raw_Data_Release) return;
    char *const raw = Raw_Data;
    Raw_Data = nullptr;
    try {
        Raw_Data_Release(raw);
    } catch (...) {
    }
}

// What Pop leaves is in a list that a derived class has locked.
void CHashTable::Drop_Entries() {
    while (void *entry = Entry_List.Pop(0)) Release_Copy(static_cast<HashTableEntry *>(entry));
    CIterator walk;
    for (void *entry = walk.Iterate(&Entry_List); walk.More(); entry = walk.Next()) {
        Release_Copy(static_cast<HashTableEntry *>(entry));
        walk.Delete_Current();
    }
}

void CHashTable::Release_Blocks() {
    Free_Block(Pool_Block);
    for (int i = 0; i < Old_Pool_Count; ++i) ds_free(Old_Pools[i].Block);
    Free_Block(Old_Pools);
    if (Buckets) {
        KeyIndex::Drop(Index());
        for (int i = 0; i < Bucket_Count; ++i) Free_Block(Buckets[i]);
    }
    Free_Block(Buckets);
    Bucket_Count = Pool_Size = Pool_Free = Old_Pool_Count = 0;
}

void CHashTable::Associate_Raw_Data(char *raw, void (*release)(void *)) {
    Raw_Data = raw;
    Raw_Data_Release = release;
}

// --- adding -----------------------------------------------------------------------------------------------

void CHashTable::Add(const char *key, char *data, long size) {
    Add_Entry(key, data, size, false);
}

void CHashTable::Add(long key, char *data, long size) {
    Add(NumberKey(key), data, size);
}

void CHashTable::Add_Volatile(const char *key, const char *data, long size) {
    if (!key || std::strlen(key) >= Hash_Key_Size) return;
    if (size < 0 || (!data && size > 0)) return;
    NewCopy copy(data, size);
    if (copy.Get() && Add_Entry(key, copy.Get(), size, true)) copy.Hand_Over();
}

void CHashTable::Add_Volatile(long key, const char *data, long size) {
    Add_Volatile(NumberKey(key), data, size);
}

bool CHashTable::Add_Entry(const char *key, char *data, long size, bool is_volatile) {
    if (!Buckets) throw Not_Initialised;
    const std::size_t length = key ? std::strlen(key) : Hash_Key_Size;
    if (length >= Hash_Key_Size) return false;
    const int location = Determine_Location(key);
    if (location == No_Location) return false;
    HashTableEntry *const entry = Next_Pool_Entry();
    if (!entry) return false;
    if (!Grow_Bucket(location) || !Append(entry)) {
        Give_Back_Last(entry);
        return false;
    }
    HashTableBucket *const bucket = Buckets[location];
    bucket->Entries()[bucket->Count++] = entry;
    std::memmove(entry->Key, key, length + 1); // a call: memcpy is compiled to what short keys wait for
    entry->Data = data;
    entry->Size = size;
    entry->Is_Volatile = is_volatile;
    KeyIndex::Add(Index(), entry, length);
    return true;
}

bool CHashTable::Grow_Bucket(int location) {
    const long words = 1 + Buckets[location]->Count + 1;
    void *const grown = ds_realloc(Buckets[location], words * static_cast<long>(sizeof(long)));
    if (!grown) return false;
    Buckets[location] = static_cast<HashTableBucket *>(grown);
    return true;
}

// The list throws when it gets no item.
bool CHashTable::Append(HashTableEntry *entry) {
    try {
        return Entry_List.Add(entry, 0);
    } catch (...) {
        return false;
    }
}

HashTableEntry *CHashTable::Next_Pool_Entry() {
    if (Bucket_Count <= 0) return nullptr;
    if (Pool_Free == 0 && !Keep_Old_Pool()) return nullptr;
    HashTableEntry *const entry = Pool_Block + (Pool_Size - Pool_Free);
    --Pool_Free;
    entry->In_Use = true;
    return entry;
}

bool CHashTable::Keep_Old_Pool() {
    const HashTablePool full = {Pool_Size, Pool_Block};
    if (!Make_Pool()) return false;
    const long size = (Old_Pool_Count + 1) * static_cast<long>(sizeof(HashTablePool));
    void *const pools = Old_Pools ? ds_realloc(Old_Pools, size) : ds_malloc(size);
    if (!pools) {
        ds_free(Pool_Block);
        Pool_Block = full.Block;
        Pool_Free = 0;
        return false;
    }
    Old_Pools = static_cast<HashTablePool *>(pools);
    Old_Pools[Old_Pool_Count++] = full;
    return true;
}

void CHashTable::Give_Back_Last(HashTableEntry *entry) {
    entry->In_Use = false;
    ++Pool_Free;
}

// --- finding ----------------------------------------------------------------------------------------------

// Each byte is read with its sign, widened to 16 bits, and those counted without one; the sum has 32 bits, so
// that nothing of it is lost.
int CHashTable::Determine_Location(const char *key) {
    if (Bucket_Count <= 0 || !key) return No_Location;
    unsigned long sum = 0;
    for (int i = 0; i < 4 && key[i]; ++i)
        sum += static_cast<unsigned short>(static_cast<signed char>(key[i]));
    return static_cast<int>(sum % static_cast<unsigned long>(Bucket_Count));
}

HashTableEntry *CHashTable::Get_Hash_Entry(const char *key) {
    if (!Buckets || !key) return nullptr;
    if (const KeyIndex *index = Index()) {
        const std::size_t length = std::strlen(key);
        return length < Hash_Key_Size ? index->Find(key, length) : nullptr;
    }
    const int location = Determine_Location(key);
    if (location == No_Location) return nullptr;
    HashTableBucket *const bucket = Buckets[location];
    for (long i = 0; i < bucket->Count; ++i) {
        if (std::strcmp(bucket->Entries()[i]->Key, key) == 0) return bucket->Entries()[i];
    }
    return nullptr;
}

long CHashTable::Find(const char *key, char **data_out, long *size_out) {
    if (data_out) *data_out = nullptr;
    if (size_out) *size_out = 0;
    if (!Buckets) throw Not_Initialised;
    const HashTableEntry *const entry = Get_Hash_Entry(key);
    if (!entry) return ERROR_NOT_FOUND;
    if (data_out) *data_out = entry->Data;
    if (size_out) *size_out = entry->Size;
    return 0;
}

long CHashTable::Find(long key, char **data_out, long *size_out) {
    return Find(NumberKey(key), data_out, size_out);
}

long CHashTable::Replace_Data(const char *key, char *data, long size, char **old_data, bool keep_old) {
    HashTableEntry *const entry = Get_Hash_Entry(key);
    if (!entry) return ERROR_NOT_FOUND;
    if (entry->Is_Volatile && !keep_old) {
        if (entry->Data != data) Free_Block(entry->Data);
        entry->Data = nullptr;
    }
    if (old_data) *old_data = entry->Data;
    entry->Data = data;
    entry->Size = size;
    return 0;
}

long CHashTable::Replace_Data(long key, char *data, long size, char **old_data, bool keep_old) {
    return Replace_Data(NumberKey(key), data, size, old_data, keep_old);
}

// --- walking ----------------------------------------------------------------------------------------------

long CHashTable::Get_Num_Entries() {
    return Entry_List.Entries(0);
}

long CHashTable::Get_Entries_Iterator() {
    auto *const walk = new CIterator;
    if (walk) walk->Iterate(&Entry_List);
    return reinterpret_cast<long>(walk);
}

void *CHashTable::Reset_Iterator(long iterator) {
    if (iterator == 0) return nullptr;
    const auto *const first = static_cast<HashTableEntry *>(Walk_Of(iterator)->Iterate(&Entry_List));
    return first ? first->Data : nullptr;
}

void *CHashTable::Iterate_Next(long iterator, char *key_out, long *size_out) {
    const auto *const entry =
        iterator != 0 ? static_cast<HashTableEntry *>(Walk_Of(iterator)->Next()) : nullptr;
    if (!entry) {
        if (key_out) *key_out = 0;
        return nullptr;
    }
    if (key_out) std::memcpy(key_out, entry->Key, std::strlen(entry->Key) + 1);
    if (size_out) *size_out = entry->Size;
    return entry->Data;
}

// Not by `delete`: it would end the process over what the bound routine throws.
void CHashTable::Return_Iterator(long iterator) {
    if (iterator == 0) return;
    try {
        ds_free(Walk_Of(iterator));
    } catch (...) {
    }
}
