// Bitmaps of every depth, rows of other forms, palettes.

#include <platform/gdi.h>
#include <platform/kernel.h>
#include <platform/user.h>
#include <tests/support/handles.h>
#include <tests/support/window_verbs.h>

#include <climits>

namespace {

constexpr WORD Depths[] = {1, 4, 8, 16, 24, 32};
constexpr int Width = 21, Height = 5; // rows that end within a byte, a word and four bytes

BITMAPINFO Form(LONG width, LONG height, WORD bits, DWORD size = 40) {
    BITMAPINFO form = {};
    form.bmiHeader = {size, width, height, 1, bits, BI_RGB, 0, 0, 0, 0, 0};
    return form;
}

struct FormWithColours {
    BITMAPINFO form;
    RGBQUAD more_colours[256]; // the header may be of 44 bytes
};

class Bitmaps : public WindowTest {
  protected:
    void SetUp() override {
        WindowTest::SetUp();
        screen = GetDC(nullptr);
    }
    void TearDown() override {
        ReleaseDC(nullptr, screen);
        WindowTest::TearDown();
    }
    void Show_In(WORD depth) const { machine.Set("screen_depth", std::to_string(depth)); }
    /// Rows of 32 bits from the top: black, white and, unless for 1 bit, colours that every depth has.
    static std::vector<DWORD> Pattern(WORD bits) {
        const DWORD colours[] = {0, 0xFFFFFF, 0xFF0000, 0x00FFFF, 0xFF};
        std::vector<DWORD> pixels;
        for (unsigned at = 0; at < Width * Height; ++at) pixels.push_back(colours[at % (bits == 1 ? 2 : 5)]);
        return pixels;
    }
    HBITMAP Painted(WORD bits, const std::vector<DWORD> &pixels) const {
        const HBITMAP bitmap = CreateBitmap(Width, Height, 1, bits, nullptr);
        const BITMAPINFO form = Form(Width, -Height, 32);
        EXPECT_EQ(SetDIBits(screen, bitmap, 0, Height, pixels.data(), &form, DIB_RGB_COLORS), Height);
        return bitmap;
    }
    std::vector<DWORD> Pixels_Of(HBITMAP bitmap) const {
        std::vector<DWORD> pixels(Width * Height, 1);
        BITMAPINFO form = Form(Width, -Height, 32);
        EXPECT_EQ(GetDIBits(screen, bitmap, 0, Height, pixels.data(), &form, DIB_RGB_COLORS), Height);
        return pixels;
    }

