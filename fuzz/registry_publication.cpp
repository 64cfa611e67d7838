// The word in which the processes of a machine tell each other how far the registry goes: it takes any value
// between reads and writes, and what was written is read all the same.

#include <fuzz/support/fuzz_input.h>
#include <fuzz/support/fuzz_machine.h>

#include <platform/errors.h>
#include <platform/registry.h>

#include <cstring>

namespace {

std::uint32_t *Published() {
    static char *const file = Map_Shared_File("block-machine%5Cregistry%201", Shared_File_Header + 8);
    REQUIRE(file);
    return reinterpret_cast<std::uint32_t *>(file + Shared_File_Header);
}

HKEY Open() {
    HKEY key = nullptr;
    REQUIRE(RegCreateKeyExA(HKEY_LOCAL_MACHINE, "Software\\Words", 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                            &key, nullptr) == NO_ERROR);
    return key;
}

} // namespace

// What each half becomes: a number out of the input, or what it is and a little more or less.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    FuzzInput input(data, size);
    const HKEY key = Open();
    DWORD written = 0;
    RegSetValueExA(key, "Number", 0, REG_DWORD, reinterpret_cast<const BYTE *>(&written), sizeof written);
    while (input.More()) {
        const unsigned what = input.Byte();
        if (what & 1)
            Published()[0] = what & 2 ? input.Word() : Published()[0] + static_cast<DWORD>(input.Short());
        if (what & 4)
            Published()[1] = what & 8 ? input.Word() : Published()[1] + static_cast<DWORD>(input.Short());
        if (what & 16) {
            ++written;
            REQUIRE(RegSetValueExA(key, "Number", 0, REG_DWORD, reinterpret_cast<const BYTE *>(&written),
                                   sizeof written) == NO_ERROR);
        }
        DWORD number = ~written, number_size = sizeof number;
        REQUIRE(RegQueryValueExA(key, "Number", nullptr, nullptr, reinterpret_cast<BYTE *>(&number),
                                 &number_size) == NO_ERROR);
        REQUIRE(number == written);
    }
    RegCloseKey(key);
    return 0;
}
