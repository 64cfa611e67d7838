#pragma once
// A doubly linked list of `void *` values that serves as list, stack and queue.
//
//     CDSList list;
//     list.Add(window, 0);
//     CIterator walk;                                   // iterator.h
//     for (void *entry = walk.Iterate(&list); walk.More(); entry = walk.Next()) Use(entry);
//
// The values are the caller's: a list releases only what it copied itself, its volatile entries. An entry
// that leaves the list by Pop, Remove or RemoveAt belongs to the caller from then on, a volatile one too.
// Blocks come from the memory services (ds_malloc, ds_free), volatile ones from the routines of
// Set_Mem_Procs.
//
// Nearly every operation takes a lock key as its last argument: 0 while the list is not locked, what Lock
// gave while it is. With any other key the operation changes nothing and gives its refusal: false, null, or
// what its comment says. The lock is a courtesy among callers that pass keys, no protection against threads:
// the items of all lists come from one pool, so all lists of a process, even those with nothing in common,
// are used by one thread at a time.
//
// No memory for items: a `long` E_OUTOFMEMORY or an `int` -1 is thrown by the operation that needed one, and
// the list stays as it was. An index that is out of range gives null and does nothing.

#include <kelmara/containers/list_interface.h>
#include <kelmara/containers/list_item.h>
#include <kelmara/containers/list_item_pool.h>
#include <kelmara/foundation/new_delete.h>

// The order of the virtual operations is part of the contract, and a destructor is not among them.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

class KELMARA_API CDSList : public IListInterface {
  public:
    KELMARA_CLASS_ALLOCATION

    /// What Add, Push and Insert throw when a derived class made no item. To be caught as NoItem.
    enum { List_Item_Not_Made = -8350 };
    using NoItem = decltype(List_Item_Not_Made);

    /// An empty list that is not locked.
    CDSList();
    /// A copy shares the items of its original, and neither is told what the other does: after it, change and
    /// destroy only one of the two, unless both are empty. Assignment forgets the target's own items, so the
    /// target is to be empty. Clone and ShallowClone make lists of their own.
    CDSList(const CDSList &other);
    CDSList &operator=(const CDSList &other);
    /// Removes all entries, also of a locked list, and releases the volatile ones. What their release routine
    /// throws is swallowed. It is not virtual, and does not reach a derived class's DeleteItem: such a class
    /// empties its list in its own destructor.
    ~CDSList();

    /// 0 for IID_IUnknown and IID_IListInterface, with `*out` the list and a reference counted; otherwise
    /// E_NOINTERFACE with `*out` null. E_INVALIDARG for a null `out`.
    long QueryInterface(GUID const &iid, void **out) override;
    unsigned long AddRef() override;
    /// The last reference destroys the list, which must have been made with `new`, as a CDSList. A list that
    /// was never handed out has no references and is destroyed by its owner; releasing it gives 0 and does
    /// nothing.
    unsigned long Release() override;

    /// Appends at the tail. Final, as Push and Pop are, because they are compiled into their callers; a
    /// derived class replaces how items are made, below.
    bool Add(void *data, long key) final;
    /// Copies `size` bytes to a block of the list's allocator, appends that as an entry the list owns and
    /// gives the block. Null when there is no block or no item, for a null `data` and a `size` below 0.
    void *AddVolatile(void *data, long size, long key) override;
    /// Puts the value at the head.
    bool Push(void *data, long key) final;
    /// Puts the value behind the entry at `index`; -1 and below: in front. An `index` past the end appends.
    bool Insert(void *data, long index, long key) override;
    /// Removes the head and gives its value; null when the list is empty.
    void *Pop(long key) final;
    /// Removes the first entry whose value is `data` and gives the value; null when there is none.
    void *Remove(void *data, long key) override;
    /// Looks up the value at `index` and removes the first entry of that value. Null on a locked list.
    void *RemoveAt(long index) override;
    /// The index of the first entry whose value is `data`, -1 when there is none or the key is refused.
    long Contains(void *data, long key) override;
    /// AddVolatile of the text with its terminator. False also for null.
    bool AddCString(char *text, long key) override;
    /// Drops all entries and releases nothing, not even volatile blocks.
    void Clear(long key) override;
    void *GetEntry(long index, long key) override;
    /// The number of entries, whatever the key.
    long Entries(long key) override;
    /// Pops all entries and releases every value that is not null through the list's release routine,
    /// volatile or not. What the routine throws is swallowed. Ends early when a Pop takes nothing out, be it
    /// that the routine locked the list or that a derived class counts in its own way.
    virtual void DeleteAllEntriesAsPointers(long key);

