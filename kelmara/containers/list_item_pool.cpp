#include <kelmara/containers/list_item_pool.h>

#include <platform/errors.h>

#include <algorithm>
#include <bit>
#include <cstdlib>

constinit ListItemPoolFront ListItemPool::Front = {};

namespace {

struct BlockAddress {
    unsigned long items; // where the block's items begin
    long index;          // of its record in Pool_Blocks
};

constexpr long Bits_Per_Word = 32;

constinit ItemPoolBlock *Pool_Blocks = nullptr;
constinit long Pool_Block_Count = 0;
// The blocks in the order of their addresses.
constinit BlockAddress *Blocks_By_Address = nullptr;
// A bit for each block: set where Free_Top is not 0 and for the block that items go back to, because that one
// gets them without a word. Bits that are set for nothing are cleared when a search meets them.
constinit unsigned long *Free_Bits = nullptr;

constinit long Live_Lists = 0;
constinit bool Pool_Release_Pending = false;

template <class T>
void Grow_Table(T *&table, long count) {
    void *grown = std::realloc(table, static_cast<std::size_t>(count) * sizeof(T));
    if (!grown) throw E_OUTOFMEMORY;
    table = static_cast<T *>(grown);
}

template <class T>
void Free_Table(T *&table) {
    std::free(table);
    table = nullptr;
}

void Grow_Free_Bits() {
    if (Pool_Block_Count % Bits_Per_Word != 0) return;
    const long words = Pool_Block_Count / Bits_Per_Word + 1;
    Grow_Table(Free_Bits, words);
    Free_Bits[words - 1] = 0;
}

void Set_Free_Bit(long index) {
    Free_Bits[index / Bits_Per_Word] |= 1ul << (index % Bits_Per_Word);
}

BlockAddress *First_Block_Behind(const CListItem *item) {
    return std::upper_bound(
        Blocks_By_Address, Blocks_By_Address + Pool_Block_Count, reinterpret_cast<unsigned long>(item),
        [](unsigned long wanted, const BlockAddress &block) { return wanted < block.items; });
}

ItemPoolBlock *Block_Of(const CListItem *item) {
    const BlockAddress *behind = First_Block_Behind(item);
    if (behind == Blocks_By_Address) return nullptr;
    ItemPoolBlock *block = Pool_Blocks + behind[-1].index;
    return block->Holds(item) ? block : nullptr;
}

ItemPoolBlock Make_Block() {
    auto *items = static_cast<CListItem *>(std::malloc(Items_Per_Block * sizeof(CListItem)));
    auto **free_stack = static_cast<CListItem **>(std::malloc(Items_Per_Block * sizeof(CListItem *)));
    if (!items || !free_stack) {
        std::free(items);
        std::free(free_stack);
        throw -1;
    }
    for (long i = 0; i < Items_Per_Block; ++i) free_stack[i] = items + i;
    return {items, free_stack, Items_Per_Block - 1};
}

ItemPoolBlock *Add_Record(const ItemPoolBlock &block) {
    BlockAddress *place = First_Block_Behind(block.Items);
    BlockAddress *end = Blocks_By_Address + Pool_Block_Count;
    std::copy_backward(place, end, end + 1);
    *place = {reinterpret_cast<unsigned long>(block.Items), Pool_Block_Count};
    Set_Free_Bit(Pool_Block_Count);
    ItemPoolBlock *record = Pool_Blocks + Pool_Block_Count;
    *record = block;
    ++Pool_Block_Count;
    return record;
}

// An item in use has a null or an even address here.
bool Is_Free(const CListItem *item) {
    return reinterpret_cast<unsigned long>(item->Prev) == 0xDBDBDBDB;
}

} // namespace

ItemPoolBlock *ListItemPool::First_Block_With_Free_Item() {
    for (long first = 0; first < Pool_Block_Count; first += Bits_Per_Word) {
        unsigned long &word = Free_Bits[first / Bits_Per_Word];
        for (unsigned long bits = word; bits != 0; bits &= bits - 1) {
            const int bit = std::countr_zero(bits);
            ItemPoolBlock *block = Pool_Blocks + first + bit;
            if (block->Free_Top != 0) return block;
            if (block != Front.Last_Return_Block) word &= ~(1ul << bit);
        }
    }
    return nullptr;
}

// The records move: what points to them moves along.
void ListItemPool::Grow_Records() {
    ItemPoolBlock *grown = nullptr;
    Grow_Table(grown, Pool_Block_Count + 1);
    std::copy_n(Pool_Blocks, Pool_Block_Count, grown);
    if (Front.Current_Pool_Block) {
        Front.Current_Pool_Block = grown + (Front.Current_Pool_Block - Pool_Blocks);
        Front.Last_Return_Block = grown + (Front.Last_Return_Block - Pool_Blocks);
    }
    std::free(Pool_Blocks);
    Pool_Blocks = grown;
}

// The first block with a free item becomes current, a new one if need be.
void ListItemPool::Grow_Item_Pool() {
    if (ItemPoolBlock *block = First_Block_With_Free_Item()) {
        Front.Current_Pool_Block = block;
        return;
    }
    Grow_Records();
    Grow_Table(Blocks_By_Address, Pool_Block_Count + 1);
    Grow_Free_Bits();
    Front.Current_Pool_Block = Add_Record(Make_Block());
    if (!Front.Last_Return_Block) Front.Last_Return_Block = Front.Current_Pool_Block;
}

CListItem *ListItemPool::Take_List_Item() {
    if (!Has_Item_At_Hand()) Grow_Item_Pool();
    return Take_Item_At_Hand();
}

void ListItemPool::Return_List_Item(CListItem *item) {
    ItemPoolBlock *block = Can_Return_At_Hand(item) ? Front.Last_Return_Block : Block_Of(item);
    if (!block || block->Free_Top >= Items_Per_Block - 1 || Is_Free(item)) return;
    Set_Free_Bit(block - Pool_Blocks);
    Front.Last_Return_Block = block;
    Return_At_Hand(item);
}

void ListItemPool::Free_Item_Pool() {
    for (long i = 0; i < Pool_Block_Count; ++i) {
        std::free(Pool_Blocks[i].Items);
        std::free(Pool_Blocks[i].Free_Stack);
    }
    Free_Table(Pool_Blocks);
    Free_Table(Blocks_By_Address);
    Free_Table(Free_Bits);
    Pool_Block_Count = 0;
    Front = {};
}

void ListItemPool::Enter(const void *table) {
    if (!Front.Current_Pool_Block) Grow_Item_Pool();
    Front.Plain_Table = table;
    ++Live_Lists;
}

void ListItemPool::Leave() {
    if (Live_Lists > 0) --Live_Lists;
    if (Live_Lists == 0 && Pool_Release_Pending) Free_Item_Pool();
}

void ListItemPool::Release() {
    if (Live_Lists == 0)
        Free_Item_Pool();
    else
        Pool_Release_Pending = true;
}
