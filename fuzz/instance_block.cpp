// The block of the instance registry, with any of its bytes damaged: calls end and stay inside the block.

#include <fuzz/support/damaged_block.h>

#include <kelmara/shared_state/instances.h>

#include <platform/machine.h>
#include <platform/user.h>

namespace {

constexpr const char *Keys[] = {"Kelmara", "Dialer", "", "Mail"};

HWND Window() {
    static const HWND window = CreateWindowExA(0, "STATIC", "Title", WS_OVERLAPPED, 0, 0, 10, 10, nullptr,
                                               nullptr, nullptr, nullptr);
    return window;
}

DamagedBlock &Block() {
    static DamagedBlock *const block = [] {
        REQUIRE(Window() && First_Instance("Kelmara", "Dialer", Window()));
        return new DamagedBlock("INSTANCESHARE", sizeof(InstanceTable));
    }();
    return *block;
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
        Block().Damage(input, Shared_File_Header);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    FuzzInput input(data, size);
    Block();
    while (input.More()) Use(input);
    Block().Put_Back();
    return 0;
}
