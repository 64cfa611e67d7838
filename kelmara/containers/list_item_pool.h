#pragma once
// The one pool that the items of all lists come from; for the list's own use.
//
// Items lie in blocks of 500, each with a stack of those that are free. Taking one is a pop from the current
// block's stack, giving one back a push to that of its own block. Entry 0 of a stack is never handed out,
// because a top of 0 counts as empty: a block serves 499 items. All memory is the C runtime's, not that of
// the memory services, so the pool outlives their binding. No lock: one thread at a time.
//
// The list's inline operations, compiled into programs, read and write what stands in the front and in the
// blocks that it points to, so both layouts are frozen. All else is the library's.

#include <kelmara/containers/list_item.h>

inline constexpr long Items_Per_Block = 500;

struct ItemPoolBlock {
    CListItem *Items;       // offset 0, one allocation of 8,000 bytes
    CListItem **Free_Stack; // offset 4, 500 places
    long Free_Top;          // offset 8, where the top of the stack is

    bool Holds(const CListItem *item) const {
        return reinterpret_cast<unsigned long>(item) - reinterpret_cast<unsigned long>(Items) <
               Items_Per_Block * sizeof(CListItem);
    }
};
static_assert(offsetof(ItemPoolBlock, Free_Stack) == 4 && offsetof(ItemPoolBlock, Free_Top) == 8);
static_assert(sizeof(ItemPoolBlock) == 12);

struct ListItemPoolFront {
    ItemPoolBlock *Current_Pool_Block; // offset 0, where items are taken; null while there is no pool
    ItemPoolBlock *Last_Return_Block;  // offset 4, where the last item went back; null as the first
    const void *Plain_Table;           // offset 8, the virtual table of a list that is exactly a CDSList
};
static_assert(sizeof(ListItemPoolFront) == 12 && offsetof(ListItemPoolFront, Plain_Table) == 8);

class ListItemPool {
  public:
    /// While a list lives there is a pool: these may be called. Whether the current block has an item.
    static bool Has_Item_At_Hand() { return Front.Current_Pool_Block->Free_Top != 0; }
    static CListItem *Take_Item_At_Hand() {
        ItemPoolBlock &block = *Front.Current_Pool_Block;
        return block.Free_Stack[block.Free_Top--];
    }

    /// Whether an item that is in use goes back to the block that the last one went to.
    static bool Can_Return_At_Hand(const CListItem *item) {
        const ItemPoolBlock &block = *Front.Last_Return_Block;
        return block.Holds(item) && block.Free_Top < Items_Per_Block - 1;
    }
    static void Return_At_Hand(CListItem *item) {
        ItemPoolBlock &block = *Front.Last_Return_Block;
        block.Free_Stack[++block.Free_Top] = item;
        __builtin_memset(item, 0xDB, sizeof *item);
    }

    /// Whether this is the virtual table of a list whose items come from the pool.
    static bool Serves(const void *table) { return table == Front.Plain_Table; }

    /// A raw item. When memory runs out the pool stays as it is, and a `long` E_OUTOFMEMORY is thrown when
    /// its tables cannot grow, an `int` -1 when a block is not to be had.
    KELMARA_INTERNAL static CListItem *Take_List_Item();
    /// Frees the item and fills it with 0xDB. One that is in no block, or free already, is left alone.
    KELMARA_INTERNAL static void Return_List_Item(CListItem *item);

    /// A list begins: there is a pool from here on, or what Take_List_Item throws. `table` is its virtual
    /// table as a CDSList.
    KELMARA_INTERNAL static void Enter(const void *table);
    /// A list ends.
    KELMARA_INTERNAL static void Leave();

    /// The exit routine: frees the pool, now or with the last list.
    KELMARA_INTERNAL static void Release();

  private:
    KELMARA_INTERNAL static void Grow_Item_Pool();
    KELMARA_INTERNAL static void Grow_Records();
    KELMARA_INTERNAL static ItemPoolBlock *First_Block_With_Free_Item();
    KELMARA_INTERNAL static void Free_Item_Pool();

    KELMARA_API static constinit ListItemPoolFront Front;
};
