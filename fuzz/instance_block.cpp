// The block of the instance registry, with any of its bytes damaged: calls end and stay inside the block.

#include <fuzz/support/fuzz_input.h>
#include <fuzz/support/fuzz_machine.h>

#include <kelmara/shared_state/instances.h>

#include <platform/machine.h>
#include <platform/user.h>

#include <algorithm>
#include <cstring>

namespace {

constexpr std::size_t File_Size = Shared_File_Header + sizeof(InstanceTable);
constexpr const char *Keys[] = {"Kelmara", "Dialer", "", "Mail"};

HWND Window() {
    static const HWND window = CreateWindowExA(0, "STATIC", "Title", WS_OVERLAPPED, 0, 0, 10, 10, nullptr,
                                               nullptr, nullptr, nullptr);
    return window;
}

char *File() {
    static char *const file = [] {
        REQUIRE(Window() && First_Instance("Kelmara", "Dialer", Window()));
        return Map_Shared_File("block-INSTANCESHARE", File_Size);
    }();
    REQUIRE(file);
    return file;
}

const std::string &Whole() {
    static const std::string *const whole = new std::string(File(), File_Size);
    return *whole;
}

void Use(FuzzInput &input) {
    const unsigned what = input.Byte();
    const char *const key = Keys[what / 8 % 4], *const subkey = Keys[what / 32 % 4];
    switch (what % 4) {
    case 0:
        First_Instance(key, subkey, Window());
        return;
    case 1:
        Instance_Available(key, what & 4 ? nullptr : subkey);
        return;
    case 2:
        Update_Instance(key, Window());
        return;
    default:
        const auto word = static_cast<std::uint16_t>(input.Short());
        const std::string_view bytes = input.Take(1 + input.Byte() % 8);
        std::copy(bytes.begin(), bytes.end(),
                  File() + Shared_File_Header + word * 4 % (sizeof(InstanceTable) - 8));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    FuzzInput input(data, size);
    Whole();
    while (input.More()) Use(input);
    std::memcpy(File(), Whole().data(), File_Size);
    return 0;
}
