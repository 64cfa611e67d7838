#define KELMARA_INLINE
#include <kelmara/containers/list.h>

#include <kelmara/foundation/interface_identifiers.h>
#include <kelmara/foundation/memory.h>

#include <platform/kernel.h>

#include <atomic>
#include <cstring>
#include <ctime>
#include <utility>

namespace {

constexpr long Str255_Size = 256; // bytes of the longest length-prefixed string

// A block of the memory services, until somebody takes it over.
class NewBlock {
  public:
    explicit NewBlock(long size) : m_Block(size < 0 ? nullptr : ds_malloc(size)) {}
    ~NewBlock() {
        if (m_Block) ds_free(m_Block);
    }
    NewBlock(const NewBlock &) = delete;
    NewBlock &operator=(const NewBlock &) = delete;
    void *Get() const { return m_Block; }
    void Hand_Over() { m_Block = nullptr; }

  private:
    void *m_Block;
};

CDSList *New_List() {
    try {
        return new CDSList;
    } catch (...) {
        return nullptr; // there is no memory for the pool
    }
}

long Time_As_Key() {
    const long now = static_cast<long>(std::time(nullptr));
    return now != 0 ? now : 1;
}

} // namespace

// GCC has offsets of members behind a virtual table, and says that it need not.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
struct CDSListLayout {
    static_assert(offsetof(CDSList, Lock_Key) == 4 && offsetof(CDSList, Head) == 8);
    static_assert(offsetof(CDSList, Tail) == 12 && offsetof(CDSList, Count) == 16);
    static_assert(offsetof(CDSList, Sort_Proc) == 20 && offsetof(CDSList, Entry_Alloc_Proc) == 24);
    static_assert(offsetof(CDSList, Entry_Free_Proc) == 28 && offsetof(CDSList, Sort_Data) == 32);
    static_assert(offsetof(CDSList, Ref_Count) == 36);
};
#pragma GCC diagnostic pop

CDSList::CDSList() : Entry_Alloc_Proc(ds_malloc_procptr), Entry_Free_Proc(ds_free_procptr) {
    ListItemPool::Enter(Table());
}

CDSList::CDSList(const CDSList &other) : IListInterface(other) {
    *this = other;
    ListItemPool::Enter(Table());
}

CDSList &CDSList::operator=(const CDSList &other) = default;

CDSList::~CDSList() {
    while (Head) {
        const bool owned = Head->Volatile & 1;
        void *value = Remove_Head();
        if (owned) Release_Quietly(value);
    }
    ListItemPool::Leave();
}

// --- references -------------------------------------------------------------------------------------------

long CDSList::QueryInterface(GUID const &iid, void **out) {
    if (!out) return E_INVALIDARG;
    *out = nullptr;
    if (!Is_Same_Identifier(iid, IID_IUnknown) && !Is_Same_Identifier(iid, IID_IListInterface))
        return E_NOINTERFACE;
    *out = static_cast<IListInterface *>(this);
    AddRef();
    return S_OK;
}

// A release routine may take a reference to the list that is being destroyed, and give it back.
constexpr unsigned long Being_Destroyed = 0x80000000;

unsigned long CDSList::AddRef() {
    return ++Ref_Count;
}

unsigned long CDSList::Release() {
    if (--Ref_Count != 0) return Ref_Count;
    Ref_Count = Being_Destroyed;
    Delete_List(this);
    return 0;
}

// --- items ------------------------------------------------------------------------------------------------

CListItem *CDSList::CreateNewItem(void *data, CListItem *prev, CListItem *next, long flag) {
    CListItem *item = ListItemPool::Take_List_Item();
    item->InitListItem(data, prev, next, flag);
    return item;
}

CListItem *CDSList::CreateNewItem(void *data, CListItem *prev, long flag) {
    CListItem *item = ListItemPool::Take_List_Item();
    item->InitListItem(data, prev, flag);
    return item;
}

void CDSList::DeleteItem(CListItem *item) {
    if (item) ListItemPool::Return_List_Item(item);
}

CListItem *CDSList::GetListItem(long index) {
    if (index < 0 || index >= Count) return nullptr;
    CListItem *item = Head;
    while (index-- > 0) item = item->Next;
    return item;
}

void *CDSList::contentsOfItem(short index) {
    CListItem *item = GetListItem(index);
    return item ? &item->Entry : nullptr;
}

inline void CDSList::Append(CListItem *item) {
    if (!Head) Head = item;
    Tail = item;
    ++Count;
}

inline void CDSList::Prepend(CListItem *item) {
    item->Next = Head;
    Head->Prev = item;
    Head = item;
    ++Count;
}

inline void *CDSList::Remove_Head() {
    CListItem *item = Head;
    void *value = item->Entry;
    Head = item->Next;
    if (Head)
        Head->Prev = nullptr;
    else
        Tail = nullptr;
    DeleteItem(item); // NOLINT(*.VirtualCall): the destructor means the list's own
    --Count;
    return value;
}

