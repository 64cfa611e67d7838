// Icons, and the files that they come from.

#include <platform/icons.h>
#include <platform/kernel.h>
#include <platform/user.h>
#include <reference_suite/installer/icon_file.h>
#include <tests/support/control_verbs.h>
#include <tests/support/handles.h>

#include <cstring>

namespace {

// Red, transparent at the left edge, blue from the middle down; the corner tells the side.
RGBQUAD Two_Colours(int side, int x, int y) {
    if (x == 0) return {};
    if (x == side - 1 && y == 0 && side == 16) return {0, 255, 0, 255};
    return y < side / 2 ? RGBQUAD{0, 0, 255, 255} : RGBQUAD{255, 0, 0, 255};
}

class Icons : public WindowTest {
  protected:
    UINT Extract(const std::string &file, HICON *large, HICON *small, int index = 0, UINT count = 1) const {
        machine.Write("drive_c/some.ico", file);
        return ExtractIconExA("c:\\some.ico", index, large, small, count);
    }
    /// "side bits: colours of three pixels of the mask, of three of the picture": left, right above, below.
    static std::string Look_Of(HICON icon) {
        ICONINFO info;
        if (!GetIconInfo(icon, &info)) return "none";
        BITMAP told = {};
        GetObjectA(info.hbmColor, sizeof told, &told);
        std::string look = std::to_string(told.bmWidth) + " " + std::to_string(told.bmBitsPixel) + ":";
        const HDC dc = CreateCompatibleDC(nullptr);
        for (const HBITMAP bitmap : {info.hbmMask, info.hbmColor}) {
            const LONG side = told.bmWidth;
            std::vector<DWORD> pixels(static_cast<std::size_t>(side * side));
            BITMAPINFO form = {};
            form.bmiHeader = {40, side, -side, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
            GetDIBits(dc, bitmap, 0, static_cast<UINT>(side), pixels.data(), &form, DIB_RGB_COLORS);
            for (const LONG at : {0L, side - 1, side * side - 1}) {
                char text[16];
                std::snprintf(text, sizeof text, " %06lx", pixels[static_cast<std::size_t>(at)] & 0xFFFFFF);
                look += text;
            }
            EXPECT_TRUE(DeleteObject(bitmap)) << "a copy, and the caller's";
        }
        DeleteDC(dc);
        return look;
    }
};

TEST_F(Icons, Keep_Copies_Of_What_They_Are_Made_Of) {
    const BYTE rows[] = {0x80, 0, 0x40, 0, 0x20, 0, 0x10, 0};
    const HBITMAP mask = CreateBitmap(8, 4, 1, 1, rows), colours = CreateBitmap(8, 4, 1, 16, nullptr);
    ICONINFO info = {FALSE, 5, 3, mask, colours};
    const HICON cursor = CreateIconIndirect(&info);
    info.fIcon = 7;
    const HICON icon = CreateIconIndirect(&info);
    info.hbmColor = nullptr;
    const HICON plain = CreateIconIndirect(&info);
    info.hbmColor = reinterpret_cast<HBITMAP>(icon);
    EXPECT_EQ(Error_Of(CreateIconIndirect(&info)), ERROR_INVALID_HANDLE);
    EXPECT_EQ(Error_Of(DeleteObject(icon)), ERROR_INVALID_HANDLE);
    EXPECT_EQ(GetGuiResources(GetCurrentProcess(), GR_USEROBJECTS), 3u);
    DeleteObject(mask);
    DeleteObject(colours);
    struct Expected {
        HICON icon;
        BOOL is_icon;
        DWORD x, y;
        bool coloured;
    };
    for (const Expected &each :
         {Expected{cursor, FALSE, 5, 3, true}, {icon, TRUE, 4, 2, true}, {plain, TRUE, 4, 1, false}}) {
        ASSERT_TRUE(GetIconInfo(each.icon, &info));
        EXPECT_EQ(info.fIcon, each.is_icon);
        EXPECT_EQ(info.xHotspot, each.x);
        EXPECT_EQ(info.yHotspot, each.y);
        BYTE kept[8];
        EXPECT_EQ(GetBitmapBits(info.hbmMask, 8, kept), 8);
        EXPECT_EQ(std::memcmp(kept, rows, 8), 0);
        EXPECT_EQ(info.hbmColor != nullptr, each.coloured);
        DeleteObject(info.hbmMask);
        if (info.hbmColor) DeleteObject(info.hbmColor);
        EXPECT_TRUE(DestroyIcon(each.icon));
        EXPECT_EQ(Error_Of(DestroyIcon(each.icon)), ERROR_INVALID_CURSOR_HANDLE);
        EXPECT_EQ(Error_Of(GetIconInfo(each.icon, &info)), ERROR_INVALID_CURSOR_HANDLE);
    }
}

TEST_F(Icons, Come_From_The_Best_Picture_Of_Their_File) {
    const std::string seen = " ffffff 000000 000000 000000 ff0000 0000ff",
                      green = " ffffff 000000 000000 000000 00ff00 0000ff";
    for (const WORD bits : {4, 8, 16, 24, 32}) {
        HICON large, small;
        EXPECT_EQ(Extract(Icon_File({{16, bits}, {32, bits}}, Two_Colours), &large, &small), 1u) << bits;
        EXPECT_EQ(Look_Of(large), "32 32:" + seen) << bits;
        EXPECT_EQ(Look_Of(small), "16 32:" + green) << bits;
        for (const HICON icon : {large, small}) DestroyIcon(icon);
    }
    const std::string file = Icon_File({{48, 8}, {16, 32}, {16, 4}, {64, 1}}, Two_Colours);
    Override_Machine_Setting("screen_depth", "4");
    HICON icons[2] = {reinterpret_cast<HICON>(4), reinterpret_cast<HICON>(4)};
    EXPECT_EQ(Extract(file, icons, nullptr, 0, 2), 1u);
    EXPECT_EQ(icons[1], nullptr);
    EXPECT_EQ(Look_Of(icons[0]), "32 4:" + seen) << "shrunk from 48";
    DestroyIcon(icons[0]);
    EXPECT_EQ(Extract(file, nullptr, icons), 1u);
    EXPECT_EQ(Look_Of(icons[0]), "16 4:" + green);
    DestroyIcon(icons[0]);
    Override_Machine_Setting("screen_depth", nullptr);

    EXPECT_EQ(Extract(file, nullptr, nullptr, -1, 0), 1u);
    EXPECT_EQ(Extract(file, icons, nullptr, 1), 0u);
    EXPECT_EQ(icons[0], nullptr);
    EXPECT_EQ(Extract("no icon", nullptr, nullptr, -1, 0), 0u);
    EXPECT_EQ(ExtractIconExA("c:\\none.ico", 0, icons, nullptr, 1), 0xFFFFFFFFu);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
    EXPECT_EQ(ExtractIconExA("c:\\", 0, icons, nullptr, 1), 0xFFFFFFFFu);
    EXPECT_EQ(ExtractIconExA("z:\\dev\\zero", 0, icons, nullptr, 1), 0u) << "without an end";
}

TEST_F(Icons, Files_Cut_And_Flipped_Never_Harm) {
    const std::string whole = Icon_File({{16, 1}, {16, 8}, {16, 32}}, Two_Colours);
    const auto extract = [&](const std::string &file) {
        HICON large, small;
        Extract(file, &large, &small);
        for (const HICON icon : {large, small}) {
            if (!icon) continue;
            EXPECT_NE(Look_Of(icon), "none");
            DestroyIcon(icon);
        }
    };
    for (std::size_t length = 0; length < whole.size(); length += length < 200 ? 1 : 37)
        extract(whole.substr(0, length));
    for (std::size_t at = 0; at < 6 + 3 * 16 + 40; ++at) { // directory and a first header
        for (const char byte : {'\0', '\1', '\x7F', '\x80', '\xFF'}) {
            std::string flipped = whole;
            flipped[at] = byte;
            extract(flipped);
        }
    }
}

TEST_F(Icons, Stand_In_Pictures_Of_Windows) {
    TestDialog dialog({0, 0, 100, 100});
    const HWND place = dialog.Add("Static", "", {10, 10, 20, 20}, SS_ICON);
    HICON large, small;
    ASSERT_EQ(Extract(Icon_File({{32, 32}}, Two_Colours), &large, &small), 1u);
    const auto as_number = [](HICON icon) { return reinterpret_cast<LPARAM>(icon); };
    EXPECT_EQ(SendMessageA(place, STM_SETICON, reinterpret_cast<WPARAM>(small), 0), 0);
    EXPECT_EQ(SendMessageA(place, STM_SETIMAGE, IMAGE_ICON, as_number(large)), as_number(small));
    EXPECT_EQ(SendMessageA(place, STM_GETICON, 0, 0), as_number(large));
    EXPECT_EQ(Client_Of(place), "0 0 32 32");
    ASSERT_TRUE(Snapshot_Window(dialog, machine.Path("icon.svg").c_str()));
    const std::string picture = machine.Read("icon.svg");
    EXPECT_NE(picture.find("<rect x=\"1\" y=\"0\" width=\"31\" height=\"1\" fill=\"#ff0000\"/>"),
              std::string::npos);
    DestroyIcon(large);
    DestroyIcon(small);
    EXPECT_TRUE(Snapshot_Window(dialog, machine.Path("icon.svg").c_str())) << "its icon is gone";
}

} // namespace
