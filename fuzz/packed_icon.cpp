// Packed icons: any block, which ends where readable memory does, on displays and machines of every kind.

#include <fuzz/support/fuzz_input.h>

#include <kelmara/dialogs/icons.h>
#include <kelmara/foundation/memory.h>

#include <platform/errors.h>
#include <platform/machine.h>
#include <platform/user.h>

#include <algorithm>
#include <sys/mman.h>

namespace {

constexpr std::size_t Page = 4096, Readable = 16 * Page;

// Behind its end nothing can be read.
char *Pages() {
    static char *const pages = [] {
        void *const made =
            mmap(nullptr, Readable + Page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (made == MAP_FAILED) std::abort();
        mprotect(static_cast<char *>(made) + Readable, Page, PROT_NONE);
        return static_cast<char *>(made);
    }();
    return pages;
}

void Pack_Again(HICON icon) {
    void *block = nullptr;
    long size = 0;
    if (Pack_Icon(icon, &block, &size) == 0) {
        HICON again = nullptr;
        REQUIRE(size >= static_cast<long>(sizeof(PackedIconHeader)));
        Unpack_Icon(&again, block, size, nullptr);
        if (again) DestroyIcon(again);
        ds_free(block);
    }
    DestroyIcon(icon);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    FuzzInput input(data, size);
    const unsigned kind = input.Byte();
    Override_Machine_Setting("screen_depth", kind & 1 ? "8" : kind & 2 ? "16" : "32");
    Override_Machine_Setting("windows_version", kind & 4 ? "4.0" : nullptr);
    const std::string_view block = input.Take(Readable);
    char *const at = Pages() + Readable - block.size();
    std::copy(block.begin(), block.end(), at);
    const HDC display = GetDC(nullptr);
    HICON icon = nullptr;
    const long result = Unpack_Icon(&icon, at, static_cast<long>(block.size()), display);
    ReleaseDC(nullptr, display);
    REQUIRE(result == 0 || (result == E_UNEXPECTED && !icon));
    if (icon) Pack_Again(icon);
    REQUIRE(Gdi_Object_Count() == 0 && Icon_Count() == 0);
    return 0;
}