void CDSList::Remove_Item(CListItem *item) {
    if (item->Prev)
        item->Prev->Next = item->Next;
    else
        Head = item->Next;
    if (item->Next)
        item->Next->Prev = item->Prev;
    else
        Tail = item->Prev;
    DeleteItem(item);
    --Count;
}

// --- adding -----------------------------------------------------------------------------------------------

bool CDSList::Add_Otherwise(void *data, long key) {
    if (key != Lock_Key) return false;
    CListItem *item = CreateNewItem(data, Tail, 0);
    if (!item) throw List_Item_Not_Made;
    Append(item);
    return true;
}

bool CDSList::Push_Otherwise(void *data, long key) {
    if (key != Lock_Key) return false;
    if (!Head) return Add(data, key);
    CListItem *item = CreateNewItem(data, nullptr, 0);
    if (!item) throw List_Item_Not_Made;
    Prepend(item);
    return true;
}

bool CDSList::Insert(void *data, long index, long key) {
    if (key != Lock_Key) return false;
    const long last = Count - 1;
    if (index > last) index = last;
    if (index <= -1) return Push(data, key);
    if (index == last) return Add(data, key);
    CListItem *before = GetListItem(index);
    if (!before || !before->Next) return Add(data, key);
    CListItem *item = CreateNewItem(data, before, before->Next, 0);
    if (!item) throw List_Item_Not_Made;
    ++Count;
    return true;
}

bool CDSList::Add(int value, long key) {
    return Add(reinterpret_cast<void *>(value), key);
}

bool CDSList::Push(int value, long key) {
    return Push(reinterpret_cast<void *>(value), key);
}

void *CDSList::AddVolatile(void *data, long size, long key) {
    if (key != Lock_Key || !data || size < 0 || !Entry_Alloc_Proc) return nullptr;
    void *copy = Entry_Alloc_Proc(static_cast<unsigned long>(size));
    if (!copy) return nullptr;
    std::memcpy(copy, data, static_cast<std::size_t>(size));
    CListItem *item = nullptr;
    try {
        item = CreateNewItem(copy, Tail, 1);
    } catch (...) {
        Release_Quietly(copy);
        throw;
    }
    if (!item) {
        Release_Quietly(copy);
        return nullptr;
    }
    Append(item);
    return copy;
}

bool CDSList::AddCString(char *text, long key) {
    return text && AddVolatile(text, static_cast<long>(std::strlen(text)) + 1, key);
}

bool CDSList::PushVolatile(void *data, long size, long key) {
    if (key != Lock_Key || !data || size < 0) return false;
    try {
        if (!Head) return AddVolatile(data, size, key) != nullptr;
        NewBlock copy(size);
        if (!copy.Get()) return false;
        std::memcpy(copy.Get(), data, static_cast<std::size_t>(size));
        CListItem *item = CreateNewItem(copy.Get(), nullptr, 1);
        if (!item) return false;
        copy.Hand_Over();
        Prepend(item);
        return true;
    } catch (...) {
        return false;
    }
}

bool CDSList::PushCString(const char *text, long key) {
    if (key != Lock_Key || !text) return false;
    const std::size_t size = std::strlen(text) + 1;
    NewBlock copy(static_cast<long>(size));
    if (!copy.Get()) return false;
    std::memcpy(copy.Get(), text, size);
    if (!Push(copy.Get(), key)) return false;
    copy.Hand_Over();
    return true;
}

bool CDSList::AddPString(const unsigned char *text, long key) {
    return text && Add_Length_Prefixed(text, text[0] + 1, key);
}

bool CDSList::AddStr255(const unsigned char *text, long key) {
    return text && Add_Length_Prefixed(text, Str255_Size, key);
}

bool CDSList::Add_Length_Prefixed(const unsigned char *text, long block_size, long key) {
    if (key != Lock_Key) return false;
    NewBlock copy(block_size);
    if (!copy.Get()) return false;
    std::memset(copy.Get(), 0, static_cast<std::size_t>(block_size));
    std::memcpy(copy.Get(), text, text[0] + 1u);
    if (!Add(copy.Get(), key)) return false;
    copy.Hand_Over();
    return true;
}

// --- removing ---------------------------------------------------------------------------------------------

void *CDSList::Pop_Otherwise(long key) {
    if (key != Lock_Key || !Head) return nullptr;
    return Remove_Head();
}

void *CDSList::Remove(void *data, long key) {
    if (key != Lock_Key) return nullptr;
    for (CListItem *item = Head; item; item = item->Next) {
        if (item->Entry != data) continue;
        Remove_Item(item);
        return data;
    }
    return nullptr;
}

void *CDSList::RemoveAt(long index) {
    return Remove(GetEntry(index, 0), 0);
}

void CDSList::Clear(long key) {
    if (key != Lock_Key) return;
    for (long before = Count; before != 0; before = Count) {
        Pop(key);
        if (Count >= before) return;
    }
}