    /// The number as the value. A 0 is a value like any other: walk with CIterator::More.
    bool Add(int value, long key);
    bool Push(int value, long key);

    /// Copies `size` bytes to a block that the list owns and puts it at the head. On an empty list that is
    /// AddVolatile; otherwise the block comes from ds_malloc, and the list's release routine must be able to
    /// take it. False, and nothing kept, when memory of any kind runs out; it throws nothing.
    bool PushVolatile(void *data, long size, long key);
    /// Puts a ds_malloc copy of the text at the head. Whoever pops it releases it with ds_free. False also
    /// for null and when there is no memory.
    bool PushCString(const char *text, long key);
    /// Appends a ds_malloc copy of a string whose first byte is its length, for the caller to release.
    /// AddStr255 makes the block 256 bytes, zero behind the string, so that the entry can grow in its place.
    bool AddPString(const unsigned char *text, long key);
    bool AddStr255(const unsigned char *text, long key);

    /// Whether an entry, read as a terminated string, equals `text`. Every entry must be null, which equals
    /// nothing, or a string.
    bool Contains_CString(const char *text);
    /// Calls `match(entry, arg)` from the head on until it answers other than 0, and gives that entry's
    /// value. Null when none does. `match` may remove the entry that it is handed.
    void *ContainsSpecial(unsigned long (*match)(void *, unsigned long), void *arg, long key);

    /// Sorts by the routine of SetListSortProc, which answers exactly 1 when its first value belongs behind
    /// its second, and exactly -1 the other way round; other numbers leave a pair as it is. Stable. Values
    /// are exchanged, not items, so iterators keep their places. Takes the square of the count in calls and
    /// gives the time slice away after each pass. The key is ignored; without a routine nothing happens.
    void Sort(bool ascending, long key);
    void SetListSortProc(int (*proc)(void *, void *, long), long data);
    /// The routines for entries that the list copies and owns; to be set before there are any. Without an
    /// `alloc` AddVolatile gives null, without a `release` nothing is released.
    void Set_Mem_Procs(void *(*alloc)(unsigned long), void (*release)(void *));

    /// Locks the list and gives the key: the time in whole seconds, never 0. Two locks within a second have
    /// the same key. On a locked list: 0, or with `wait`, the key after Unlock, waited for in a loop that
    /// gives its time slice away.
    long Lock(bool wait);
    /// With a key other than the lock's nothing happens.
    void Unlock(long key);

    /// A list made with `new` of ds_malloc copies of the first `size` bytes of every entry, null for null
    /// ones; the caller owns the list and the copies. Key, sort and memory routines are not taken over. Null,
    /// with everything released, when memory of any kind runs out, and for a `size` below 0.
    CDSList *Clone(long size);
    /// A list made with `new` of the same values, none of them owned by it. Null when memory runs out.
    CDSList *ShallowClone();
    /// Appends this list's values to `target`, which may be this list, under key 0. When no item is to be had
    /// for one, it throws as Add does, and the values before it are in `target`.
    void ShallowClone(CDSList &target);

  protected:
    /// How items are made and given back; everything goes through these four. The second form of
    /// CreateNewItem leaves Next null and links behind `prev` when there is one. Null from a derived class's
    /// own: no item was to be had.
    virtual CListItem *CreateNewItem(void *data, CListItem *prev, CListItem *next, long flag);
    virtual CListItem *CreateNewItem(void *data, CListItem *prev, long flag);
    /// Null is ignored, and so is an item that is not the pool's.
    virtual void DeleteItem(CListItem *item);
    virtual CListItem *GetListItem(long index);

