// A CHashTable and a std::map, told to do the same, find the same.

#include <fuzz/support/fuzz_input.h>

#include <kelmara/containers/hash_table.h>
#include <kelmara/foundation/memory.h>

#include <map>
#include <vector>

namespace {

struct Model {
    std::map<std::string, std::string> found;
    std::vector<std::string> keys; // in the order of their addition
};

void Compare_All(CHashTable &table, const Model &model) {
    REQUIRE(table.Get_Num_Entries() == static_cast<long>(model.keys.size()));
    for (const auto &[key, value] : model.found) {
        char *data = nullptr;
        long size = -1;
        REQUIRE(table.Find(key.c_str(), &data, &size) == 0 &&
                std::string_view(data, static_cast<std::size_t>(size)) == value);
    }
    const long walk = table.Get_Entries_Iterator();
    table.Reset_Iterator(walk);
    char key[Hash_Key_Size];
    for (std::size_t i = 1; i < model.keys.size(); ++i)
        REQUIRE(table.Iterate_Next(walk, key, nullptr) && key == model.keys[i]);
    table.Return_Iterator(walk);
}

void Replace(CHashTable &table, Model &model, const std::string &key, const std::string &value) {
    auto *const block = static_cast<char *>(ds_malloc(static_cast<long>(value.size() + 1)));
    value.copy(block, value.size());
    const auto size = static_cast<long>(value.size());
    const bool there = model.found.contains(key);
    REQUIRE((table.Replace_Data(key.c_str(), block, size, nullptr, false) == 0) == there);
    if (there)
        model.found[key] = value;
    else
        ds_free(block);
}

std::string Key_Of_Number(long number) {
    std::string key;
    for (int shift = 24; shift >= 0; shift -= 8) {
        const char byte = static_cast<char>(static_cast<unsigned long>(number) >> shift);
        key += byte ? byte : '_';
    }
    return key;
}

void Do_Both(CHashTable &table, Model &model, FuzzInput &input) {
    const unsigned what = input.Byte();
    const long number = input.Short();
    const std::string key =
        what & 0x80 ? Key_Of_Number(number) : std::string(input.Text()).append(what & 0x40 ? 250 : 0, 'k');
    const std::string value(input.Take(input.Byte() % 16));
    const auto size = static_cast<long>(value.size());
    char *data = nullptr;
    switch (what % 4) {
    case 0:
    case 1:
        if (what & 0x80)
            table.Add_Volatile(number, value.c_str(), size);
        else
            table.Add_Volatile(key.c_str(), value.c_str(), size);
        if (key.size() >= Hash_Key_Size) return;
        model.found.try_emplace(key, value);
        model.keys.push_back(key);
        return;
    case 2:
        return Replace(table, model, key, value);
    default:
        REQUIRE((table.Find(key.c_str(), &data, nullptr) == 0) == model.found.contains(key));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    FuzzInput input(data, size);
    CHashTable table;
    Model model;
    REQUIRE(table.Initialize(1 + static_cast<int>(input.Byte() % 40)) == 0);
    while (input.More()) Do_Both(table, model, input);
    Compare_All(table, model);
    return 0;
}
