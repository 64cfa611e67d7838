#include <tests/faults/operations/operation.h>

#include <kelmara/containers/hash_table.h>
#include <kelmara/containers/smart_buffer.h>
#include <kelmara/foundation/memory.h>
#include <kelmara/system/file.h>

#include <optional>

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

struct Table : CHashTable {
    Table() { EXPECT_OK(Initialize(1)), Add("first", Value, 5); }
    static void EXPECT_OK(long result) {
        if (result != 0) throw std::string("no table");
    }
};

std::string Table_State(CHashTable &table) {
    return Found(table, "first") + " " + Found(table, "second") + std::to_string(table.Get_Num_Entries());
}

std::shared_ptr<Table> New_Table() {
    return std::make_shared<Table>();
}

struct Buffer : CSmartBuffer {
    Buffer() { Initialize(8), Write("abcdefg"); }
    std::string State() {
        return std::string(CSmartBuffer::Buffer, static_cast<std::size_t>(End_Of_Data)) + "|" +
               std::to_string(Offset);
    }
};

template <class Operate>
Operation On_Buffer(const char *name, std::vector<Outcome> stated, Operate operate,
                    Leaves leaves = Leaves::Before) {
    return Row(
        name, 0, stated, [] { return std::make_shared<Buffer>(); }, operate,
        [](Buffer &buffer) { return buffer.State(); }, leaves);
}

struct Walk {
    Walk() { table.Initialize(2), table.Add("first", Value, 5); }
    ~Walk() { table.Return_Iterator(walk); }
    CHashTable table;
    long walk = 0;
};

} // namespace

Operations Table_Operations() {
    return {
        Row(
            "hash table", 1, {Throws_Minus_One, Throws_No_Memory},
            [] { return std::make_shared<std::optional<CHashTable>>(); },
            [](std::optional<CHashTable> &table) { return table.emplace(), 1; },
            [](std::optional<CHashTable> &table) { return table ? "made" : "none"; }),
        Row(
            "Initialize", 0, {Gives_No_Memory}, [] { return std::make_shared<CHashTable>(); },
            [](CHashTable &table) { return table.Initialize(3); }, Table_State),
        Row(
            "Add", 0, {}, New_Table, [](Table &table) { return table.Add("second", Value, 5), 0; },
            Table_State, Leaves::Either),
        Row(
            "Add_Volatile", 0, {}, New_Table,
            [](Table &table) { return table.Add_Volatile("second", Value, 6), 0; }, Table_State,
            Leaves::Either),
        Row(
            "Get_Entries_Iterator", 1, {Gives_Nothing}, [] { return std::make_shared<Walk>(); },
            [](Walk &of) { return (of.walk = of.table.Get_Entries_Iterator()) != 0; },
            [](Walk &of) { return Table_State(of.table); }),
        On_Buffer("Write", {Gives_No_Memory}, [](Buffer &buffer) { return buffer.Write(Long_Text.c_str()); }),
        On_Buffer(
            "Insert", {Gives_No_Memory},
            [](Buffer &buffer) { return buffer.Move_To(2L), buffer.Insert(Long_Text.c_str(), 600); },
            Leaves::Partly), // the cursor was moved before
        // "each `find` whose replacement does not fit into the block goes all the same"
        On_Buffer(
            "Search_And_Replace", {},
            [](Buffer &buffer) { return buffer.Search_And_Replace("cd", Long_Text.c_str(), true); },
            Leaves::Partly),
        // "or 0x8007000E and no block"
        On_Buffer(
            "Initialize a buffer", {Gives_No_Memory}, [](Buffer &buffer) { return buffer.Initialize(9); },
            Leaves::Partly),
    };
}
