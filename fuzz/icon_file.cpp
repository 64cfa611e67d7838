// Icon files: any file, its pictures taken out in both sizes, on screens of every depth.

#include <fuzz/support/fuzz_input.h>
#include <fuzz/support/fuzz_machine.h>

#include <kelmara/dialogs/icons.h>

#include <platform/machine.h>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    FuzzInput input(data, size);
    const unsigned kind = input.Byte();
    Write_On_Machine("drive_c/picture.ico", input.Rest());
    Override_Machine_Setting("screen_depth", kind & 1 ? "8" : kind & 2 ? "16" : "32");
    HICON large = nullptr, small = nullptr;
    const UINT whole = ExtractIconExA("c:\\picture.ico", -1, nullptr, nullptr, 0);
    const UINT count = ExtractIconExA("c:\\picture.ico", 0, &large, &small, 1);
    REQUIRE(whole <= 1 && count <= whole && (count > 0) == (large || small));
    if (large) DestroyIcon(large);
    if (small) DestroyIcon(small);
    if (const HICON icon = Load_Icon_From_File(nullptr, "c:\\picture.ico", 32)) DestroyIcon(icon);
    REQUIRE(Gdi_Object_Count() == 0 && Icon_Count() == 0);
    return 0;
}
