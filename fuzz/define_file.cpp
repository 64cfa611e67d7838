// Define files: any file in, then all names that it gave are found, with values that lie in its text.

#include <fuzz/support/fuzz_input.h>
#include <fuzz/support/fuzz_machine.h>

#include <kelmara/containers/hash_table.h>
#include <kelmara/content/define_file.h>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    Write_On_Machine("drive_c/names.def", {reinterpret_cast<const char *>(data), size});
    CHashTable names;
    REQUIRE(Tokenize_Define_File("c:\\names.def", &names) == 0);
    const long count = names.Get_Num_Entries();
    const long walk = names.Get_Entries_Iterator();
    char key[256];
    long value_size = 0;
    std::string all;
    if (count > 0) names.Reset_Iterator(walk);
    for (long i = 1; i < count; ++i) {
        const auto *const value = static_cast<const char *>(names.Iterate_Next(walk, key, &value_size));
        char *found = nullptr;
        REQUIRE(value && value_size >= 0 && value_size <= 64 && names.Find(key, &found, nullptr) == 0);
        all.append(value, static_cast<std::size_t>(value_size));
    }
    names.Return_Iterator(walk);
    return 0;
}
