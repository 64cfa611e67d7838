// The registry's file: any bytes, or whole records of any content with some of them damaged. All of it is
// read, then something is written, which must be there when the file is read anew. An empty file can be
// written to in any case.

#include <fuzz/support/fuzz_input.h>
#include <fuzz/support/fuzz_machine.h>

#include <platform/errors.h>
#include <platform/machine.h>
#include <platform/registry.h>
#include <platform/registry/record.h>

#include <cstring>

namespace {

constexpr char Key[] = "Software\\Written", Value[] = "Value";

std::string Made_Up_File(FuzzInput &input) {
    RegistryFileHeader header = {};
    header.generation = input.Byte();
    header.first_free_key = input.Byte();
    REQUIRE(Complete_Header(header));
    std::string file(reinterpret_cast<const char *>(&header), sizeof header);
    while (input.More()) {
        const unsigned kind = input.Byte();
        RegistryRecord record = {static_cast<RecordKind>(kind % 7),
                                 kind & 0x80 ? input.Word() : input.Byte()};
        record.detail = kind & 0x40 ? input.Word() : input.Byte();
        record.name = input.Take(input.Byte());
        record.data = input.Take(input.Byte());
        std::vector<unsigned char> bytes;
        Append_Record(record, header.number, static_cast<std::uint32_t>(file.size()), bytes);
        if (kind & 0x20) bytes[input.Byte() % bytes.size()] ^= static_cast<unsigned char>(input.Byte());
        file.append(bytes.begin(), bytes.end());
    }
    return file;
}

void Walk(HKEY key, int depth) {
    char name[256], value[64];
    BYTE data[64];
    DWORD type, size, name_size, subkeys, values;
    RegQueryInfoKeyA(key, nullptr, nullptr, nullptr, &subkeys, nullptr, nullptr, &values, nullptr, nullptr,
                     nullptr, nullptr);
    for (DWORD i = 0; i < 20; ++i) {
        name_size = sizeof value, size = sizeof data;
        if (RegEnumValueA(key, i, value, &name_size, nullptr, &type, data, &size) == ERROR_NO_MORE_ITEMS)
            break;
    }
    for (DWORD i = 0; i < 20 && depth < 8; ++i) {
        name_size = sizeof name;
        if (RegEnumKeyExA(key, i, name, &name_size, nullptr, nullptr, nullptr, nullptr)) break;
        HKEY subkey = nullptr;
        if (RegOpenKeyExA(key, name, 0, KEY_READ, &subkey)) continue;
        Walk(subkey, depth + 1);
        RegCloseKey(subkey);
    }
}

void Walk_All() {
    for (const HKEY root : {HKEY_CLASSES_ROOT, HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE, HKEY_USERS})
        Walk(root, 0);
}

bool Write(DWORD number) {
    HKEY key = nullptr;
    if (RegCreateKeyExA(HKEY_CURRENT_USER, Key, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr))
        return false;
    const LONG result =
        RegSetValueExA(key, Value, 0, REG_DWORD, reinterpret_cast<const BYTE *>(&number), sizeof number);
    RegCloseKey(key);
    return result == NO_ERROR;
}

DWORD Read() {
    HKEY key = nullptr;
    DWORD number = 0, size = sizeof number;
    if (RegOpenKeyExA(HKEY_CURRENT_USER, Key, 0, KEY_READ, &key)) return 0;
    RegQueryValueExA(key, Value, nullptr, nullptr, reinterpret_cast<BYTE *>(&number), &size);
    RegCloseKey(key);
    return number;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    FuzzInput input(data, size);
    const bool raw = input.Byte() % 8 == 0;
    const std::string file = raw ? std::string(input.Rest()) : Made_Up_File(input);
    Write_On_Machine("registry/registry.log", file);
    REQUIRE(Enter_Machine(Fuzz_Machine().c_str())); // which reads the file anew
    Walk_All();
    const bool written = Write(4711);
    REQUIRE(written || !file.empty());
    if (written) REQUIRE(Read() == 4711);
    REQUIRE(Enter_Machine(Fuzz_Machine().c_str()));
    if (written) REQUIRE(Read() == 4711);
    Walk_All();
    REQUIRE(Open_Handle_Count() == 0);
    return 0;
}
