// "telephon.ini", where Windows 95 keeps its dialling locations, and settings files at large: any file, any
// section and key.

#include <fuzz/support/fuzz_input.h>
#include <fuzz/support/fuzz_machine.h>

#include <kelmara/connectivity/tapi.h>

#include <platform/files.h>
#include <platform/machine.h>

#include <cstring>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    FuzzInput input(data, size);
    const unsigned kind = input.Byte();
    const std::string section = input.Text(), key = input.Text();
    Write_On_Machine("drive_c/WINDOWS/telephon.ini", input.Rest());
    Override_Machine_Setting("windows", "95");
    const ExactBytes name(std::string(kind % 64 + 1, 'x')), value(std::string(kind, 'x'));
    if (Get_Current_Dial_Location(name.Get(), static_cast<int>(kind % 64)))
        REQUIRE(std::memchr(name.Get(), 0, kind % 64 + 1));
    const DWORD length =
        GetPrivateProfileStringA(kind & 1 ? nullptr : section.c_str(), kind & 2 ? nullptr : key.c_str(),
                                 "fallback  ", value.Get(), static_cast<DWORD>(value.Size()), "telephon.ini");
    REQUIRE(length == 0 || length < kind);
    return 0;
}
