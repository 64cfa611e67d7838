#include <kelmara/containers/list_item_pool.h>

#include <platform/errors.h>

#include <algorithm>
#include <bit>
#include <cstdlib>

constinit ListItemPoolFront ListItemPool::Front = {};

namespace {

constexpr long Bits_Per_Word = 32;
constexpr unsigned long Page_Size = 4096;
constexpr unsigned long Page_Count = 1024 * 1024;

constinit ItemPoolBlock *Pool_Blocks = nullptr;
constinit long Pool_Block_Count = 0;
// For each page of the address space the last block that lies in it, as its index plus 1. A page is smaller
// than a block, so the block that an address lies in is the last one of the address's page or of the page
// before. Of these 4 MB the host gives only what is written to.
constinit long *Block_Map = nullptr;
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

unsigned long Page_Of(const void *address) {
    return reinterpret_cast<unsigned long>(address) / Page_Size;
}

ItemPoolBlock *Block_Of(const CListItem *item) {
    for (const unsigned long page : {Page_Of(item), Page_Of(item) - 1}) {
        const long number = Block_Map[page % Page_Count];
        if (number != 0 && Pool_Blocks[number - 1].Holds(item)) return Pool_Blocks + number - 1;
    }
    return nullptr;
}

void Make_Map() {
    if (Block_Map) return;
    Block_Map = static_cast<long *>(std::calloc(Page_Count, sizeof(long)));
    if (!Block_Map) throw E_OUTOFMEMORY;
}

void Map_Block(const ItemPoolBlock &block, long number) {
    const unsigned long last = Page_Of(block.Items + Items_Per_Block - 1);
    for (unsigned long page = Page_Of(block.Items); page < last; ++page) Block_Map[page] = number;
    if (Block_Map[last] == 0) Block_Map[last] = number;
}

void Free_Block(const ItemPoolBlock &block) {
    std::free(block.Items);
    std::free(block.Free_Stack);
}

template <class T>
T *Allocate(long count) {
    // NOLINTNEXTLINE(bugprone-sizeof-expression): T may be a pointer
    return static_cast<T *>(std::malloc(static_cast<std::size_t>(count) * sizeof(T)));
}

ItemPoolBlock Make_Block() {
    const ItemPoolBlock block = {Allocate<CListItem>(Items_Per_Block), Allocate<CListItem *>(Items_Per_Block),
                                 Items_Per_Block - 1};
    if (!block.Items || !block.Free_Stack) {
        Free_Block(block);
        throw -1;
    }
    for (long i = 0; i < Items_Per_Block; ++i) block.Free_Stack[i] = block.Items + i;
    return block;
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
    Make_Map();
    Grow_Records();
    Grow_Free_Bits();
    Pool_Blocks[Pool_Block_Count] = Make_Block();
    Map_Block(Pool_Blocks[Pool_Block_Count], Pool_Block_Count + 1);
    Set_Free_Bit(Pool_Block_Count);
    Front.Current_Pool_Block = Pool_Blocks + Pool_Block_Count;
    ++Pool_Block_Count;
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
    for (long i = 0; i < Pool_Block_Count; ++i) Free_Block(Pool_Blocks[i]);
    Free_Table(Block_Map);
    Free_Table(Pool_Blocks);
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
