// The text lines of string tables: each line of the input imported, exported, and imported again.

#include <fuzz/support/fuzz_input.h>

#include <kelmara/foundation/safe_str.h>
#include <kelmara/localization/string_table.h>

namespace {

constexpr std::size_t Longest_Export = 1357;

std::string Exported(CStringTable &table, long index) {
    const ExactBytes line(std::string(Longest_Export, 'x'));
    table.Get_Export_String(index, line.Get(), static_cast<int>(line.Size()));
    return line.Get();
}

void Import_And_Export(CStringTable &table, const std::string &line) {
    const long count = table.Count_Entries();
    const ExactBytes text(line + '\0');
    const int index = table.Import_String(text.Get());
    REQUIRE(index == -1 || index == count);
    REQUIRE(table.Count_Entries() == (index == -1 ? count : count + 1));
    if (index == -1) return;
    CSafeStr field;
    table.Get_String(index, field);
    table.Get_String_Identifier(index, field);
    table.Get_String_Comments(index, field);
    const std::string exported = Exported(table, index);
    REQUIRE(exported.ends_with("\r\n"));
    table.Import_String(exported.c_str());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    FuzzInput input(data, size);
    CStringTable table(true);
    REQUIRE(table.New_Table() == 0);
    while (input.More()) Import_And_Export(table, input.Text('\n') + '\n');
    return 0;
}
