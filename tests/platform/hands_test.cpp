// A user's hands: what they reach, where the focus goes, and what the keys of a dialog do.

#include <tests/support/control_verbs.h>

namespace {

std::string Pointer_Tale(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    if (message == WM_SETCURSOR)
        return "cursor" + std::to_string(reinterpret_cast<HWND>(wparam) == window) + "/" +
               std::to_string(lparam & 0xFFFF) + (lparam >> 16 == WM_MOUSEMOVE ? " " : "c ");
    if (message == WM_MOUSEMOVE)
        return "move" + std::to_string(lparam & 0xFFFF) + "," + std::to_string(lparam >> 16) + " ";
    return "";
}

struct Told {
    std::string tale;
    TestProcedure Procedure() {
        return [this](HWND window, UINT message, WPARAM wparam, LPARAM lparam) -> std::optional<LRESULT> {
            tale += Pointer_Tale(window, message, wparam, lparam);
            return std::nullopt;
        };
    }
    std::string Take() { return std::exchange(tale, {}); }
};

TEST_F(WindowTest, The_Pointer_Reaches_What_Lies_Uppermost) {
    Told of_main, of_child;
    TestWindow main(WS_POPUP | WS_BORDER | WS_VISIBLE, {100, 100, 201, 201}, nullptr, 0, of_main.Procedure());
    TestWindow child(WS_CHILD | WS_VISIBLE, {10, 10, 50, 50}, main, 1, of_child.Procedure());
    const HWND group = CreateWindowExA(0, "Button", "", WS_CHILD | WS_VISIBLE | BS_GROUPBOX, 0, 0, 99, 99,
                                       main, nullptr, nullptr, nullptr);
    SetWindowPos(group, HWND_TOP, 0, 0, 0, 0, SWP_NOSIZE | SWP_NOMOVE);
    EXPECT_TRUE(Point_At(115, 116));
    EXPECT_EQ(of_child.Take(), "cursor1/1 move4,5 ");
    EXPECT_EQ(of_main.Take(), "cursor0/1 ") << "the child's default asks its parent";
    EXPECT_TRUE(Point_At(100, 150));
    EXPECT_EQ(of_main.Take(), "cursor1/18 ");
    EXPECT_TRUE(Click_Window(child));
    EXPECT_EQ(of_child.Take(), "cursor1/1 move20,20 cursor1/1c cursor1/1c ")
        << "and once for each of the button's";
    of_main.Take();
    EnableWindow(child, FALSE);
    EXPECT_TRUE(Point_At(115, 116));
    EXPECT_EQ(of_child.Take(), "");
    EXPECT_EQ(of_main.Take(), "cursor1/1 move14,15 ");
    EXPECT_FALSE(Click_Window(child));
    EnableWindow(main, FALSE);
    EXPECT_FALSE(Point_At(115, 116));
    EXPECT_FALSE(Click_At(115, 116));
    EXPECT_FALSE(Point_At(500, 500));
    EXPECT_EQ(of_main.Take(), "");
}

TEST_F(WindowTest, Tab_And_Arrows_Move_Through_A_Dialog) {
    TestWindow behind(WS_POPUP | WS_VISIBLE, {0, 0, 9, 9});
    TestDialog dialog;
    const HWND name = dialog.Add("Edit", "name", {0, 0, 90, 20}, WS_TABSTOP, 3);
    dialog.Add("Static", "label", {100, 0, 190, 20}, 0, 9);
    dialog.Add("Edit", "", {0, 20, 90, 40}, WS_TABSTOP | WS_DISABLED, 4);
    dialog.Add("ComboBox", "", {0, 40, 90, 140}, WS_TABSTOP | CBS_DROPDOWN, 5);
    const HWND one =
        dialog.Add("Button", "one", {0, 80, 90, 95}, BS_AUTORADIOBUTTON | WS_GROUP | WS_TABSTOP, 6);
    const HWND two = dialog.Add("Button", "two", {0, 100, 90, 115}, BS_AUTORADIOBUTTON, 7);
    const HWND ok =
        dialog.Add("Button", "OK", {0, 120, 90, 140}, BS_DEFPUSHBUTTON | WS_GROUP | WS_TABSTOP, IDOK);
    const HWND help = dialog.Add("Button", "Help", {0, 140, 90, 160}, WS_TABSTOP, 8);
    SendMessageA(one, BM_SETCHECK, 1, 0);
    EXPECT_TRUE(Click_Window(name));
    std::string order;
    for (int i = 0; i < 5; ++i) {
        Press_Key(VK_TAB);
        order += std::to_string(GetDlgCtrlID(GetFocus())) + " ";
    }
    EXPECT_EQ(order, "1001 6 1 8 3 ");
    EXPECT_EQ(SendMessageA(name, EM_GETSEL, 0, 0), 4 << 16);
    Hold_Key(VK_SHIFT);
    Press_Key(VK_TAB);
    Release_Key(VK_SHIFT);
    EXPECT_EQ(GetFocus(), help);
    SetFocus(GetDlgItem(dialog, 9));
    Press_Key(VK_TAB);
    EXPECT_EQ(GetDlgCtrlID(GetFocus()), 1001) << "from where there is no stop on to the next";
    SetFocus(dialog);
    Press_Key(VK_DOWN);
    EXPECT_EQ(GetFocus(), dialog);
    SetFocus(one);
    Press_Key(VK_UP);
    EXPECT_EQ(GetFocus(), two);
    EXPECT_EQ(SendMessageA(two, BM_GETCHECK, 0, 0), 1);
    dialog.Told();
    Click_Window(name);
    Press_Key(VK_RETURN);
    EXPECT_EQ(GetFocus(), name);
    EXPECT_EQ(dialog.Told(), "3:EN_SETFOCUS 1:BN_CLICKED");
    SetFocus(help);
    dialog.Told();
    Press_Key(VK_RETURN);
    EnableWindow(ok, FALSE);
    Click_Window(name);
    Press_Key(VK_RETURN);
    Press_Key(VK_ESCAPE);
    EXPECT_EQ(dialog.Told(), "8:BN_CLICKED 3:EN_SETFOCUS 2:0");
}

TEST_F(WindowTest, Hands_Work_Through_The_Queue_And_Leave_The_End_Of_The_Program_In_It) {
    std::string heard;
    TestWindow window(WS_POPUP | WS_VISIBLE, {0, 0, 50, 50}, nullptr, 0,
                      [&heard](HWND, UINT message, WPARAM wparam, LPARAM) -> std::optional<LRESULT> {
                          if (message >= WM_KEYDOWN && message <= WM_CHAR)
                              heard += std::to_string(message) + ":" + std::to_string(wparam) + " ";
                          if (message == WM_LBUTTONDOWN) heard += Type_Text("refused") ? "typed " : "busy ";
                          return std::nullopt;
                      });
    SetFocus(window);
    Type_Text("a%");
    EXPECT_EQ(heard, "256:65 258:97 257:65 256:231 258:37 257:231 ");
    EXPECT_FALSE(Type_Text(nullptr));
    heard.clear();
    PostQuitMessage(3);
    EXPECT_TRUE(Click_Window(window));
    EXPECT_EQ(heard, "busy ");
    MSG message;
    EXPECT_FALSE(GetMessageA(&message, nullptr, 0, 0));
    EXPECT_EQ(message.wParam, 3u);
    SetFocus(nullptr);
    EXPECT_FALSE(Type_Text("nobody"));
}

} // namespace
