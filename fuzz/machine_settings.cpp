// The machine's settings: any machine.conf, and all that goes by them.

#include <fuzz/support/fuzz_input.h>
#include <fuzz/support/fuzz_machine.h>

#include <platform/files.h>
#include <platform/gdi.h>
#include <platform/kernel.h>
#include <platform/machine.h>
#include <platform/user.h>

#include <cstring>

namespace {

void Look_At_Drive(char letter) {
    const std::string root = {letter, ':', '\\'};
    GetDriveTypeA(root.c_str());
    DWORD sectors, bytes, free, clusters;
    GetDiskFreeSpaceA(root.c_str(), &sectors, &bytes, &free, &clusters);
    ULARGE_INTEGER free_to_caller, size, all_free;
    GetDiskFreeSpaceExA(root.c_str(), &free_to_caller, &size, &all_free);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    FuzzInput input(data, size);
    const unsigned room = input.Byte();
    const std::string name = input.Text();
    Write_On_Machine("machine.conf", input.Rest());
    const ExactBytes value(std::string(room, 'x'));
    if (Get_Machine_Setting(name.c_str(), value.Get(), room)) REQUIRE(std::memchr(value.Get(), 0, room));
    OSVERSIONINFOA version = {};
    version.dwOSVersionInfoSize = sizeof version;
    REQUIRE(GetVersionExA(&version));
    REQUIRE(GetSystemMetrics(SM_CXSCREEN) > 0 && GetSystemMetrics(SM_CYSCREEN) > 0);
    const HDC display = GetDC(nullptr);
    REQUIRE(GetDeviceCaps(display, BITSPIXEL) > 0);
    ReleaseDC(nullptr, display);
    for (const char letter : {'a', 'c', 'd', 'z'}) Look_At_Drive(letter);
    char drives[128];
    GetLogicalDriveStringsA(sizeof drives, drives);
    return 0;
}
