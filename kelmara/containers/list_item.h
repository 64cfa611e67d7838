#pragma once
// One entry of a list (list.h), as it lies in the pool and as a derived list makes it. Frozen layout.

#include <kelmara/api.h>

/// One entry. It has no constructor: InitListItem makes one of raw memory.
class KELMARA_API CListItem {
  public:
    /// The first form clears both links, the second also links behind `prev`, the third between both. Null
    /// for a neighbour: there is none.
    void InitListItem(void *data, long flag) {
        Prev = nullptr;
        Entry = data;
        Next = nullptr;
        Volatile = flag;
    }
    void InitListItem(void *data, CListItem *prev, long flag) {
        InitListItem(data, flag);
        Prev = prev;
        if (prev) prev->Next = this;
    }
    void InitListItem(void *data, CListItem *prev, CListItem *next, long flag) {
        InitListItem(data, prev, flag);
        Next = next;
        if (next) next->Prev = this;
    }

    /// The four fields in one store.
    void Fill(CListItem *prev, void *data, CListItem *next, long flag) {
        using Words = long __attribute__((vector_size(16), may_alias, aligned(4)));
        *reinterpret_cast<Words *>(this) = Words{reinterpret_cast<long>(prev), reinterpret_cast<long>(data),
                                                 reinterpret_cast<long>(next), flag};
    }

    CListItem *Prev; // offset 0, towards the head, null for the first
    void *Entry;     // offset 4, the stored value
    CListItem *Next; // offset 8, towards the tail, null for the last
    long Volatile;   // offset 12, bit 0: Entry is a block that the list copied and owns
};
static_assert(offsetof(CListItem, Entry) == 4 && offsetof(CListItem, Next) == 8);
static_assert(offsetof(CListItem, Volatile) == 12 && sizeof(CListItem) == 16);
