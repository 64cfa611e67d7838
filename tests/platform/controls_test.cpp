// What controls hold and tell, moved by messages and by a user's hands.

#include <tests/support/control_verbs.h>

#include <cstring>

namespace {

LRESULT Send(HWND window, UINT message, long wparam = 0, const void *lparam = nullptr) {
    return SendMessageA(window, message, static_cast<WPARAM>(wparam), reinterpret_cast<LPARAM>(lparam));
}

LRESULT Send(HWND window, UINT message, long wparam, long lparam) {
    return SendMessageA(window, message, static_cast<WPARAM>(wparam), lparam);
}

struct Kind {
    const char *control_class;
    DWORD style;
};

constexpr Kind Kinds[] = {
    {"Static", SS_NOTIFY},        {"Button", BS_PUSHBUTTON},      {"Button", BS_AUTOCHECKBOX},
    {"Button", BS_AUTO3STATE},    {"Button", BS_AUTORADIOBUTTON}, {"Edit", 0},
    {"Edit", ES_MULTILINE},       {"ListBox", LBS_NOTIFY},        {"ComboBox", CBS_SIMPLE},
    {"ComboBox", CBS_DROPDOWN},   {"ComboBox", CBS_DROPDOWNLIST}, {"ComboBoxEx32", CBS_DROPDOWN},
    {"ComboBoxEx32", CBS_SIMPLE},
};

const RECT Somewhere = {10, 10, 110, 90};

TEST_F(WindowTest, Every_Control_Keeps_Its_Font_And_Lets_Itself_Be_Used_Only_While_It_Can) {
    for (const Kind &kind : Kinds) {
        SCOPED_TRACE(std::string(kind.control_class) + " " + std::to_string(kind.style));
        TestDialog dialog;
        const HWND control = dialog.Add(kind.control_class, "&Text", Somewhere, kind.style, 5);
        ASSERT_NE(control, nullptr);
        EXPECT_EQ(Send(control, WM_GETFONT), reinterpret_cast<LRESULT>(GetStockObject(DEFAULT_GUI_FONT)));
        EXPECT_EQ(dialog.Told(), "") << "by being made";
        MoveWindow(control, 10, 10, 110, 60, TRUE);
        const std::string place = Place_Of(control);
        RECT invalid;
        Invalid_Rectangle(control, &invalid, true);
        Send(control, WM_SETREDRAW, FALSE);
        Send(control, WM_SETFONT, Send(control, WM_GETFONT));
        Send(control, WM_SETREDRAW, TRUE);
        EXPECT_TRUE(Invalid_Rectangle(control, &invalid, true)) << "what changed meanwhile";
        EXPECT_EQ(Place_Of(control), place);
        for (const UINT without_place : {WM_WINDOWPOSCHANGING, WM_WINDOWPOSCHANGED})
            Send(control, without_place);
        for (const bool hidden : {false, true}) {
            EnableWindow(control, hidden);
            ShowWindow(control, hidden ? SW_HIDE : SW_SHOW);
            dialog.Told();
            EXPECT_FALSE(Click_Window(control));
            Click_At(60, 60);
            EXPECT_EQ(dialog.Told(), "");
        }
        ShowWindow(control, SW_SHOW);
        EXPECT_TRUE(Click_Window(control));
        EXPECT_NE(dialog.Told(), "");
    }
}

TEST_F(WindowTest, A_Control_May_Go_In_Any_Of_Its_Notices) {
    for (const Kind &kind : Kinds) {
        for (int nth = 1; nth < 12; ++nth) {
            SCOPED_TRACE(std::string(kind.control_class) + std::to_string(kind.style) + " " +
                         std::to_string(nth));
            TestDialog dialog;
            const HWND control = dialog.Add(kind.control_class, "", Somewhere, kind.style | WS_TABSTOP, 5);
            Send(control, kind.control_class[0] == 'L' ? LB_ADDSTRING : CB_ADDSTRING, 0, "x");
            const HWND whole = nth % 2 ? control : HWND(dialog);
            int seen = 0;
            dialog.on_notice = [&](int, UINT) {
                if (++seen == (nth + 1) / 2) DestroyWindow(whole);
            };
            SetWindowTextA(control, "other");
            Click_Window(control);
            Type_Text("x");
            Choose_Line(control, 0);
            Press_Key(VK_F4);
            Press_Key(VK_TAB);
            if (IsWindow(control)) Send(control, BM_CLICK);
        }
    }
}

TEST_F(WindowTest, Check_Boxes_And_Radio_Buttons_Check_Themselves_By_A_Message) {
    TestDialog dialog;
    const RECT rows[] = {{0, 0, 90, 15}, {0, 20, 90, 35}, {0, 40, 90, 55}, {0, 60, 90, 75}, {0, 80, 90, 95}};
    const HWND plain = dialog.Add("Button", "plain", rows[0], BS_CHECKBOX, 1);
    const HWND check = dialog.Add("Button", "check", rows[1], BS_AUTOCHECKBOX, 2);
    const HWND three = dialog.Add("Button", "three", rows[2], BS_AUTO3STATE, 3);
    const HWND first = dialog.Add("Button", "first", rows[3], BS_AUTORADIOBUTTON | WS_GROUP, 4);
    const HWND second = dialog.Add("Button", "second", rows[4], BS_AUTORADIOBUTTON, 5);
    dialog.Add("Button", "next group", {0, 100, 90, 115}, BS_AUTORADIOBUTTON | WS_GROUP, 6);
    const auto state = [](HWND button) { return Send(button, BM_GETCHECK); };
    std::string states;
    for (const HWND button : {plain, check, check, three, three, three, second, second, first}) {
        EXPECT_TRUE(Click_Window(button));
        states += std::to_string(state(button));
    }
    EXPECT_EQ(states, "010120111");
    EXPECT_EQ(state(second), 0);
    EXPECT_EQ(dialog.Told(), "1:BN_CLICKED 2:BN_CLICKED 2:BN_CLICKED 3:BN_CLICKED 3:BN_CLICKED 3:BN_CLICKED "
                             "5:BN_CLICKED 5:BN_CLICKED 4:BN_CLICKED");
    EXPECT_TRUE(Press_Key(VK_DOWN));
    EXPECT_EQ(GetFocus(), second);
    EXPECT_EQ(state(second), 1);
    EXPECT_EQ(state(first), 0);
    Send(check, BM_SETCHECK, 2);
    EXPECT_EQ(state(check), 1);
    Send(check, BM_CLICK);
    EXPECT_EQ(state(check), 0);
    Press_Key(VK_SPACE);
    EXPECT_EQ(state(check), 1);
    EXPECT_EQ(Send(check, BM_GETSTATE), BST_CHECKED | BST_FOCUS);
    dialog.on_notice = [](int, UINT) { throw 5; };
    EXPECT_THROW(Send(check, BM_CLICK), int);
    dialog.on_notice = {};
    dialog.Told();
    Send(check, BM_CLICK);
    EXPECT_EQ(dialog.Told(), "2:BN_CLICKED") << "after a click whose notice threw";
}

std::string heard_by_subclass;
WNDPROC below_subclass;

LRESULT Listening(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    if (message == WM_DESTROY) return 0; // nothing may stay for that
    if (message == BM_SETCHECK) heard_by_subclass += "check" + std::to_string(wparam) + " ";
    if (message == WM_COMMAND) heard_by_subclass += std::to_string(wparam >> 16) + " ";
    return CallWindowProcA(below_subclass, window, message, wparam, lparam);
}

void Listen_To(HWND window) {
    heard_by_subclass.clear();
    below_subclass =
        reinterpret_cast<WNDPROC>(SetWindowLongA(window, GWL_WNDPROC, reinterpret_cast<LONG>(Listening)));
}

TEST_F(WindowTest, A_Subclass_Sees_What_The_User_Does) {
    TestDialog dialog;
    const HWND check = dialog.Add("Button", "check", {0, 0, 90, 15}, BS_AUTOCHECKBOX, 1);
    Listen_To(check);
    Click_Window(check);
    Click_Window(check);
    EXPECT_EQ(heard_by_subclass, "check1 check0 ");
    const HWND combo = dialog.Add("ComboBox", "", {0, 20, 90, 120}, CBS_DROPDOWN, 2);
    Send(combo, CB_ADDSTRING, 0, "one");
    Listen_To(combo);
    EXPECT_TRUE(Click_At(20, 60));
    Type_Text("x");
    EXPECT_EQ(heard_by_subclass, "256 1024 768 ");
    heard_by_subclass.clear();
    EXPECT_TRUE(Choose_Line(combo, 0));
    EXPECT_EQ(heard_by_subclass, "1 1024 768 ");
}

TEST_F(WindowTest, An_Edit_Takes_What_Is_Typed_Within_Its_Limit_And_Its_Style) {
    struct Typing {
        DWORD style;
        const char *before;
        long limit;
        const char *typed;
        const char *after;
        std::string told;
    };
    const std::string one = "5:EN_UPDATE 5:EN_CHANGE", two = one + " " + one;
    const Typing typings[] = {
        {0, "", 0, "aB", "aB", two},
        {0, "", 1, "ab", "a", "5:EN_UPDATE 5:EN_CHANGE 5:EN_MAXTEXT"},
        {0, "", 0, "a\bb", "b", two + " " + one},
        {0, "kept", 0, "\r", "kept", "1:0"}, // the dialog's IDOK
        {ES_NUMBER, "", 0, "1x(2", "12", two},
        {ES_UPPERCASE, "low", 0, "\xE4", "LOW\xC4", one},
        {ES_LOWERCASE, "LOW", 0, "\xC4\x9F", "low\xE4\xFF", two},
        {ES_READONLY, "kept", 0, "x\b", "kept", ""},
        {ES_MULTILINE | ES_WANTRETURN, "a", 0, "\nb", "a\r\nb", two},
        {ES_MULTILINE | ES_WANTRETURN, "a", 2, "\nb", "ab", "5:EN_MAXTEXT 5:EN_UPDATE 5:EN_CHANGE"},
    };
    for (const Typing &typing : typings) {
        SCOPED_TRACE(typing.typed);
        TestDialog dialog;
        const HWND edit = dialog.Add("Edit", typing.before, Somewhere, typing.style | WS_TABSTOP, 5);
        Send(edit, EM_LIMITTEXT, typing.limit);
        Click_Window(edit);
        Send(edit, EM_SETSEL, 1000, 1000L);
        dialog.Told();
        EXPECT_TRUE(Type_Text(typing.typed));
        EXPECT_EQ(Title_Of(edit), typing.after);
        EXPECT_EQ(dialog.Told(), typing.told);
    }
}

TEST_F(WindowTest, An_Edit_Moves_Selects_And_Replaces) {
    TestDialog dialog;
    const HWND edit = dialog.Add("Edit", "abcdef", Somewhere, 0, 5);
    EXPECT_EQ(Send(edit, EM_GETSEL), 0);
    SetFocus(edit);
    for (const UINT key : {VK_END, VK_LEFT, VK_DELETE, VK_HOME, VK_RIGHT, VK_BACK}) Press_Key(key);
    EXPECT_EQ(Title_Of(edit), "bcde");
    Hold_Key(VK_SHIFT);
    Press_Key(VK_RIGHT);
    Press_Key(VK_RIGHT);
    Release_Key(VK_SHIFT);
    DWORD start = 9, end = 9;
    EXPECT_EQ(SendMessageA(edit, EM_GETSEL, reinterpret_cast<WPARAM>(&start), reinterpret_cast<LPARAM>(&end)),
              0x20000);
    EXPECT_EQ(start * 10 + end, 2u);
    Send(edit, EM_LIMITTEXT, 5);
    dialog.Told();
    Send(edit, EM_REPLACESEL, 0, "12345");
    EXPECT_EQ(Title_Of(edit), "123de");
    EXPECT_EQ(dialog.Told(), "5:EN_UPDATE 5:EN_CHANGE 5:EN_MAXTEXT");
    Send(edit, EM_SETSEL, 2, -1L);
    EXPECT_EQ(Send(edit, EM_GETSEL), 2 | 5 << 16);
    Send(edit, EM_SETSEL, -1, 0L);
    EXPECT_EQ(Send(edit, EM_GETSEL), 5 | 5 << 16);
    const HWND lines = dialog.Add("Edit", "one\r\ntwo", Somewhere, ES_MULTILINE, 6);
    SetWindowTextA(lines, "one\r\nthree");
    EXPECT_EQ(dialog.Told(), "");
    EXPECT_EQ(Send(lines, EM_GETLINECOUNT), 2);
    SetFocus(lines);
    for (const UINT key : {VK_DOWN, VK_END, VK_UP}) Press_Key(key);
    EXPECT_EQ(Send(lines, EM_GETSEL), 3 | 3 << 16);
    Press_Key(VK_DELETE);
    EXPECT_EQ(Title_Of(lines), "onethree");
}

TEST_F(WindowTest, A_Click_In_An_Edit_Goes_By_What_Is_Shown) {
    TestDialog dialog;
    struct {
        DWORD style;
        const char *text;
        LONG x, row;
        LRESULT place;
    } const cases[] = {
        {ES_MULTILINE, "wrapped words\r\nend", 2, 0, 0},
        {ES_MULTILINE, "wrapped words\r\nend", 2, 1, 8},
        {ES_MULTILINE, "wrapped words\r\nend", 50, 2, 18},
        {ES_MULTILINE, "wrapped words\r\nend", 2, 9, 15},
        {ES_MULTILINE, "", 30, 3, 0},
        {ES_PASSWORD, "iiii", 14, 0, 2},
        {ES_RIGHT, "end", 5, 0, 0},
        {ES_RIGHT, "end", 58, 0, 3},
    };
    for (const auto &each : cases) {
        const HWND edit = dialog.Add("Edit", each.text, {0, 0, 60, 90}, each.style);
        constexpr LONG Height_Of_Line = 16;
        Send(edit, WM_LBUTTONDOWN, MK_LBUTTON, each.x | (each.row * Height_Of_Line + 1) << 16);
        EXPECT_EQ(Send(edit, EM_GETSEL) & 0xFFFF, each.place)
            << each.text << " at " << each.x << ", " << each.row;
        DestroyWindow(edit);
    }
}

TEST_F(WindowTest, A_List_Box_Holds_Finds_And_Chooses_Lines) {
    TestDialog dialog;
    const HWND list = dialog.Add("ListBox", "", Somewhere, LBS_NOTIFY | LBS_SORT, 5);
    for (const char *line : {"pear", "Apple", "plum"}) Send(list, LB_ADDSTRING, 0, line);
    EXPECT_EQ(Send(list, LB_INSERTSTRING, 1, "zebra"), 1);
    EXPECT_EQ(Lines_Of(list), "Apple zebra pear plum");
    EXPECT_EQ(Send(list, LB_INSERTSTRING, 5, "beyond"), LB_ERR);
    struct Search {
        UINT message;
        long after;
        const char *text;
        LRESULT found;
    };
    for (const Search &search :
         {Search{LB_FINDSTRING, -1, "P", 2}, Search{LB_FINDSTRING, 2, "P", 3},
          Search{LB_FINDSTRING, 3, "P", 2}, Search{LB_FINDSTRINGEXACT, -1, "p", LB_ERR},
          Search{LB_FINDSTRINGEXACT, 3, "APPLE", 0}})
        EXPECT_EQ(Send(list, search.message, search.after, search.text), search.found) << search.text;
    Send(list, LB_SETITEMDATA, 3, 77L);
    Send(list, LB_SETCURSEL, 3);
    EXPECT_EQ(dialog.Told(), "");
    EXPECT_EQ(Send(list, LB_DELETESTRING, 1), 3);
    EXPECT_EQ(Send(list, LB_GETCURSEL), 2);
    EXPECT_EQ(Send(list, LB_GETITEMDATA, 2), 77);
    EXPECT_TRUE(Choose_Line(list, 1));
    EXPECT_EQ(dialog.Told(), "5:LBN_SETFOCUS 5:LBN_SELCHANGE");
    Press_Key(VK_UP);
    Type_Text("p");
    EXPECT_EQ(Send(list, LB_GETCURSEL), 1);
    EXPECT_EQ(dialog.Told(), "5:LBN_SELCHANGE 5:LBN_SELCHANGE");
    Send(list, LB_RESETCONTENT);
    EXPECT_EQ(Send(list, LB_GETCOUNT), 0);
    EXPECT_EQ(Line_Of(list, 0), "none");
    for (int i = 0; i < 50; ++i) Send(list, LB_INSERTSTRING, -1, "many");
    EXPECT_TRUE(Choose_Line(list, 30));
    EXPECT_TRUE(Choose_Line(list, 2));
    Send(list, LB_SETCURSEL, 49);
    for (int i = 0; i < 47; ++i) Send(list, LB_DELETESTRING, 0);
    EXPECT_EQ(Send(list, LB_GETTOPINDEX), 0) << "there is room for all";
}

TEST_F(WindowTest, Combo_Boxes_Tell_What_Is_Chosen_And_Typed) {
    for (const Kind &box : {Kind{"ComboBox", CBS_SIMPLE}, Kind{"ComboBox", CBS_DROPDOWN},
                            Kind{"ComboBox", CBS_DROPDOWNLIST}, Kind{"ComboBoxEx32", CBS_DROPDOWN}}) {
        SCOPED_TRACE(std::string(box.control_class) + std::to_string(box.style));
        TestDialog dialog;
        const HWND combo = dialog.Add(box.control_class, "", {0, 0, 100, 120}, box.style, 5);
        const HWND other = dialog.Add("Button", "other", {0, 130, 50, 150}, 0, 6);
        for (const char *line : {"one", "two", "three"}) Send(combo, CB_ADDSTRING, 0, line);
        EXPECT_EQ(Lines_Of(combo), "one two three");
        EXPECT_EQ(Place_Of(combo), box.style == CBS_SIMPLE ? "3 22 103 142" : "3 22 103 43");
        EXPECT_EQ(Send(combo, CB_SETCURSEL, 2), 2);
        EXPECT_EQ(Title_Of(combo), "three");
        EXPECT_EQ(Send(combo, CB_SETCURSEL, 3), CB_ERR);
        EXPECT_EQ(Send(combo, CB_GETCURSEL), CB_ERR);
        EXPECT_EQ(Title_Of(combo), "");
        EXPECT_EQ(dialog.Told(), "");
        SetFocus(combo);
        EXPECT_EQ(dialog.Told(), "5:CBN_SETFOCUS");
        EXPECT_TRUE(Choose_Line(combo, 1));
        EXPECT_EQ(dialog.Told(), box.style == CBS_SIMPLE
                                     ? "5:CBN_SELENDOK 5:CBN_SELCHANGE"
                                     : "5:CBN_DROPDOWN 5:CBN_SELENDOK 5:CBN_CLOSEUP 5:CBN_SELCHANGE");
        EXPECT_EQ(Title_Of(combo), "two");
        Press_Key(VK_UP);
        EXPECT_EQ(dialog.Told(), "5:CBN_SELENDOK 5:CBN_SELCHANGE");
        EXPECT_EQ(Send(combo, CB_GETCURSEL), 0);
        Send(combo, CB_SHOWDROPDOWN, TRUE);
        EXPECT_EQ(Send(combo, CB_GETDROPPEDSTATE), box.style != CBS_SIMPLE);
        const HWND list = GetWindow(GetDesktopWindow(), GW_CHILD);
        if (box.style != CBS_SIMPLE) Send(list, WM_LBUTTONDOWN, MK_LBUTTON, 0x30003L);
        Press_Key(VK_ESCAPE);
        EXPECT_EQ(Send(combo, CB_GETDROPPEDSTATE), 0);
        dialog.Told();
        if (box.style != CBS_SIMPLE) Send(list, WM_LBUTTONUP, 0, 0x30003L);
        EXPECT_EQ(dialog.Told(), "") << "the button was let go of with the list";
        if (box.style != CBS_DROPDOWNLIST) {
            Send(combo, CB_LIMITTEXT, 4);
            Type_Text("x");
            EXPECT_EQ(dialog.Told(), "5:CBN_EDITUPDATE 5:CBN_EDITCHANGE");
            EXPECT_EQ(Send(combo, CB_GETCURSEL), CB_ERR);
            Send(GetParent(GetFocus()), WM_COMMAND, EN_ERRSPACE << 16, GetFocus());
            EXPECT_EQ(dialog.Told(), "5:65535") << "CBN_ERRSPACE";
        }
        EXPECT_TRUE(Click_Window(other));
        EXPECT_EQ(dialog.Told(), "5:CBN_KILLFOCUS 6:BN_CLICKED");
        Send(combo, WM_CREATE, 0, 0L);
        EXPECT_EQ(Send(combo, CB_GETCOUNT), 3) << "made once";
        const struct {
            void (*withdraw)(HWND), (*undo)(HWND);
        } ways[] = {
            {[](HWND shown) { ShowWindow(shown, SW_HIDE); },
             [](HWND hidden) { ShowWindow(hidden, SW_SHOW); }},
            {[](HWND usable) { EnableWindow(usable, FALSE); }, [](HWND idle) { EnableWindow(idle, TRUE); }}};
        for (const HWND whose : {combo, static_cast<HWND>(dialog)}) {
            for (const auto &[withdraw, undo] : ways) {
                Send(combo, CB_SHOWDROPDOWN, TRUE);
                EXPECT_EQ(Send(combo, CB_GETDROPPEDSTATE), box.style != CBS_SIMPLE);
                withdraw(whose);
                EXPECT_EQ(Send(combo, CB_GETDROPPEDSTATE), 0);
                Send(combo, CB_SHOWDROPDOWN, TRUE);
                EXPECT_EQ(Send(combo, CB_GETDROPPEDSTATE), 0) << "while it cannot be used";
                undo(whose);
            }
        }
        Send(combo, CB_RESETCONTENT);
        EXPECT_EQ(Title_Of(combo) + Lines_Of(combo), "");
    }
}

TEST_F(WindowTest, An_Extended_Combo_Box_Goes_By_Records) {
    TestDialog dialog;
    const HWND box = dialog.Add("ComboBoxEx32", "", {0, 0, 100, 120}, CBS_DROPDOWN, 5);
    COMBOBOXEXITEM item = {};
    char text[10] = "second";
    item.mask = CBEIF_TEXT | CBEIF_LPARAM;
    item.iItem = -1;
    item.pszText = text;
    item.lParam = 42;
    EXPECT_EQ(Send(box, CBEM_INSERTITEM, 0, &item), 0);
    item.iItem = 0;
    std::strcpy(text, "first");
    EXPECT_EQ(Send(box, CBEM_INSERTITEM, 0, &item), 0);
    item.iItem = 1;
    item.cchTextMax = 4;
    EXPECT_EQ(Send(box, CBEM_GETITEM, 0, &item), TRUE);
    EXPECT_STREQ(text, "sec");
    EXPECT_EQ(item.lParam, 42);
    Send(box, CB_SETCURSEL, 1);
    EXPECT_EQ(Send(box, CBEM_SETITEM, 0, &item), TRUE);
    EXPECT_EQ(Lines_Of(box), "first sec");
    EXPECT_EQ(Send(box, CB_GETCURSEL), 1);
    item.iItem = -1;
    item.cchTextMax = sizeof text;
    SetWindowTextA(reinterpret_cast<HWND>(Send(box, CBEM_GETEDITCONTROL)), "typed");
    EXPECT_EQ(Send(box, CBEM_GETITEM, 0, &item), TRUE);
    EXPECT_STREQ(text, "typed");
    EXPECT_EQ(Send(box, CBEM_DELETEITEM, 0), 1);
    EXPECT_EQ(GetParent(reinterpret_cast<HWND>(Send(box, CBEM_GETCOMBOCONTROL))), box);
}

} // namespace