void CDSList::DeleteAllEntriesAsPointers(long key) {
    if (key != Lock_Key) return;
    for (long before = Entries(key); before > 0; before = Entries(key)) {
        void *value = Pop(key);
        const bool went = Entries(key) < before;
        Release_Quietly(value);
        if (!went) return;
    }
}

void CDSList::Release_Quietly(void *block) {
    if (!block || !Entry_Free_Proc) return;
    try {
        Entry_Free_Proc(block);
    } catch (...) {
    }
}

// --- looking ----------------------------------------------------------------------------------------------

long CDSList::Contains(void *data, long key) {
    if (key != Lock_Key) return -1;
    long index = 0;
    for (CListItem *item = Head; item; item = item->Next, ++index) {
        if (item->Entry == data) return index;
    }
    return -1;
}

void *CDSList::GetEntry(long index, long key) {
    if (key != Lock_Key) return nullptr;
    CListItem *item = GetListItem(index);
    return item ? item->Entry : nullptr;
}

long CDSList::Entries(long) {
    return Count;
}

bool CDSList::Contains_CString(const char *text) {
    if (!text) return false;
    for (CListItem *item = Head; item; item = item->Next) {
        if (item->Entry && std::strcmp(static_cast<char *>(item->Entry), text) == 0) return true;
    }
    return false;
}

void *CDSList::ContainsSpecial(unsigned long (*match)(void *, unsigned long), void *arg, long key) {
    if (key != Lock_Key || !match) return nullptr;
    for (CListItem *item = Head; item;) {
        CListItem *next = item->Next;
        void *value = item->Entry;
        if (match(value, reinterpret_cast<unsigned long>(arg)) != 0) return value;
        item = next;
    }
    return nullptr;
}

// --- sorting ----------------------------------------------------------------------------------------------

void CDSList::Sort(bool ascending, long) {
    if (!Sort_Proc) return;
    const int exchange_on = ascending ? 1 : -1;
    for (CListItem *end = Tail; end; end = end->Prev) {
        const bool exchanged = Sort_Pass(end, exchange_on);
        Sleep(0);
        if (!exchanged) return;
    }
}

bool CDSList::Sort_Pass(CListItem *end, int exchange_on) {
    bool exchanged = false;
    for (CListItem *item = Head; item != end; item = item->Next) {
        CListItem *next = item->Next;
        if (Sort_Proc(item->Entry, next->Entry, Sort_Data) != exchange_on) continue;
        std::swap(item->Entry, next->Entry);
        std::swap(item->Volatile, next->Volatile);
        exchanged = true;
    }
    return exchanged;
}

void CDSList::SetListSortProc(int (*proc)(void *, void *, long), long data) {
    Sort_Proc = proc;
    Sort_Data = data;
}

void CDSList::Set_Mem_Procs(void *(*alloc)(unsigned long), void (*release)(void *)) {
    Entry_Alloc_Proc = alloc;
    Entry_Free_Proc = release;
}

// --- the lock ---------------------------------------------------------------------------------------------

long CDSList::Lock(bool wait) {
    const std::atomic_ref<long> lock(Lock_Key);
    for (;;) {
        long unlocked = 0;
        const long key = Time_As_Key();
        if (lock.compare_exchange_strong(unlocked, key)) return key;
        if (!wait) return 0;
        while (lock.load() != 0) Sleep(0);
    }
}

void CDSList::Unlock(long key) {
    std::atomic_ref<long>(Lock_Key).compare_exchange_strong(key, 0);
}

// --- duplicates -------------------------------------------------------------------------------------------

CDSList *CDSList::Clone(long size) {
    if (size < 0) return nullptr;
    CDSList *clone = New_List();
    if (!clone) return nullptr;
    for (CListItem *item = Head; item; item = item->Next) {
        if (clone->Add_Copy(item->Entry, size)) continue;
        clone->DeleteAllEntriesAsPointers(0);
        Delete_List(clone);
        return nullptr;
    }
    return clone;
}

CDSList *CDSList::ShallowClone() {
    CDSList *clone = New_List();
    if (!clone) return nullptr;
    for (CListItem *item = Head; item; item = item->Next) {
        if (clone->Add_Quietly(item->Entry)) continue;
        Delete_List(clone);
        return nullptr;
    }
    return clone;
}

void CDSList::ShallowClone(CDSList &target) {
    CListItem *const last = Tail;
    for (CListItem *item = Head; item; item = item->Next) {
        target.Add(item->Entry, 0);
        if (item == last) return;
    }
}

bool CDSList::Add_Quietly(void *data) {
    try {
        return Add(data, 0);
    } catch (...) {
        return false;
    }
}

bool CDSList::Add_Copy(void *entry, long size) {
    if (!entry) return Add_Quietly(nullptr);
    NewBlock copy(size);
    if (!copy.Get()) return false;
    std::memcpy(copy.Get(), entry, static_cast<std::size_t>(size));
    if (!Add_Quietly(copy.Get())) return false;
    copy.Hand_Over();
    return true;
}