    HDC screen = nullptr;
};

TEST_F(Bitmaps, Keep_Their_Pixels_In_Every_Depth_And_Form) {
    for (const WORD bits : Depths) {
        const std::vector<DWORD> pattern = Pattern(bits);
        const HBITMAP bitmap = Painted(bits, pattern);
        EXPECT_EQ(Pixels_Of(bitmap), pattern) << bits;

        BITMAP told;
        ASSERT_EQ(GetObjectA(bitmap, sizeof told, &told), 24);
        EXPECT_EQ(told.bmWidthBytes, (Width * bits + 15) / 16 * 2) << bits;
        EXPECT_EQ(told.bmBitsPixel, bits);
        std::string rows(static_cast<std::size_t>(told.bmWidthBytes * Height) + 1, '~');
        const LONG all = told.bmWidthBytes * Height;
        EXPECT_EQ(GetBitmapBits(bitmap, 0, nullptr), all);
        EXPECT_EQ(GetBitmapBits(bitmap, 65536, rows.data()), all);
        EXPECT_EQ(rows.back(), '~') << "not a byte more than there is";
        const HBITMAP same = CreateBitmap(Width, Height, 1, bits, rows.data());
        EXPECT_EQ(Pixels_Of(same), pattern) << bits;

        for (const WORD other : Depths) {
            if (other < bits && other < 4) continue; // has not the colours
            for (const LONG height : {Height, -Height}) {
                FormWithColours to = {Form(Width, height, other, 44), {}};
                std::vector<BYTE> dib(static_cast<std::size_t>((Width * other + 31) / 32 * 4 * Height));
                EXPECT_EQ(GetDIBits(screen, bitmap, 0, 99, dib.data(), &to.form, DIB_RGB_COLORS), Height);
                EXPECT_EQ(to.form.bmiHeader.biSizeImage, dib.size());
                EXPECT_EQ(SetDIBits(screen, same, 0, 99, dib.data(), &to.form, DIB_RGB_COLORS), Height);
                EXPECT_EQ(Pixels_Of(same), pattern) << bits << " through " << other << ", " << height;
            }
        }
        for (const HBITMAP each : {bitmap, same}) EXPECT_TRUE(DeleteObject(each));
        EXPECT_EQ(Error_Of(GetObjectA(same, 24, &told)), ERROR_INVALID_HANDLE);
    }
}

TEST_F(Bitmaps, Sections_Share_Their_Rows_With_The_Caller) {
    for (const LONG height : {3L, -3L}) {
        FormWithColours form = {Form(2, height, 8), {}};
        form.form.bmiHeader.biClrUsed = 2;
        reinterpret_cast<RGBQUAD *>(&form.form.bmiColors)[1] = {3, 2, 1, 0};
        void *bits = nullptr;
        const HBITMAP section = CreateDIBSection(screen, &form.form, DIB_RGB_COLORS, &bits, nullptr, 0);
        ASSERT_NE(section, nullptr);
        static_cast<BYTE *>(bits)[0] = 1; // the left pixel of the row that comes first
        BITMAP told;
        GetObjectA(section, sizeof told, &told);
        EXPECT_EQ(told.bmBits, bits);
        EXPECT_EQ(told.bmWidthBytes, 4);
        DWORD pixel = 7;
        BITMAPINFO one = Form(1, height, 32);
        EXPECT_EQ(GetDIBits(screen, section, 0, 1, &pixel, &one, DIB_RGB_COLORS), 1);
        EXPECT_EQ(pixel, 0x010203u);
        EXPECT_EQ(GetDIBits(screen, section, 2, 9, &pixel, &one, DIB_RGB_COLORS), 1);
        EXPECT_EQ(pixel, 0u);
        EXPECT_EQ(Error_Of(GetDIBits(screen, section, 3, 1, &pixel, &one, DIB_RGB_COLORS)),
                  ERROR_INVALID_PARAMETER);
        EXPECT_TRUE(DeleteObject(section));
    }
}

TEST_F(Bitmaps, Sizes_That_Cannot_Be_Are_Refused) {
    struct Hostile {
        LONG width, height;
        WORD planes, bits;
        long error; // of CreateBitmap
    };
    constexpr Hostile hostile[] = {
        {-1, 1, 1, 1, ERROR_INVALID_PARAMETER},
        {1, LONG_MIN, 1, 1, ERROR_INVALID_PARAMETER},
        {1, 1, 0, 1, ERROR_INVALID_PARAMETER},
        {1, 1, 1, 33, ERROR_INVALID_PARAMETER},
        {1, 1, 0xFFFF, 0xFFFF, ERROR_INVALID_PARAMETER},
        {LONG_MAX, LONG_MAX, 1, 32, ERROR_NOT_ENOUGH_MEMORY},
        {LONG_MAX, 1, 1, 32, ERROR_NOT_ENOUGH_MEMORY},
        {1, LONG_MAX, 1, 1, ERROR_NOT_ENOUGH_MEMORY},
        {0x8000, 0x8001, 1, 32, ERROR_NOT_ENOUGH_MEMORY}, // 4 GB and a little: 0x20000 in 32 bits
    };
    const HBITMAP usual = CreateBitmap(4, 4, 1, 32, nullptr);
    BYTE bits[64] = {};
    for (const Hostile &each : hostile) {
        EXPECT_EQ(Error_Of(CreateBitmap(each.width, each.height, each.planes, each.bits, bits)), each.error);
        BITMAPINFO form = Form(each.width, each.height, each.bits);
        form.bmiHeader.biPlanes = each.planes;
        void *section_bits = bits;
        if (each.height < 0 && each.height != LONG_MIN) continue;
        EXPECT_FALSE(CreateDIBSection(screen, &form, DIB_RGB_COLORS, &section_bits, nullptr, 0));
        EXPECT_EQ(section_bits, nullptr);
        EXPECT_EQ(SetDIBits(screen, usual, 0, 4, bits, &form, DIB_RGB_COLORS), 0);
        EXPECT_EQ(GetDIBits(screen, usual, 0, 4, bits, &form, DIB_RGB_COLORS), 0);
    }
    for (const DWORD size : {0u, 12u, 39u, 125u, 0xFFFFFFFFu}) {
        const BITMAPINFO form = Form(4, 4, 32, size);
        EXPECT_EQ(Error_Of(SetDIBits(screen, usual, 0, 4, bits, &form, DIB_RGB_COLORS)),
                  ERROR_INVALID_PARAMETER);
    }
    const BITMAPINFO form = Form(4, 4, 32);
    const void *const wild = reinterpret_cast<const void *>(16);
    EXPECT_EQ(Error_Of(SetDIBits(screen, usual, 0, 4, wild, &form, DIB_RGB_COLORS)), ERROR_NOACCESS);
    EXPECT_EQ(Error_Of(CreateBitmap(4, 4, 1, 32, wild)), ERROR_NOACCESS);
    EXPECT_TRUE(DeleteObject(usual));
    BITMAP told;
    const HBITMAP nothing = CreateBitmap(0, 7, 1, 32, wild);
    ASSERT_TRUE(GetObjectA(nothing, sizeof told, &told));
    EXPECT_EQ(told.bmWidth * told.bmHeight * told.bmBitsPixel, 1);
    DeleteObject(nothing);
}

TEST_F(Bitmaps, And_Palettes_Are_As_The_Screen_Is) {
    PALETTEENTRY entries[256] = {};
    for (const WORD depth : Depths) {
        Show_In(depth);
        const HDC memory = CreateCompatibleDC(screen);
        EXPECT_EQ(GetDeviceCaps(screen, BITSPIXEL) * GetDeviceCaps(memory, PLANES), depth);
        EXPECT_EQ(GetSystemPaletteEntries(screen, 0, 256, entries), depth == 8 ? 256u : 0u);
        for (const HDC dc : {screen, memory}) {
            BITMAP told = {};
            const HBITMAP bitmap = CreateCompatibleBitmap(dc, 3, 3);
            GetObjectA(bitmap, sizeof told, &told);
            EXPECT_EQ(told.bmBitsPixel, dc == memory ? 1 : depth);
            DeleteObject(bitmap);
        }
        EXPECT_EQ(ReleaseDC(nullptr, memory), 0);
        EXPECT_TRUE(DeleteDC(memory));
        EXPECT_EQ(Error_Of(DeleteDC(screen)), ERROR_INVALID_HANDLE);
    }
    Show_In(7);
    EXPECT_EQ(GetDeviceCaps(screen, BITSPIXEL), 32);
    EXPECT_EQ(entries[255].peRed + entries[255].peGreen + entries[255].peBlue, 3 * 255);
    EXPECT_EQ(entries[246].peRed, 255);
    EXPECT_EQ(entries[246].peGreen, 251);
    EXPECT_EQ(entries[10].peRed, 0);

    struct {
        LOGPALETTE palette;
        PALETTEENTRY more[2];
    } wanted = {{0x300, 3, {{1, 2, 3, 4}}}, {{5, 6, 7, 8}, {9, 10, 11, 12}}};
    const HPALETTE palette = CreatePalette(&wanted.palette);
    WORD count = 0;
    EXPECT_EQ(GetObjectA(palette, sizeof count, &count), 2);
    EXPECT_EQ(count, 3);
    EXPECT_EQ(GetPaletteEntries(palette, 2, 9, entries), 1u);
    EXPECT_EQ(entries[0].peFlags, 12);
    EXPECT_EQ(GetGuiResources(GetCurrentProcess(), GR_GDIOBJECTS), Gdi_Object_Count());
    DeleteObject(palette);
    wanted.palette.palNumEntries = 0;
    EXPECT_EQ(Error_Of(CreatePalette(&wanted.palette)), ERROR_INVALID_PARAMETER);
}

} // namespace