    /// Where the value at `index` lies, so that it can be replaced.
    void *contentsOfItem(short index);
    /// Unlinks the item and gives it back.
    void Remove_Item(CListItem *item);

    // Offsets are frozen; the pointer to the virtual table is at 0.
    long Lock_Key = 0;                                // offset 4, 0: not locked
    CListItem *Head = nullptr;                        // offset 8
    CListItem *Tail = nullptr;                        // offset 12
    long Count = 0;                                   // offset 16
    int (*Sort_Proc)(void *, void *, long) = nullptr; // offset 20
    void *(*Entry_Alloc_Proc)(unsigned long);         // offset 24
    void (*Entry_Free_Proc)(void *);                  // offset 28
    long Sort_Data = 0;                               // offset 32
    unsigned long Ref_Count = 0;                      // offset 36

  private:
    friend class CIterator;
    friend struct CDSListLayout;

    const void *Table() const;
    bool Add_Otherwise(void *data, long key);
    bool Push_Otherwise(void *data, long key);
    void *Pop_Otherwise(long key);

    KELMARA_INTERNAL void Append(CListItem *item);
    KELMARA_INTERNAL void Prepend(CListItem *item);
    KELMARA_INTERNAL void *Remove_Head();
    KELMARA_INTERNAL bool Add_Quietly(void *data);
    KELMARA_INTERNAL bool Add_Copy(void *entry, long size);
    KELMARA_INTERNAL bool Add_Length_Prefixed(const unsigned char *text, long block_size, long key);
    KELMARA_INTERNAL void Release_Quietly(void *block);
    KELMARA_INTERNAL bool Sort_Pass(CListItem *end, int exchange_on);
};
static_assert(sizeof(CDSList) == 40);

/// What `delete` does to a list made with `new` that nobody has a reference to; null is ignored. Compilers
/// warn of `delete` itself, because the destructor is not virtual.
inline void Delete_List(CDSList *list) {
    if (!list) return;
    list->~CDSList();
    CDSList::operator delete(list);
}

// The three operations that most time goes into, inline for the usual case: a list that is exactly a CDSList,
// neither locked nor about to be empty, and a pool block at hand. Everything else happens in the library.

inline const void *CDSList::Table() const {
    using Word [[gnu::may_alias]] = const void *;
    return *reinterpret_cast<const Word *>(this);
}

KELMARA_INLINE bool CDSList::Add(void *data, long key) {
    CListItem *const last = Tail;
    if (key != Lock_Key || !last || !ListItemPool::Serves(Table()) || !ListItemPool::Has_Item_At_Hand())
        [[unlikely]]
        return Add_Otherwise(data, key);
    CListItem *const item = ListItemPool::Take_Item_At_Hand();
    item->Fill(last, data, nullptr, 0);
    last->Next = item;
    Tail = item;
    ++Count;
    return true;
}

KELMARA_INLINE bool CDSList::Push(void *data, long key) {
    CListItem *const first = Head;
    if (key != Lock_Key || !first || !ListItemPool::Serves(Table()) || !ListItemPool::Has_Item_At_Hand())
        [[unlikely]]
        return Push_Otherwise(data, key);
    CListItem *const item = ListItemPool::Take_Item_At_Hand();
    item->InitListItem(data, 0);
    item->Next = first;
    first->Prev = item;
    Head = item;
    ++Count;
    return true;
}

KELMARA_INLINE void *CDSList::Pop(long key) {
    CListItem *const item = Head;
    if (key != Lock_Key || !item || !item->Next || !ListItemPool::Serves(Table()) ||
        !ListItemPool::Can_Return_At_Hand(item)) [[unlikely]]
        return Pop_Otherwise(key);
    void *const value = item->Entry;
    Head = item->Next;
    Head->Prev = nullptr;
    --Count;
    ListItemPool::Return_At_Hand(item);
    return value;
}

#pragma GCC diagnostic pop
