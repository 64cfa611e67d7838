// Icons from files, and the screen's palette.

#include <kelmara/dialogs/icons.h>

#include <platform/user.h>
#include <reference_suite/installer/icon_file.h>
#include <tests/support/registry_verbs.h>
#include <tests/support/test_memory.h>
#include <tests/support/window_verbs.h>

#include <filesystem>

namespace {

RGBQUAD Plain(int, int, int) {
    return {1, 2, 3, 4};
}

TEST_F(WindowTest, Icons_Come_From_Files_In_Two_Places) {
    const std::string here = Icon_File({{16, 32}}, Plain), there = Icon_File({{32, 24}}, Plain);
    machine.Write("drive_c/here.ico", here);
    machine.Write("drive_c/content/here.ico", "hidden by the first");
    machine.Write("drive_c/content/there.ico", there);
    machine.Write("drive_c/content/broken.ico", "no icon");
    TestKey("Software\\Dunmerit Software\\KelMara", HKEY_LOCAL_MACHINE).Set("Content", "c:\\content\\");
    const auto before = std::filesystem::current_path();
    std::filesystem::current_path(machine.Path("drive_c"));
    struct Row {
        const char *file;
        int pixels;
        LONG width; // 0: none
    };
    const std::string too_long = std::string(245, 'x') + ".ico";
    for (const Row &row : {Row{"here.ico", 16, 16},
                           {"here.ico", 32, 32},
                           {"there.ico", 32, 32},
                           {"there.ico", 16, 16},
                           {"there.ico", 24, 0},
                           {"broken.ico", 32, 0},
                           {"neither.ico", 32, 0},
                           {too_long.c_str(), 32, 0},
                           {nullptr, 32, 0}}) {
        const HICON icon = Load_Icon_From_File(nullptr, row.file, row.pixels);
        ICONINFO info = {};
        BITMAP told = {};
        if (GetIconInfo(icon, &info)) GetObjectA(info.hbmMask, sizeof told, &told);
        EXPECT_EQ(told.bmWidth, row.width) << (row.file ? row.file : "null");
        if (info.hbmMask) DeleteObject(info.hbmMask), DeleteObject(info.hbmColor), DestroyIcon(icon);
    }
    std::filesystem::current_path(before);
}

TEST_F(WindowTest, A_Full_Palette_Is_The_Screens) {
    for (const int depth : {8, 32}) {
        machine.Set("screen_depth", std::to_string(depth));
        const HPALETTE palette = GetFullSystemPalette();
        EXPECT_EQ(Last_Request(), 1032);
        PALETTEENTRY last = {};
        EXPECT_EQ(GetPaletteEntries(palette, 0, 0, nullptr), 256u);
        EXPECT_EQ(GetPaletteEntries(palette, 255, 1, &last), 1u);
        EXPECT_EQ(last.peGreen, depth == 8 ? 255 : 0);
        DeleteObject(palette);
    }
    const FailingMemory failing(1);
    EXPECT_EQ(GetFullSystemPalette(), reinterpret_cast<HPALETTE>(-1));
}

} // namespace
