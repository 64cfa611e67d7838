// Menus: how they are built, changed and destroyed, and the bar of a window.

#include <platform/kernel.h>
#include <tests/support/handles.h>
#include <tests/support/window_verbs.h>

namespace {

UINT As_Id(HMENU menu) {
    return static_cast<UINT>(reinterpret_cast<std::uintptr_t>(menu));
}

std::string Text_Of(HMENU menu, UINT item, UINT flags) {
    char text[50];
    return GetMenuStringA(menu, item, text, sizeof text, flags) ? text : "";
}

// A bar with "File" (Open, -, Exit) and "Help".
struct Bar {
    HMENU bar = CreateMenu(), file = CreatePopupMenu();
    Bar() {
        AppendMenuA(file, MF_STRING, 11, "&Open\tCtrl+O");
        AppendMenuA(file, MF_SEPARATOR, 0, nullptr);
        AppendMenuA(file, MF_STRING | MF_GRAYED, 12, "E&xit");
        AppendMenuA(bar, MF_POPUP, As_Id(file), "&File");
        AppendMenuA(bar, MF_STRING, 13, "&Help");
    }
};

TEST_F(WindowTest, Menus_Are_Read_And_Changed_By_Place_And_By_Identifier) {
    const Bar menu;
    EXPECT_EQ(GetMenuItemCount(menu.bar), 2);
    EXPECT_EQ(GetSubMenu(menu.bar, 0), menu.file);
    EXPECT_EQ(GetSubMenu(menu.bar, 1), nullptr);
    EXPECT_EQ(GetMenuItemID(menu.bar, 0), 0xFFFFFFFFu);
    EXPECT_EQ(GetMenuItemID(menu.bar, 1), 13u);
    EXPECT_EQ(Text_Of(menu.bar, 0, MF_BYPOSITION), "&File");
    EXPECT_EQ(Text_Of(menu.bar, 12, MF_BYCOMMAND), "E&xit");
    EXPECT_EQ(GetMenuStringA(menu.bar, 1, nullptr, 0, MF_BYPOSITION), 5);
    EXPECT_TRUE(ModifyMenuA(menu.bar, 0, MF_BYPOSITION, GetMenuItemID(menu.bar, 0), "&Datei"));
    EXPECT_EQ(Text_Of(menu.bar, 0, MF_BYPOSITION), "&Datei");
    EXPECT_EQ(GetSubMenu(menu.bar, 0), menu.file) << "a new text alone keeps the submenu";
    EXPECT_TRUE(InsertMenuA(menu.bar, 12, MF_BYCOMMAND, 14, "Before"));
    EXPECT_EQ(GetMenuItemID(menu.file, 2), 14u);
    EXPECT_TRUE(ModifyMenuA(menu.bar, 0, MF_BYPOSITION, 15, "plain"));
    EXPECT_EQ(GetMenuItemCount(menu.file), -1) << "the submenu went";
    EXPECT_TRUE(DestroyMenu(menu.bar));
    const Bar without_file;
    DestroyMenu(without_file.file);
    EXPECT_TRUE(ModifyMenuA(without_file.bar, 0, MF_BYPOSITION, 0xFFFFFFFF, "&Datei"));
    EXPECT_TRUE(DestroyMenu(without_file.bar));
}

TEST_F(WindowTest, What_Is_No_Menu_Is_Refused) {
    const Bar menu;
    const HMENU none = reinterpret_cast<HMENU>(8);
    EXPECT_EQ(Error_Of(AppendMenuA(none, 0, 1, "x")), ERROR_INVALID_MENU_HANDLE);
    EXPECT_EQ(Error_Of(AppendMenuA(menu.bar, MF_POPUP, 8, "x")), ERROR_INVALID_MENU_HANDLE);
    EXPECT_EQ(Error_Of(AppendMenuA(menu.file, MF_POPUP, As_Id(menu.bar), "x")), ERROR_INVALID_PARAMETER)
        << "a menu in itself";
    EXPECT_EQ(Error_Of(AppendMenuA(menu.bar, MF_POPUP, As_Id(menu.file), "x")), ERROR_INVALID_PARAMETER)
        << "in two places";
    EXPECT_EQ(Error_Of(InsertMenuA(menu.bar, 99, MF_BYCOMMAND, 1, "x")), ERROR_MENU_ITEM_NOT_FOUND);
    EXPECT_EQ(Error_Of(ModifyMenuA(menu.bar, 9, MF_BYPOSITION, 1, "x")), ERROR_MENU_ITEM_NOT_FOUND);
    EXPECT_EQ(GetMenuItemCount(nullptr), -1);
    EXPECT_EQ(Error_Of(GetSubMenu(none, 0)), ERROR_INVALID_MENU_HANDLE);
    EXPECT_EQ(GetMenuItemCount(menu.bar), 2);
    EXPECT_TRUE(DestroyMenu(menu.bar));
    EXPECT_EQ(Error_Of(DestroyMenu(menu.file)), ERROR_INVALID_MENU_HANDLE) << "it went with the bar";
}

TEST_F(WindowTest, A_Bar_Takes_Its_Height_And_Goes_With_Its_Window) {
    const Bar first, second;
    {
        TestWindow window(WS_OVERLAPPEDWINDOW, {0, 0, 200, 100});
        EXPECT_EQ(GetMenu(window), nullptr);
        EXPECT_EQ(Client_Of(window), "0 0 192 73");
        EXPECT_TRUE(SetMenu(window, first.bar));
        EXPECT_EQ(Client_Of(window), "0 0 192 54");
        EXPECT_TRUE(SetMenu(window, second.bar));
        EXPECT_EQ(GetMenu(window), second.bar);
        EXPECT_EQ(Error_Of(SetMenu(window, reinterpret_cast<HMENU>(8))), ERROR_INVALID_MENU_HANDLE);
        TestWindow child(WS_CHILD, {0, 0, 9, 9}, window);
        EXPECT_EQ(Error_Of(SetMenu(child, first.bar)), ERROR_CHILD_WINDOW_MENU);
    }
    EXPECT_EQ(GetMenuItemCount(second.bar), -1);
    EXPECT_EQ(GetMenuItemCount(first.bar), 2);
    DestroyMenu(first.bar);
}

} // namespace
