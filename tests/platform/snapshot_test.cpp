// Pictures of windows.

#include <platform/kernel.h>
#include <tests/support/control_verbs.h>
#include <tests/support/handles.h>

namespace {

LRESULT Wordless(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    return message == WM_GETTEXT ? -1 : DefWindowProcA(window, message, wparam, lparam);
}

// Every element is closed, in order, and nothing stands bare that is markup.
bool Is_Well_Formed(const std::string &svg) {
    std::vector<std::string> open;
    for (std::size_t at = svg.find('<'); at != std::string::npos; at = svg.find('<', at + 1)) {
        const std::size_t end = svg.find('>', at);
        if (end == std::string::npos) return false;
        const std::string tag = svg.substr(at + 1, end - at - 1);
        if (tag.find('<') != std::string::npos) return false;
        const std::string name = tag.substr(tag[0] == '/', tag.find(' ') - (tag[0] == '/'));
        if (tag[0] == '/') {
            if (open.empty() || open.back() != name) return false;
            open.pop_back();
        } else if (tag.back() != '/') {
            open.push_back(name);
        }
    }
    return open.empty();
}

std::size_t Count(const std::string &text, const std::string &part) {
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
    return count;
}

TEST_F(WindowTest, A_Picture_Holds_Frame_Controls_And_Texts) {
    TestDialog dialog({0, 0, 300, 230}, "Options <&> \xA9");
    dialog.Add("Button", "&Group", {5, 5, 285, 60}, BS_GROUPBOX);
    const HWND check = dialog.Add("Button", "Check", {15, 20, 120, 40}, BS_AUTOCHECKBOX, 1);
    dialog.Add("Static", "Off", {130, 20, 200, 40}, SS_CENTER | WS_DISABLED);
    const HWND edit = dialog.Add("Edit", "marked text", {5, 70, 100, 92}, 0, 2, WS_EX_CLIENTEDGE);
    dialog.Add("Edit", "secret", {105, 70, 200, 92}, ES_PASSWORD, 3, WS_EX_CLIENTEDGE);
    const HWND list = dialog.Add("ListBox", "", {5, 100, 100, 170}, WS_VSCROLL, 4, WS_EX_CLIENTEDGE);
    const HWND combo = dialog.Add("ComboBox", "", {105, 100, 200, 200}, CBS_DROPDOWNLIST, 5);
    const HWND hidden = dialog.Add("Static", "nowhere", {105, 20, 200, 40}, 0);
    for (const char *line : {"first line", "second line"}) {
        SendMessageA(list, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(line));
        SendMessageA(combo, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>("in the box"));
    }
    dialog.Add("Static", "&Wide text", {205, 70, 250, 90}, 0); // 45 pixels, with its prefix 52
    ShowWindow(hidden, SW_HIDE);
    SendMessageA(list, LB_SETCURSEL, 1, 0);
    const std::string path = machine.Path("dialog.svg");
    ASSERT_TRUE(Snapshot_Window(dialog, path.c_str()));
    const std::string before = machine.Read("dialog.svg");
    EXPECT_TRUE(Is_Well_Formed(before)) << before;
    struct Expected {
        const char *part;
        std::size_t times;
    };
    for (const Expected &each :
         {Expected{">Options &lt;&amp;&gt; \xC2\xA9<", 1}, Expected{">Group<", 1}, Expected{">Off<", 2},
          Expected{">******<", 1}, Expected{">marked text<", 1}, Expected{"secret", 0},
          Expected{"nowhere", 0}, Expected{">second line<", 1}, Expected{"in the box", 0},
          Expected{"<path d=\"M3 6L5 9", 0}, Expected{">Wide text<", 1}, Expected{"textLength", 10},
          Expected{"text-anchor=\"middle\"", 2}})
        EXPECT_EQ(Count(before, each.part), each.times) << each.part;
    SendMessageA(check, BM_SETCHECK, 1, 0);
    SetFocus(edit);
    SendMessageA(edit, EM_SETSEL, 0, 6);
    SendMessageA(combo, CB_SETCURSEL, 1, 0);
    SendMessageA(combo, CB_SHOWDROPDOWN, TRUE, 0);
    ASSERT_TRUE(Snapshot_Window(dialog, path.c_str()));
    const std::string after = machine.Read("dialog.svg");
    EXPECT_TRUE(Is_Well_Formed(after));
    EXPECT_EQ(Count(after, ">in the box<"), 3u) << "the choice, and the whole list";
    EXPECT_EQ(Count(after, ">marked<"), 1u);
    EXPECT_EQ(Count(after, "<path"), Count(before, "<path") + 2) << "the check mark";
    SetWindowLongA(check, GWL_WNDPROC, reinterpret_cast<LONG>(Wordless));
    EXPECT_TRUE(Snapshot_Window(dialog, path.c_str()));
    EXPECT_EQ(Error_Of(Snapshot_Window(nullptr, path.c_str())), ERROR_INVALID_WINDOW_HANDLE);
    EXPECT_EQ(Error_Of(Snapshot_Window(dialog, machine.Path("none/x.svg").c_str())), ERROR_PATH_NOT_FOUND);
}

} // namespace
