#include <kelmara/dialogs/window_helpers.h>

#include <tests/support/control_verbs.h>
#include <tests/support/registry_verbs.h>
#include <tests/support/test_memory.h>

#include <climits>
#include <cstring>

namespace {

constexpr char Positions_Key[] = "Software\\Dunmerit Software\\Kelmara\\Window Positions";

class WindowHelpers : public WindowTest {};

// A plain window without a frame, on the screen at 100, 100.
struct Window : TestWindow {
    explicit Window(RECT place = {100, 100, 300, 250}) : TestWindow(WS_POPUP, place) {}
};

// --- saved positions --------------------------------------------------------------------------------------

// What a window that stood at 10 10 60 50 does with a saved rectangle.
std::string Restored(const RECT &saved, UINT show = SW_SHOWMINIMIZED, std::size_t size = 44) {
    WINDOWPLACEMENT placement = {};
    placement.length = 44;
    placement.showCmd = show;
    placement.rcNormalPosition = saved;
    std::string bytes(reinterpret_cast<const char *>(&placement), sizeof placement);
    bytes.resize(size);
    TestKey(Positions_Key, HKEY_LOCAL_MACHINE).Set("Main", bytes, REG_BINARY);
    const Window window({10, 10, 60, 50});
    Restore_Saved_Window_Position("Main", window, false);
    return Place_Of(window) + (IsWindowVisible(window) ? " shown" : "");
}

TEST_F(WindowHelpers, Positions_Come_Back_Or_Are_Dropped_Whole) {
    Override_Machine_Setting("screen_width", "800");
    Override_Machine_Setting("screen_height", "600");
    const struct {
        RECT saved;
        const char *restored;
    } rows[] = {
        {{-100, 20, 300, 60}, "0 20 400 60 shown"},    {{500, 400, 800, 600}, "500 400 800 600 shown"},
        {{500, 400, 801, 600}, "10 10 60 50"},         {{500, 400, 800, 601}, "10 10 60 50"},
        {{5, -900, 20, -800}, "5 -900 20 -800 shown"}, {{LONG_MIN, 0, 10, 10}, "10 10 60 50"},
    };
    for (const auto &row : rows) EXPECT_EQ(Restored(row.saved), row.restored) << Text_Of(row.saved);
    for (const std::size_t size : {0, 43, 45})
        EXPECT_EQ(Restored({0, 0, 9, 9}, SW_SHOW, size), "10 10 60 50");
    Override_Machine_Setting("screen_width", nullptr);
    Override_Machine_Setting("screen_height", nullptr);
}

TEST_F(WindowHelpers, Positions_Are_Saved_As_They_Have_Always_Been) {
    const Window window({10, 20, 110, 70}), other({0, 0, 5, 5});
    Restore_Saved_Window_Position("Main", other, true);
    EXPECT_EQ(Place_Of(other), "0 0 5 5") << "nothing saved yet";
    Save_Window_Position("Main", window);
    Save_Window_Position("None", nullptr);
    const TestKey key(Positions_Key, HKEY_LOCAL_MACHINE);
    EXPECT_EQ(key.Values(), std::vector<std::string>{"Main"});
    const std::string stored = key.Get("Main");
    ASSERT_EQ(stored.size(), 44u);
    LONG words[11];
    std::memcpy(words, stored.data(), sizeof words);
    EXPECT_EQ(words[0], 44);
    EXPECT_EQ((std::vector<LONG>(words + 7, words + 11)), (std::vector<LONG>{10, 20, 110, 70}));
    Restore_Saved_Window_Position("Main", other, true);
    EXPECT_EQ(Place_Of(other), "10 20 110 70");
    EXPECT_EQ(GetForegroundWindow(), HWND(other));
}

// --- moving and measuring ---------------------------------------------------------------------------------

TEST_F(WindowHelpers, Windows_Move_In_The_Coordinates_That_They_Stand_In) {
    const Window dialog;
    const TestWindow item(WS_CHILD | WS_VISIBLE, {10, 20, 60, 40}, dialog, 5);
    const TestWindow owned(WS_POPUP, {400, 400, 450, 420}, dialog);
    const auto after = [&](const HWND window, auto move) {
        move(window);
        return Place_Of(window);
    };
    EXPECT_EQ(after(item, [](HWND w) { MoveWindowTo(w, -1, 50, true); }), "110 150 160 170");
    EXPECT_EQ(after(item, [](HWND w) { MoveWindowTo(w, -5, -1, false); }), "95 150 145 170");
    EXPECT_EQ(after(owned, [](HWND w) { MoveWindowTo(w, 7, -1, true); }), "7 400 57 420");
    EXPECT_EQ(after(item, [&](HWND w) { MoveWindowVert(w, 10, dialog); }), "95 140 145 160");
    EXPECT_EQ(after(item, [&](HWND w) { MoveWindowVert(w, -10, dialog); }), "95 150 145 170");
    EXPECT_EQ(after(item, [](HWND w) { SetWindowHeight(w, 33); }), "95 150 145 183");
    EXPECT_EQ(after(owned, [](HWND w) { SetWindowHeight(w, 44); }), "7 400 57 444");
    EXPECT_EQ(GetWindowHeight(owned), 44);
    EXPECT_EQ(GetWindowHeight(nullptr), 0);
    const RECT place = {1, 2, 11, 22};
    EXPECT_EQ(after(item, [&](HWND w) { Set_Window_Rect(w, &place); }), "101 102 111 122");

    short x = 9, y = 9;
    RECT frame = {9, 9, 9, 9};
    Get_Frame_Offset(dialog, 6, &x, &y, true);
    Get_Frame_Rect(dialog, 6, &frame, true);
    EXPECT_EQ(x + y, 18);
    EXPECT_EQ(Text_Of(frame), "9 9 9 9");
    Get_Frame_Offset(dialog, 5, &x, &y, false);
    EXPECT_EQ(x * 100 + y, 102);
    EXPECT_TRUE(GetWindowLongA(item, GWL_STYLE) & WS_VISIBLE);
    Get_Frame_Rect(dialog, 5, &frame, true);
    EXPECT_EQ(Text_Of(frame), "1 2 11 22");
    EXPECT_FALSE(GetWindowLongA(item, GWL_STYLE) & WS_VISIBLE);
}

TEST_F(WindowHelpers, A_Part_Of_A_Dialog_Folds_Away_Whatever_Its_Windows_Do) {
    for (const bool destroys : {false, true}) {
        const Window dialog;
        const DWORD style = WS_CHILD | WS_VISIBLE;
        const TestWindow above(style, {0, 0, 200, 20}, dialog);
        const TestWindow frame(style, {0, 20, 100, 60}, dialog, 7);
        const TestWindow below(style, {0, 80, 100, 100}, dialog);
        const TestWindow edge(style, {0, 30, 101, 59}, dialog); // a pixel too wide, a pixel short
        const TestWindow side(style, {150, 30, 160, 60}, dialog);
        const TestWindow inside(style, {0, 20, 100, 60}, dialog, 8,
                                [&](HWND, UINT message, WPARAM, LPARAM) -> std::optional<LRESULT> {
                                    if (destroys && message == WM_SHOWWINDOW) DestroyWindow(below);
                                    return std::nullopt;
                                });
        Hide_Bound_Items(dialog, 99);
        EXPECT_EQ(Place_Of(dialog), "100 100 300 250");
        Hide_Bound_Items(dialog, 7);
        EXPECT_EQ(Place_Of(dialog), "100 100 300 210");
        EXPECT_EQ(Place_Of(above), "100 100 300 120");
        EXPECT_EQ(Place_Of(below), destroys ? "none" : "100 140 200 160");
        EXPECT_EQ(Place_Of(edge), "100 130 201 159");
        EXPECT_EQ(Place_Of(side), "250 90 260 120") << "reaches the frame's bottom";
        EXPECT_EQ(Place_Of(inside), "100 80 200 120");
        const auto visible = [](HWND w) { return (GetWindowLongA(w, GWL_STYLE) & WS_VISIBLE) != 0; };
        EXPECT_EQ(std::vector<bool>(
                      {visible(above), visible(frame), visible(edge), visible(side), visible(inside)}),
                  std::vector<bool>({true, false, true, true, false}));
    }
}

// --- texts ------------------------------------------------------------------------------------------------

TEST_F(WindowHelpers, Edit_Fields_Are_Filtered_And_Keep_Their_Caret) {
    const struct {
        const char *text, *allowed, *forbidden;
        long start, end;
        const char *result; // text, selection, beeps
    } rows[] = {
        {"-./1", nullptr, "-./", 4, 4, "1 1-1 3"},  {"a1b2", "0123456789", nullptr, 1, 3, "12 0-1 2"},
        {"ab", "", nullptr, 2, 2, " 0-0 2"},        {"ab", nullptr, "", 1, 2, "ab 1-2 0"},
        {"ab", nullptr, nullptr, 1, 2, "ab 1-2 0"}, {"ab", "x", "a", 1, 2, "ab 1-2 0"},
        {"1a", "1", nullptr, 0, 1, "1 0-0 1"},
    };
    TestDialog dialog;
    const HWND edit = dialog.Add("Edit", "", {0, 0, 90, 20}, ES_AUTOHSCROLL, 5);
    const auto filtered = [&](const char *allowed, const char *forbidden) {
        const unsigned long beeps = Message_Beep_Count();
        Filter_Edit_Field(edit, allowed, forbidden);
        DWORD start = 0, end = 0;
        SendMessageA(edit, EM_GETSEL, reinterpret_cast<WPARAM>(&start), reinterpret_cast<LPARAM>(&end));
        return Title_Of(edit) + " " + std::to_string(start) + "-" + std::to_string(end) + " " +
               std::to_string(Message_Beep_Count() - beeps);
    };
    for (const auto &row : rows) {
        SetWindowTextA(edit, row.text);
        SendMessageA(edit, EM_SETSEL, static_cast<WPARAM>(row.start), row.end);
        EXPECT_EQ(filtered(row.allowed, row.forbidden), row.result) << row.text;
    }
    const std::string long_text = std::string(254, 'a') + "b";
    SetWindowTextA(edit, long_text.c_str());
    dialog.Told();
    Filter_Edit_Field(edit, nullptr, "b");
    EXPECT_EQ(Title_Of(edit), long_text) << "beyond what is looked at";
    EXPECT_EQ(dialog.Told(), "");
    dialog.on_notice = [&](int, UINT) { DestroyWindow(edit); };
    Filter_Edit_Field(edit, nullptr, "a");
    EXPECT_FALSE(IsWindow(edit));
}

TEST_F(WindowHelpers, Texts_Are_Measured_In_The_Windows_Font) {
    TestDialog dialog;
    const HWND label = dialog.Add("Static", "", {0, 0, 60, 20}, 0);
    const HWND plain = TestWindow::Class() ? dialog.Add(TestWindow::Class(), "", {0, 0, 60, 20}, 0) : nullptr;
    EXPECT_EQ(Text_Width(label, ""), GetSystemMetrics(SM_CXBORDER));
    EXPECT_EQ(Text_Width(label, nullptr), Text_Width(label, ""));
    LOGFONTA large = {};
    large.lfHeight = 40;
    const HFONT font = CreateFontIndirectA(&large);
    const int before = Text_Width(label, "Wide");
    SendMessageA(label, WM_SETFONT, reinterpret_cast<WPARAM>(font), 0);
    EXPECT_GT(Text_Width(label, "Wide"), before);
    EXPECT_EQ(Text_Height(label), 40);
    EXPECT_GT(Text_Height(plain), 0) << "without a font of its own";
    SendMessageA(label, WM_SETFONT, 0, 0);
    EXPECT_TRUE(DeleteObject(font));
}

TEST_F(WindowHelpers, Text_Boxes_Are_As_High_As_Their_Wrapped_Lines) {
    const NoLeak no_leak;
    TestDialog dialog;
    const HWND box = dialog.Add("Static", "", {0, 0, 10, 10}, 0);
    const int height = Text_Height(box), word = Text_Width(box, "word"), blank = Text_Width(box, " ");
    const auto lines = [&](int width, const char *text) {
        MoveWindow(box, 0, 0, width, 10, FALSE);
        return Textbox_Height(box, text) / height;
    };
    EXPECT_EQ(Textbox_Height(box, ""), 0);
    EXPECT_EQ(Textbox_Height(box, nullptr), 0);
    EXPECT_EQ(lines(word, "   "), 1);
    EXPECT_EQ(lines(word, "word"), 1);
    EXPECT_EQ(lines(word - 1, "word"), 2) << "wider than the box";
    EXPECT_EQ(lines(2 * word + blank, " word   word "), 1);
    EXPECT_EQ(lines(2 * word + blank - 1, "word word"), 2);
    EXPECT_EQ(lines(2 * word + blank, "word word word word word"), 3);
    const FailingMemory failing(1);
    EXPECT_EQ(Textbox_Height(box, "word"), -1);
}

// --- rectangles -------------------------------------------------------------------------------------------

TEST_F(WindowHelpers, Rectangles_Are_Moved_And_Centred) {
    const auto centred = [](RECT inner, const RECT &outer) {
        CenterRectInRect(&inner, &outer);
        return Text_Of(inner);
    };
    EXPECT_EQ(centred({5, 5, 15, 15}, {100, 200, 131, 230}), "110 210 120 220");
    EXPECT_EQ(centred({0, 0, 15, 10}, {0, 0, 10, 10}), "-2 0 13 10") << "towards zero";
    EXPECT_EQ(centred({LONG_MIN, 0, LONG_MAX, 10}, {0, 0, 10, 10}), "5 0 4 10") << "wraps";
    RECT same = {3, 4, 8, 10};
    CenterRectInRect(&same, &same);
    EXPECT_EQ(Text_Of(same), "3 4 8 10");
    AdjustRectToBase(&same);
    EXPECT_EQ(Text_Of(same), "0 0 5 6");
    AdjustRectToOffset(&same, 1, 20);
    EXPECT_EQ(Text_Of(same), "20 1 25 7");
    const Window window;
    GlobalToLocalRect(&same, &same, window);
    EXPECT_EQ(Text_Of(same), "-80 -99 -75 -93");
    GlobalToLocalRect(&same, &same, nullptr);
    EXPECT_EQ(Text_Of(same), "-80 -99 -75 -93");
}

} // namespace
