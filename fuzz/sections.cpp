// Section files: any text in, then all that was found is read and found again.

#include <fuzz/support/fuzz_input.h>

#include <kelmara/content/sections.h>

namespace {

void Read_Items(CSectionEntry &section) {
    char section_name[256];
    section.Get_Section_Name(section_name);
    const long count = section.Get_Item_Count();
    for (int i = 0; i < count; ++i) {
        char *name = nullptr, *value = nullptr;
        long size = 0, found_size = -1;
        section.Get_Next_Item(i, &name, &value, &size);
        REQUIRE(name && value && size > 0 && value[size] == 0 && value[size - 1] == 0);
        REQUIRE(section.Get_Item_Data(name, &found_size) && found_size > 0);
        REQUIRE(section.Add_Item(name, value, size) == 0);
    }
    REQUIRE(section.Get_Item_Count() == 2 * count);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    FuzzInput input(data, size);
    const bool strip_quotes = input.Byte() % 2;
    const ExactBytes text(input.Rest());
    CDSList sections;
    const long result = Load_Sections(text.Get(), text.Size(), &sections, strip_quotes);
    REQUIRE(result == 0 || result == Malformed_Sections);
    for (long i = 0; i < sections.Entries(0); ++i)
        Read_Items(*static_cast<CSectionEntry *>(sections.GetEntry(i, 0)));
    REQUIRE(Unload_Sections(&sections) == 0 && sections.Entries(0) == 0);
    return 0;
}
