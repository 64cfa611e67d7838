#pragma once
// A walk over a list (list.h), forwards and back, which may delete entries on its way.
//
//     CIterator walk;
//     for (void *entry = walk.Iterate(&list); walk.More(); entry = walk.Next()) {
//         if (Is_Stale(entry)) walk.Delete_Current();
//     }
//
// A null from Next is not the end: entries may be null. More tells whether the value delivered last is an
// entry. Copies walk on by themselves. An iterator does not look at the list's lock, owns nothing, and must
// not be used after its list. When the entry that it stands on is removed by anybody else, or by another
// iterator, it must start anew. One thread at a time, as the list.

#include <kelmara/foundation/new_delete.h>

class CDSList;
class CListItem;

class KELMARA_API CIterator {
  public:
    KELMARA_CLASS_ALLOCATION

    constexpr CIterator() = default;

    /// Starts a walk and gives what the first Next gives. A null list is an empty one, for every form.
    void *Iterate(CDSList *list);
    /// Starts a walk and steps to the first entry whose value is `data`. Null when there is none.
    void *Iterate(CDSList *list, void *data);
    /// Starts a walk from which Next will deliver entry `index`, and gives its item, not its value. Null when
    /// there is no such entry: the walk is then over, or at its start for an `index` below 0.
    void *Iterate(CDSList *list, short index);

    /// Steps on and gives the value; null past the end.
    void *Next();
    /// The value that Next or Previous gave last, null before the first.
    void *Current();
    /// Steps back. Past the end it gives the last entry, and so it does once more when it stands on it; at
    /// the start null.
    void *Previous();
    /// Whether the value delivered last is an entry.
    bool More();

    /// Back to the start of the same list. Current stays until the next step.
    void Reset();
    /// Reset, then steps until the value is `data`. Null when it is not found; a null value ends the search.
    void *Reset_To(void *data);

    /// Removes the entry delivered last from the list and releases nothing. The walk then stands on the entry
    /// in front of it, and Next delivers the one behind. Right after Reset the walk stays at its start.
    void Delete_Current();

  private:
    friend struct CIteratorLayout;

    KELMARA_INTERNAL void Start(CDSList *list);

    CDSList *List = nullptr;           // offset 0
    CListItem *Next_Item = nullptr;    // offset 4, what Next delivers
    CListItem *Current_Item = nullptr; // offset 8, what Next delivered last
    long Steps = 0;                    // offset 12, calls of Next since the start, past the end too
};
static_assert(sizeof(CIterator) == 16);
