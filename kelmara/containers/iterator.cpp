#include <kelmara/containers/iterator.h>

#include <kelmara/containers/list.h>

struct CIteratorLayout {
    static_assert(offsetof(CIterator, List) == 0 && offsetof(CIterator, Next_Item) == 4);
    static_assert(offsetof(CIterator, Current_Item) == 8 && offsetof(CIterator, Steps) == 12);
};

void CIterator::Start(CDSList *list) {
    List = list;
    Next_Item = list ? list->Head : nullptr;
    Current_Item = nullptr;
    Steps = 0;
}

void *CIterator::Iterate(CDSList *list) {
    Start(list);
    return Next();
}

void *CIterator::Iterate(CDSList *list, void *data) {
    Start(list);
    for (void *value = Next(); More(); value = Next()) {
        if (value == data) return data;
    }
    return nullptr;
}

void *CIterator::Iterate(CDSList *list, short index) {
    Start(list);
    if (index < 0) return nullptr;
    for (short step = 0; step < index; ++step) Next();
    return Next_Item;
}

void *CIterator::Next() {
    ++Steps;
    if (!Next_Item) return nullptr;
    Current_Item = Next_Item;
    Next_Item = Next_Item->Next;
    return Current_Item->Entry;
}

void *CIterator::Current() {
    return Current_Item ? Current_Item->Entry : nullptr;
}

void *CIterator::Previous() {
    if (Steps == 0 || !List) return nullptr;
    --Steps;
    if (!Next_Item) {
        Current_Item = Next_Item = List->Tail;
    } else {
        Next_Item = Current_Item;
        Current_Item = Current_Item ? Current_Item->Prev : nullptr;
    }
    return Current();
}

bool CIterator::More() {
    return List && List->Head && Steps - 1 < List->Count;
}

void CIterator::Reset() {
    if (!List) return;
    Next_Item = List->Head;
    Steps = 0;
}

void *CIterator::Reset_To(void *data) {
    Reset();
    void *value = Next();
    while (value && value != data) value = Next();
    return value;
}

void CIterator::Delete_Current() {
    if (!Current_Item) return;
    CListItem *prev = Current_Item->Prev;
    List->Remove_Item(Current_Item);
    Current_Item = prev;
    if (prev && Steps > 0) {
        Next_Item = prev->Next;
        --Steps;
    } else {
        Next_Item = List->Head;
        Steps = 0;
    }
}
