#include <tests/faults/operations/operation.h>

#include <kelmara/containers/hash_table.h>
#include <kelmara/containers/smart_buffer.h>
#include <kelmara/foundation/memory.h>
#include <kelmara/system/file.h>

namespace {

char Value[] = "value";

std::string Found(CHashTable &table, const char *key) {
    try {
        char *data = nullptr;
        return table.Find(key, &data, nullptr) == 0 ? data : "absent";
    } catch (int) {
        return "none";
    }
}

struct Table {
    explicit Table(int size = 1) {
        if (size > 0 && table.Initialize(size) == 0) table.Add("first", Value, 5);
    }
    ~Table() { table.Return_Iterator(walk); }
    std::string State() {
        return Found(table, "first") + " " + Found(table, "second") + std::to_string(table.Get_Num_Entries());
    }
    CHashTable table;
    long walk = 0;
};

struct Empty : Table {
    Empty() : Table(0) {}
};

struct Buffer : CSmartBuffer {
    Buffer() { Initialize(8), Write("abcdefg"), other.Initialize(700), other.Write(Long_Text.c_str()); }
    std::string State() {
        return std::string(CSmartBuffer::Buffer, static_cast<std::size_t>(End_Of_Data)) + "|" +
               std::to_string(Offset) + "|" + (CSmartBuffer::Buffer ? "" : "no block");
    }
    CSmartBuffer other;
};

struct Inside : Buffer {
    Inside() { Move_To(2L); }
};

} // namespace

Operations Table_Operations() {
    static char kept[] = "another value";
    static WCHAR wide[300];
    std::fill(wide, wide + 299, 'w');
    return {
        Row<Made<CHashTable>>("hash table", 1, Throws, [](auto &of) { return of.thing.emplace(), 1; }),
        Row<Empty>("Initialize", 0, {No_Memory}, [](auto &of) { return of.table.Initialize(3); }),
        Row<Table>("Add", 0, {}, Either, [](auto &of) { of.table.Add("second", Value, 5); }),
        Row<Table>("Add by number", 0, {}, Either, [](auto &of) { of.table.Add(2L, Value, 5); }),
        Row<Table>("Add_Volatile", 0, {}, Either,
                   [](auto &of) { of.table.Add_Volatile("second", Value, 6); }),
        Row<Table>("Add_Volatile by number", 0, {}, Either,
                   [](auto &of) { of.table.Add_Volatile(2L, Value, 6); }),
        Row<Table>(
            "Replace_Data", 0, {},
            [](auto &of) { return of.table.Replace_Data("first", kept, sizeof kept, nullptr, false); }),
        Row<Table>("Get_Entries_Iterator", 1, {Nothing},
                   [](auto &of) { return (of.walk = of.table.Get_Entries_Iterator()) != 0; }),
        Row<Buffer>("Write", 0, {No_Memory}, [](auto &of) { return of.Write(Long_Text.c_str()); }),
        Row<Buffer>("Write of a wide text", 0, {No_Memory}, [](auto &of) { return of.Write(wide); }),
        Row<Buffer>("Write of a buffer", 0, {No_Memory}, [](auto &of) { return of.Write(&of.other); }),
        Row<Inside>("Insert", 0, {No_Memory}, [](auto &of) { return of.Insert(Long_Text.c_str(), 600); }),
        Row<Inside>("Insert of a buffer", 0, {No_Memory}, [](auto &of) { return of.Insert(&of.other); }),
        // "each `find` whose replacement does not fit into the block goes all the same"
        Row<Buffer>("Search_And_Replace", 0, {}, Once(Or(Either, {"abefg", "2"})),
                    [](auto &of) { return of.Search_And_Replace("cd", Long_Text.c_str(), true); }),
        // "or 0x8007000E and no block"
        Row<Buffer>("Initialize a buffer", 0, {No_Memory}, Or(Before, {"", "0", "no block"}),
                    [](auto &of) { return of.Initialize(9); }),
    };
}
