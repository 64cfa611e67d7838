#include <kelmara/dialogs/icons.h>
#include <kelmara/foundation/memory.h>

#include <platform/errors.h>
#include <platform/kernel.h>
#include <platform/user.h>
#include <reference_suite/installer/icon_file.h>
#include <tests/foundation/guarded_text.h>
#include <tests/support/test_memory.h>
#include <tests/support/window_verbs.h>

#include <climits>
#include <cstring>

namespace {

RGBQUAD Painter(int side, int x, int y) {
    if (x == y) return {};
    return y < side / 2 ? RGBQUAD{255, 0, 255, 255} : RGBQUAD{0, 255, 0, 255};
}

class PackedIcons : public WindowTest {
  protected:
    void SetUp() override {
        WindowTest::SetUp();
        screen = GetDC(nullptr);
    }
    void TearDown() override {
        ReleaseDC(nullptr, screen);
        for (const char *setting : {"windows_version", "screen_depth"})
            Override_Machine_Setting(setting, nullptr);
        WindowTest::TearDown();
    }
    void Machine_Is(const char *version, int depth) const {
        Override_Machine_Setting("windows_version", version);
        Override_Machine_Setting("screen_depth", std::to_string(depth).c_str());
    }
    /// A cursor of 16 pixels, so that its hot spot counts.
    HICON Made() const {
        machine.Write("drive_c/made.ico", Icon_File({{16, 4}}, Painter));
        HICON icon = nullptr;
        ExtractIconExA("c:\\made.ico", 0, nullptr, &icon, 1);
        ICONINFO info = {};
        EXPECT_TRUE(GetIconInfo(icon, &info));
        DestroyIcon(icon);
        info.fIcon = FALSE;
        info.xHotspot = 3;
        info.yHotspot = 11;
        icon = CreateIconIndirect(&info);
        DeleteObject(info.hbmMask);
        DeleteObject(info.hbmColor);
        return icon;
    }
    /// The block's bytes; empty on failure, which is then in `error`.
    std::string Packed(HICON icon) {
        void *block = this;
        long size = -1;
        error = Pack_Icon(icon, &block, &size);
        EXPECT_EQ(block == nullptr, error != 0);
        EXPECT_EQ(size == 0, error != 0);
        const std::string bytes(static_cast<const char *>(block), static_cast<std::size_t>(size));
        if (block) ds_free(block);
        return bytes;
    }
    HICON Unpacked(std::string block) {
        HICON icon = nullptr;
        error = Unpack_Icon(&icon, block.data(), -1, screen);
        return icon;
    }
    /// What is seen, 32 bits a pixel from the top, and the hot spot.
    std::string Look_Of(HICON icon) const {
        ICONINFO info = {};
        if (!GetIconInfo(icon, &info)) return "none";
        std::string look(2 * 16 * 16 * 4, 0);
        BITMAPINFO form = {};
        form.bmiHeader = {40, 16, -16, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
        GetDIBits(screen, info.hbmMask, 0, 16, look.data(), &form, DIB_RGB_COLORS);
        GetDIBits(screen, info.hbmColor, 0, 16, look.data() + 1024, &form, DIB_RGB_COLORS);
        for (std::size_t i = 3; i < look.size(); i += 4) look[i] = 0; // what is no colour
        DeleteObject(info.hbmMask);
        DeleteObject(info.hbmColor);
        return look + std::to_string(info.xHotspot) + "," + std::to_string(info.yHotspot);
    }

    NoLeak no_leak;
    HDC screen = nullptr;
    long error = 0;
};

TEST_F(PackedIcons, A_Bitmaps_Header_Has_Room_For_Its_Colours) {
    struct Expected {
        WORD bits;
        LONG size;
        DWORD colours, image; // of 33 by 3 pixels
    };
    for (const Expected &each : {Expected{1, 48, 2, 24},
                                 {4, 104, 16, 60},
                                 {8, 1064, 256, 108},
                                 {16, 262184, 0, 204},
                                 {24, 40, 0, 300},
                                 {32, 44, 0, 396}}) {
        const HBITMAP bitmap = CreateBitmap(33, 3, 1, each.bits, nullptr);
        BITMAPINFO *const information = CreateBitmapInfoStruct(bitmap);
        ASSERT_NE(information, nullptr);
        EXPECT_EQ(Last_Request(), each.size);
        const BITMAPINFOHEADER &header = information->bmiHeader;
        EXPECT_EQ(header.biSize, 40u);
        EXPECT_EQ(header.biWidth * 100 + header.biHeight, 3303);
        EXPECT_EQ(header.biPlanes, 1);
        EXPECT_EQ(header.biBitCount, each.bits);
        EXPECT_EQ(header.biClrUsed, each.colours);
        EXPECT_EQ(header.biSizeImage, each.image);
        ds_free(information);
        DeleteObject(bitmap);
    }
    EXPECT_EQ(CreateBitmapInfoStruct(nullptr), nullptr);
    const HBITMAP wide = CreateBitmap(0x200000, 1, 1, 1, nullptr); // 65,536 words in a row
    BITMAPINFO *const information = CreateBitmapInfoStruct(wide);
    EXPECT_EQ(information->bmiHeader.biSizeImage, 0u);
    ds_free(information);
    const ICONINFO info = {TRUE, 0, 0, wide, wide};
    const HICON icon = CreateIconIndirect(&info);
    Packed(icon);
    EXPECT_EQ(error, E_UNEXPECTED);
    DestroyIcon(icon);
    DeleteObject(wide);
}

TEST_F(PackedIcons, The_Block_Is_As_It_Has_Always_Been) {
    Machine_Is("5.1", 24);
    const BYTE mask_rows[] = {0x12, 0x34, 0x56, 0x78}; // 9 pixels by 2, rows of two bytes
    const HBITMAP mask = CreateBitmap(9, 2, 1, 1, mask_rows), colours = CreateBitmap(9, 2, 1, 24, nullptr);
    const BYTE top_left[] = {1, 2, 3, 0};
    BITMAPINFO form = {};
    form.bmiHeader = {40, 1, -1, 1, 24, BI_RGB, 0, 0, 0, 0, 0};
    SetDIBits(screen, colours, 0, 1, top_left, &form, DIB_RGB_COLORS);
    ICONINFO info = {FALSE, 7, 1, mask, colours};
    const HICON icon = CreateIconIndirect(&info);
    const DWORD header[] = {56, 9, 2, 1, 1, 9, 2, 1, 24, 0, 7, 1, 8, 56};
    std::string block(reinterpret_cast<const char *>(header), sizeof header);
    block += std::string("\x12\0\x56\0\0\0\0\0", 8); // 9 of 16 bits each, then what no bits are given for
    const std::string rows = std::string(28, 0) + "\1\2\3" + std::string(25, 0);
    EXPECT_EQ(Packed(icon), block + rows) << "from the bottom up";
    Machine_Is("5.0", 24);
    EXPECT_EQ(Packed(icon), block + "\1\2\3" + std::string(53, 0)) << "from the top, as the display has it";
    for (const HBITMAP each : {mask, colours}) DeleteObject(each);
    DestroyIcon(icon);
}

TEST_F(PackedIcons, Come_Back_On_Every_Display_And_Windows) {
    for (const int depth : {4, 8, 16, 24, 32}) {
        for (const char *version : {"4.0", "5.0", "5.1", "5.2", "6.0"}) {
            Machine_Is(version, depth);
            const HICON icon = Made();
            const std::string look = Look_Of(icon), block = Packed(icon);
            ASSERT_EQ(error, 0);
            EXPECT_EQ(block.size(), 56 + 64 + 16u * 2 * static_cast<unsigned>(depth));
            const HICON same = Unpacked(block);
            EXPECT_EQ(error, 0);
            EXPECT_EQ(Look_Of(same), look) << version << ", " << depth;
            DestroyIcon(same);
            for (const int other : {4, 8, 16, 24, 32}) { // through a DIB section
                Machine_Is("5.1", other);
                const bool upside_down = version[0] != '5' || version[2] == '0' || depth == 8;
                const HICON elsewhere = Unpacked(block);
                EXPECT_EQ(error, 0);
                const bool alike = !upside_down || (depth == 8 && other == 8);
                EXPECT_EQ(Look_Of(elsewhere) == look, alike) << depth << " on " << other << " " << version;
                DestroyIcon(elsewhere);
            }
            DestroyIcon(icon);
        }
    }
}

TEST_F(PackedIcons, What_Fails_Leaves_Nothing) {
    const HICON icon = Made();
    for (const char *version : {"5.0", "5.1"}) {
        Machine_Is(version, 32);
        for (long nth = 1;; ++nth) {
            const FailingMemory failing(nth);
            Packed(icon);
            if (failing.Refused() == 0) break;
            EXPECT_EQ(error, E_OUTOFMEMORY);
            ASSERT_LT(nth, 10);
        }
    }
    EXPECT_EQ(error, 0);
    const HBITMAP mask = CreateBitmap(4, 8, 1, 1, nullptr);
    const ICONINFO info = {TRUE, 0, 0, mask, nullptr};
    const HICON plain = CreateIconIndirect(&info);
    for (const HICON without_colours : {plain, HICON(nullptr)}) {
        Packed(without_colours);
        EXPECT_EQ(error, E_OUTOFMEMORY);
    }
    long size = 1;
    void *block = &size;
    EXPECT_EQ(Pack_Icon(icon, nullptr, &size), E_UNEXPECTED);
    EXPECT_EQ(Pack_Icon(icon, &block, nullptr), E_UNEXPECTED);
    HICON out = plain;
    EXPECT_EQ(Unpack_Icon(&out, nullptr, 0, screen), E_UNEXPECTED);
    EXPECT_EQ(Unpack_Icon(&out, reinterpret_cast<void *>(16), 56, screen), E_UNEXPECTED);
    EXPECT_EQ(out, plain);
    EXPECT_EQ(Unpack_Icon(nullptr, Packed(icon).data(), 0, screen), E_UNEXPECTED);
    DestroyIcon(plain);
    DestroyIcon(icon);
    DeleteObject(mask);
}

TEST_F(PackedIcons, Foreign_Blocks_Never_Harm) {
    const auto unpack = [&](const std::string &block) {
        const GuardedText guarded(block);
        HICON icon = nullptr;
        const long result = Unpack_Icon(&icon, guarded, static_cast<long>(block.size()), screen);
        EXPECT_TRUE(result == 0 || result == E_UNEXPECTED);
        if (icon) DestroyIcon(icon);
        return result;
    };
    for (const int depth : {8, 24, 32}) {
        Machine_Is("5.1", depth);
        const HICON icon = Made();
        const std::string whole = Packed(icon);
        DestroyIcon(icon);
        for (const char *version : {"5.0", "5.1"}) {
            for (const int shown : {depth, 16}) {
                Machine_Is(version, shown);
                EXPECT_EQ(unpack(whole), 0);
                for (std::size_t length = 0; length + 1 < whole.size(); ++length)
                    ASSERT_EQ(unpack(whole.substr(0, length)), E_UNEXPECTED) << length;
                for (std::size_t field = 0; field < 14; ++field) {
                    for (const long value :
                         {0L, 1L, -1L, LONG_MAX, LONG_MIN, 0xFFFFL, 0x10000L, 0x8000001L}) {
                        std::string changed = whole;
                        std::memcpy(&changed[field * 4], &value, 4);
                        unpack(changed);
                    }
                }
                for (const long side : {LONG_MAX, LONG_MIN, 0x10000L, -16L, 0x4000L}) { // products that wrap
                    std::string changed = whole;
                    for (const std::size_t field : {1, 2, 5, 6}) std::memcpy(&changed[field * 4], &side, 4);
                    EXPECT_EQ(unpack(changed), E_UNEXPECTED) << side;
                }
            }
        }
    }
}

} // namespace
