// Classes, procedures, how windows come and go, showing, focus.

#include <platform/kernel.h>
#include <platform/user.h>
#include <tests/support/handles.h>
#include <tests/support/window_verbs.h>

#include <stdexcept>
#include <thread>

namespace {

const DWORD Dialog = WS_POPUP | WS_DLGFRAME;
const RECT Somewhere = {10, 10, 110, 60};

std::string Class_Of(HWND window) {
    char name[100];
    return GetClassNameA(window, name, sizeof name) ? name : "";
}

TEST_F(WindowTest, Classes_Are_Known_By_Their_Name_In_Any_Case) {
    const WNDCLASSA plain = {0,       DefWindowProcA, 0,       0,       nullptr,
                             nullptr, nullptr,        nullptr, nullptr, "Plain One"};
    ASSERT_TRUE(RegisterClassA(&plain));
    EXPECT_EQ(Error_Of(RegisterClassA(&plain)), ERROR_CLASS_ALREADY_EXISTS);
    const HWND window = TestWindow::Make(WS_POPUP, nullptr, "plain one");
    EXPECT_EQ(Class_Of(window), "Plain One");
    char cut[6];
    EXPECT_EQ(GetClassNameA(window, cut, sizeof cut), 5);
    EXPECT_STREQ(cut, "Plain");
    EXPECT_EQ(Error_Of(UnregisterClassA("Plain One", nullptr)), ERROR_CLASS_HAS_WINDOWS);
    DestroyWindow(window);
    EXPECT_TRUE(UnregisterClassA("Plain One", nullptr));
    EXPECT_EQ(Error_Of(UnregisterClassA("#32770", nullptr)), ERROR_CLASS_DOES_NOT_EXIST);
}

TEST_F(WindowTest, What_Is_No_Window_Is_Refused_With_Its_Code) {
    TestWindow dialog(Dialog, Somewhere);
    const HWND none = reinterpret_cast<HWND>(0x7FFFFFF0);
    EXPECT_EQ(Error_Of(TestWindow::Make(WS_POPUP, nullptr, "No Such Class")), ERROR_CANNOT_FIND_WND_CLASS);
    EXPECT_EQ(Error_Of(TestWindow::Make(WS_CHILD)), ERROR_TLW_WITH_WSCHILD);
    EXPECT_EQ(Error_Of(TestWindow::Make(WS_CHILD, none)), ERROR_INVALID_WINDOW_HANDLE);
    for (const HWND bad : {none, HWND(nullptr)}) {
        RECT r;
        EXPECT_EQ(Error_Of(IsWindow(bad)), ERROR_INVALID_WINDOW_HANDLE);
        EXPECT_EQ(Error_Of(GetWindowRect(bad, &r)), ERROR_INVALID_WINDOW_HANDLE);
        EXPECT_EQ(Error_Of(DestroyWindow(bad)), ERROR_INVALID_WINDOW_HANDLE);
    }
    EXPECT_EQ(Error_Of(GetWindowLongA(dialog, -3)), ERROR_INVALID_INDEX);
    EXPECT_EQ(Error_Of(DestroyWindow(GetDesktopWindow())), ERROR_ACCESS_DENIED);
}

TEST_F(WindowTest, A_Procedure_May_Refuse_Its_Window) {
    const auto answer = [](UINT to, LRESULT with) {
        return [=](HWND, UINT message, WPARAM, LPARAM) {
            return message == to ? std::optional<LRESULT>(with) : std::nullopt;
        };
    };
    TestWindow early(WS_POPUP, Somewhere, nullptr, 0, answer(WM_NCCREATE, 0));
    EXPECT_EQ(HWND(early), nullptr);
    EXPECT_EQ(early.Heard(), "WM_NCCREATE WM_NCDESTROY");
    TestWindow late(WS_POPUP, Somewhere, nullptr, 0, answer(WM_CREATE, -1));
    EXPECT_EQ(HWND(late), nullptr);
    EXPECT_EQ(late.Heard(), "WM_NCCREATE WM_CREATE WM_DESTROY WM_NCDESTROY");
    const auto throws = [](HWND window, UINT message, WPARAM, LPARAM) -> std::optional<LRESULT> {
        if (message != WM_CREATE) return std::nullopt;
        TestWindow::Make(WS_CHILD | CBS_DROPDOWN, window, "ComboBox"); // its list goes with it
        throw std::runtime_error("no");
    };
    EXPECT_THROW(TestWindow(WS_POPUP, Somewhere, nullptr, 0, throws), std::runtime_error);
}

TEST_F(WindowTest, Destruction_Tells_The_Family_In_Order) {
    std::string order;
    const auto tells = [&order](const char *name) {
        return [&order, name](HWND, UINT message, WPARAM, LPARAM) -> std::optional<LRESULT> {
            if (message == WM_DESTROY) order += std::string(name) + " ";
            if (message == WM_NCDESTROY) order += std::string(name) + "! ";
            return std::nullopt;
        };
    };
    TestWindow main(Dialog, Somewhere, nullptr, 0, tells("main"));
    TestWindow child(WS_CHILD, Somewhere, main, 1, tells("child"));
    TestWindow grandchild(WS_CHILD, Somewhere, child, 1, tells("grandchild"));
    TestWindow owned(Dialog, Somewhere, child, 0, tells("owned"));
    EXPECT_EQ(GetWindow(owned, GW_OWNER), main);
    EXPECT_TRUE(DestroyWindow(main));
    EXPECT_EQ(order, "owned owned! main child grandchild grandchild! child! main! ");
    for (const HWND each : {HWND(main), HWND(child), HWND(grandchild), HWND(owned)})
        EXPECT_FALSE(IsWindow(each));
}

TEST_F(WindowTest, Windows_May_Go_At_Awkward_Moments) {
    for (const UINT moment :
         {WM_USER, WM_DESTROY, WM_NCDESTROY, WM_SIZE, WM_WINDOWPOSCHANGING, WM_KILLFOCUS}) {
        TestWindow main(Dialog | WS_VISIBLE, Somewhere);
        const HWND parent = main;
        TestWindow other(WS_CHILD | WS_VISIBLE, Somewhere, main);
        // The whole family goes while the child answers; its procedure goes on afterwards.
        TestWindow child(WS_CHILD | WS_VISIBLE, Somewhere, main, 1,
                         [=](HWND, UINT message, WPARAM, LPARAM) -> std::optional<LRESULT> {
                             if (message == moment) DestroyWindow(parent);
                             return std::nullopt;
                         });
        if (IsWindow(child)) SetFocus(child);
        if (IsWindow(child)) SendMessageA(child, WM_USER, 0, 0);
        if (IsWindow(child)) MoveWindow(child, 1, 2, 3, 4, TRUE);
        if (IsWindow(child)) SetFocus(other);
        if (IsWindow(child)) DestroyWindow(child);
        EXPECT_FALSE(IsWindow(child)) << moment;
        EXPECT_FALSE(IsWindow(main)) << moment;
        EXPECT_EQ(SendMessageA(child, WM_USER, 0, 0), 0);
    }
    TestWindow owner(Dialog | WS_VISIBLE, Somewhere);
    const HWND above = owner;
    TestWindow popup(Dialog | WS_VISIBLE, Somewhere, owner, 0,
                     [=](HWND, UINT message, WPARAM shows, LPARAM) -> std::optional<LRESULT> {
                         if (message == WM_SHOWWINDOW && !shows) DestroyWindow(above);
                         return std::nullopt;
                     });
    ShowWindow(popup, SW_HIDE);
    EXPECT_FALSE(IsWindow(popup));
}

TEST_F(WindowTest, What_Is_Being_Destroyed_Is_Told_Once_And_Gets_No_Further_Family) {
    TestWindow main(Dialog, Somewhere);
    int told = 0;
    TestWindow child(WS_CHILD, Somewhere, main, 1, [&told](HWND window, UINT message, WPARAM, LPARAM) {
        if (message != WM_DESTROY) return std::optional<LRESULT>();
        ++told;
        for (const DWORD style : {WS_CHILD, WS_POPUP})
            EXPECT_EQ(Error_Of(TestWindow::Make(style, window)), ERROR_INVALID_WINDOW_HANDLE);
        DestroyWindow(window);
        return std::optional<LRESULT>();
    });
    DestroyWindow(main);
    EXPECT_EQ(told, 1);
}

TEST_F(WindowTest, A_Throw_During_Destruction_Leaves_A_Whole_Window) {
    bool throws = true;
    TestWindow window(Dialog, Somewhere, nullptr, 0, [&](HWND, UINT message, WPARAM, LPARAM) {
        if (message == WM_DESTROY && throws) throw std::runtime_error("not yet");
        return std::optional<LRESULT>();
    });
    EXPECT_THROW(DestroyWindow(window), std::runtime_error);
    EXPECT_TRUE(IsWindow(window));
    throws = false;
    EXPECT_TRUE(DestroyWindow(window));
    EXPECT_FALSE(IsWindow(window));
}

TEST_F(WindowTest, An_Enumeration_Stands_What_Is_Destroyed_Under_It) {
    TestWindow main(Dialog, Somewhere);
    TestWindow a(WS_CHILD, Somewhere, main, 1), b(WS_CHILD, Somewhere, main, 2);
    TestWindow inner(WS_CHILD, Somewhere, a, 3), c(WS_CHILD, Somewhere, main, 4);
    static std::string seen;
    static HWND to_destroy;
    const WNDENUMPROC visit = [](HWND window, LPARAM last) -> BOOL {
        seen += std::to_string(GetDlgCtrlID(window));
        if (GetDlgCtrlID(window) == 1) DestroyWindow(to_destroy);
        return GetDlgCtrlID(window) != last;
    };
    const std::tuple<HWND, LPARAM, const char *> rows[] = {
        {nullptr, -1, "1324"}, {b, 3, "13"}, {a, -1, "14"}};
    for (const auto &[doomed, last, shown] : rows) {
        seen.clear();
        to_destroy = doomed;
        EXPECT_EQ(EnumChildWindows(main, visit, last), last == -1);
        EXPECT_EQ(seen, shown);
    }
    seen.clear();
    EXPECT_TRUE(EnumChildWindows(nullptr, visit, -1));
    EXPECT_EQ(seen, "0") << "the topmost one alone";
}

TEST_F(WindowTest, Showing_And_Enabling_Tell_What_Was_And_Send_What_Changes) {
    TestWindow main(WS_OVERLAPPEDWINDOW, Somewhere);
    TestWindow child(WS_CHILD | WS_VISIBLE, Somewhere, main);
    EXPECT_FALSE(IsWindowVisible(child));
    main.Heard();
    EXPECT_FALSE(ShowWindow(main, SW_SHOW));
    EXPECT_EQ(main.Heard(), "WM_SHOWWINDOW WM_WINDOWPOSCHANGING WM_ACTIVATE WM_SETFOCUS WM_WINDOWPOSCHANGED");
    EXPECT_TRUE(IsWindowVisible(child));
    EXPECT_TRUE(ShowWindow(main, SW_SHOW));
    EXPECT_EQ(main.Heard(), "");
    SetFocus(child);
    child.Heard();
    EXPECT_FALSE(EnableWindow(child, FALSE));
    EXPECT_EQ(child.Heard(), "WM_CANCELMODE WM_KILLFOCUS WM_ENABLE");
    EXPECT_FALSE(IsWindowEnabled(child));
    EXPECT_EQ(GetFocus(), nullptr);
    EXPECT_EQ(SetFocus(child), nullptr);
    EXPECT_EQ(GetFocus(), nullptr);
    EXPECT_TRUE(EnableWindow(child, TRUE));
    EXPECT_FALSE(EnableWindow(child, TRUE));
    EXPECT_EQ(child.Heard(), "WM_ENABLE");
    EXPECT_TRUE(ShowWindow(child, SW_HIDE));
    EXPECT_FALSE(IsWindowVisible(child));
    EXPECT_TRUE(IsWindowVisible(main));
}

TEST_F(WindowTest, Focus_Activation_And_The_Last_Popup_Go_Together) {
    TestWindow main(WS_OVERLAPPEDWINDOW | WS_VISIBLE, Somewhere);
    TestWindow child(WS_CHILD | WS_VISIBLE, Somewhere, main);
    SetFocus(child);
    EXPECT_EQ(GetLastActivePopup(main), main);
    {
        TestWindow popup(Dialog | WS_VISIBLE, Somewhere, main);
        EXPECT_EQ(GetActiveWindow(), popup);
        EXPECT_EQ(GetForegroundWindow(), popup);
        EXPECT_EQ(GetLastActivePopup(main), popup);
        EXPECT_EQ(GetParent(popup), main);
        EXPECT_EQ(GetParent(child), main);
        EXPECT_EQ(GetParent(main), nullptr);
        EXPECT_FALSE(IsChild(main, popup));
        EXPECT_EQ(SetFocus(child), popup);
        EXPECT_EQ(GetActiveWindow(), main);
        EXPECT_EQ(GetLastActivePopup(main), main);
        EXPECT_TRUE(SetForegroundWindow(popup));
        EXPECT_EQ(GetFocus(), popup);
    }
    EXPECT_EQ(GetLastActivePopup(main), main);
    EXPECT_EQ(GetActiveWindow(), main);
}

TEST_F(WindowTest, What_Stands_Behind_Comes_Forward_And_Nobody_Steals_The_Foreground) {
    TestWindow first(Dialog | WS_VISIBLE, Somewhere), hidden(Dialog, Somewhere);
    TestWindow second(Dialog | WS_VISIBLE, Somewhere), third(Dialog | WS_VISIBLE, Somewhere);
    DestroyWindow(third);
    EXPECT_EQ(GetForegroundWindow(), second);
    SetWindowPos(second, HWND_BOTTOM, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE);
    EXPECT_EQ(GetWindow(second, GW_HWNDNEXT), nullptr);
    EXPECT_TRUE(SetWindowPos(second, HWND_TOPMOST, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE));
    EXPECT_EQ(GetWindow(second, GW_HWNDPREV), nullptr);
    const HWND combo = TestWindow::Make(WS_CHILD | WS_VISIBLE | CBS_DROPDOWN, second, "ComboBox");
    SendMessageA(combo, CB_SHOWDROPDOWN, TRUE, 0); // the list stands on the desktop
    ShowWindow(second, SW_HIDE);
    EXPECT_EQ(GetForegroundWindow(), first);
    EXPECT_EQ(GetFocus(), first);
    TestWindow careless(Dialog | WS_VISIBLE, Somewhere, nullptr, 0, [](HWND, UINT message, WPARAM, LPARAM) {
        return message == WM_ACTIVATE ? std::optional<LRESULT>(0) : std::nullopt;
    });
    EXPECT_EQ(GetFocus(), careless);
    ShowWindow(hidden, SW_SHOWMINIMIZED);
    EXPECT_EQ(GetFocus(), nullptr);
    std::thread([] {
        TestWindow behind(Dialog, Somewhere);
        const HWND foreground = GetForegroundWindow();
        SetFocus(behind);
        EXPECT_EQ(GetForegroundWindow(), foreground);
        MSG message;
        PeekMessageA(&message, nullptr, 0, 0, PM_NOREMOVE);
        EXPECT_EQ(GetFocus(), behind);
    }).join();
}

TEST_F(WindowTest, A_Dialog_Keeps_Its_Font_And_Its_Focus_And_Closes_By_Cancel) {
    const HWND dialog = TestWindow::Make(Dialog | WS_VISIBLE, nullptr, "#32770");
    EXPECT_EQ(GetFocus(), dialog);
    EXPECT_EQ(SendMessageA(dialog, WM_GETFONT, 0, 0), 0);
    SendMessageA(dialog, WM_SETFONT, 48, 0);
    EXPECT_EQ(SendMessageA(dialog, WM_GETFONT, 0, 0), 48);
    TestWindow plain(WS_CHILD | WS_VISIBLE, Somewhere, dialog);
    TestWindow stop(WS_CHILD | WS_VISIBLE | WS_TABSTOP, Somewhere, dialog);
    {
        TestWindow popup(Dialog | WS_VISIBLE, Somewhere, dialog);
        SetForegroundWindow(dialog);
        EXPECT_EQ(GetFocus(), stop);
        SetFocus(plain);
        SetForegroundWindow(popup);
        EXPECT_EQ(GetFocus(), popup);
    }
    EXPECT_EQ(GetFocus(), plain);
    SetFocus(dialog);
    EXPECT_EQ(GetFocus(), stop);
    const HWND cancel =
        CreateWindowExA(0, "Button", "", WS_CHILD, 0, 0, 9, 9, dialog, HMENU(IDCANCEL), nullptr, nullptr);
    const auto procedure = reinterpret_cast<WNDPROC>(GetWindowLongA(dialog, GWL_WNDPROC));
    CallWindowProcA(procedure, cancel, WM_SETFONT, 48, 0);
    EXPECT_EQ(CallWindowProcA(procedure, cancel, WM_GETFONT, 0, 0), 0) << "it has nothing of a dialog's";
    const unsigned long beeps = Message_Beep_Count();
    for (const BOOL enabled : {TRUE, FALSE}) {
        EnableWindow(cancel, enabled);
        SendMessageA(dialog, WM_CLOSE, 0, 0);
        MSG message = {};
        EXPECT_EQ(PeekMessageA(&message, dialog, WM_COMMAND, WM_COMMAND, PM_REMOVE), enabled);
        EXPECT_EQ(message.lParam, enabled ? reinterpret_cast<LPARAM>(cancel) : 0);
    }
    EXPECT_EQ(Message_Beep_Count(), beeps + 1);
    EXPECT_TRUE(DestroyWindow(dialog));
}

} // namespace
