// String tables: any file loaded, and every read and edit made on it, in the order that the input says.

#include <fuzz/support/fuzz_input.h>
#include <fuzz/support/fuzz_machine.h>

#include <kelmara/foundation/safe_str.h>
#include <kelmara/localization/string_table.h>
#include <kelmara/system/file.h>

namespace {

class Table : public CStringTable {
  public:
    using CStringTable::CStringTable;
    using CStringTable::Get_Entry;
};

void Read(Table &table, long index) {
    CSafeStr text, identifier, comments;
    table.Get_String(index, text);
    table.Get_String_Identifier(index, identifier);
    table.Get_String_Comments(index, comments);
    table.Get_String_Type(index);
    table.Get_Entry(index);
    char line[1357];
    table.Get_Export_String(index, line, sizeof line);
    table.Get_String_From_Identifier(identifier, text);
    table.Get_String_From_Identifier(static_cast<char *>(identifier), identifier);
}

// What an edit says of the table afterwards holds.
void Edit(Table &table, FuzzInput &input) {
    const unsigned what = input.Byte();
    const long index = static_cast<signed char>(input.Byte());
    const CSafeStr text(std::string(input.Byte() * (what & 0x80 ? 200u : 1u), 't').c_str());
    const long count = table.Count_Entries();
    switch (what % 8) {
    case 0:
        return Read(table, index);
    case 1: {
        const int last = table.Set_String(index, text);
        REQUIRE(last == -1 || last == table.Count_Entries() - 1);
        return;
    }
    case 2:
        return table.Set_Identifier(index, text);
    case 3:
        return table.Set_Comments(index, text);
    case 4:
        return table.Set_Type(index, static_cast<long>(what));
    case 5:
        table.Delete_String(index);
        return REQUIRE(table.Count_Entries() <= count);
    case 6:
        table.Set_String(count, text);
        return;
    default:
        table.Import_String("text\tIDENTIFIER\t3\tremarks\r\n");
    }
}

long Load(Table &table) {
    CKMFile file;
    REQUIRE(file.Open("c:\\table.ltx", false, false) == 0);
    const long result = table.Load_Table(&file);
    file.Close();
    return result;
}

void Save(Table &table) {
    CKMFile file;
    REQUIRE(file.Open("c:\\saved.ltx", true, true) == 0);
    table.Save_Changes(&file);
    file.Close();
}

} // namespace

// First whether it is to be edited and how many edits there are, then the edits, then the file.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    FuzzInput input(data, size);
    const unsigned first = input.Byte();
    FuzzInput edits(data + (size ? 1 : 0), input.Take(first / 2 % 32 * 3).size());
    Write_On_Machine("drive_c/table.ltx", input.Rest());
    Table table(first % 2);
    REQUIRE(Load(table) == 0 && table.Count_Entries() >= 0);
    for (long i = -1; i < 70 && i <= table.Count_Entries(); ++i) Read(table, i);
    while (edits.More()) Edit(table, edits);
    for (long i = 0; i < 3; ++i) Read(table, i);
    Save(table);
    return 0;
}
