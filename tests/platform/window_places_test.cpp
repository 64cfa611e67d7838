// The order of siblings, rectangles by style, moving, states and placements.

#include <platform/user.h>
#include <tests/support/handles.h>
#include <tests/support/window_verbs.h>

namespace {

const DWORD Dialog = WS_POPUP | WS_DLGFRAME;

std::string Order_In(HWND parent) {
    std::string order;
    for (HWND each = GetWindow(parent, GW_CHILD); each; each = GetWindow(each, GW_HWNDNEXT))
        order += std::to_string(GetDlgCtrlID(each));
    return order;
}

TEST_F(WindowTest, Siblings_Stand_In_The_Order_In_Which_They_Came_Until_Restacked) {
    TestWindow main(Dialog, {0, 0, 100, 100});
    TestWindow a(WS_CHILD, {}, main, 1), b(WS_CHILD, {}, main, 2), c(WS_CHILD, {}, main, 3);
    EXPECT_EQ(Order_In(main), "123");
    const UINT only_order = SWP_NOMOVE | SWP_NOSIZE;
    struct {
        HWND window, after;
        const char *order;
    } const steps[] = {{c, HWND_TOP, "312"}, {c, HWND_BOTTOM, "123"}, {c, a, "132"}, {a, b, "321"},
                       {a, b, "321"},        {b, main, "321"},        {b, b, "321"}, {a, HWND_TOP, "132"}};
    for (const auto &step : steps) {
        EXPECT_TRUE(SetWindowPos(step.window, step.after, 0, 0, 0, 0, only_order));
        EXPECT_EQ(Order_In(main), step.order);
    }
    EXPECT_EQ(Error_Of(SetWindowPos(a, reinterpret_cast<HWND>(0x7FFFFFF0), 0, 0, 0, 0, only_order)),
              ERROR_INVALID_WINDOW_HANDLE);
    EXPECT_EQ(GetWindow(b, GW_HWNDFIRST), a);
    EXPECT_EQ(GetWindow(a, GW_HWNDLAST), b);
    EXPECT_EQ(GetWindow(b, GW_HWNDPREV), c);
    EXPECT_EQ(GetWindow(b, GW_HWNDNEXT), nullptr);
    EXPECT_EQ(GetDlgItem(main, 3), c);
    EXPECT_EQ(Error_Of(GetDlgItem(main, 4)), ERROR_CONTROL_ID_NOT_FOUND);
}

TEST_F(WindowTest, A_Style_Takes_Its_Frame_From_The_Window) {
    struct {
        DWORD extended_style, style;
        const char *client;
    } const rows[] = {
        {0, WS_POPUP, "0 0 100 80"},
        {0, WS_POPUP | WS_BORDER, "0 0 98 78"},
        {0, WS_POPUP | WS_DLGFRAME, "0 0 94 74"},
        {0, WS_POPUP | WS_CAPTION, "0 0 94 55"},
        {0, WS_OVERLAPPEDWINDOW, "0 0 92 53"},
        {0, WS_OVERLAPPED, "0 0 94 55"},
        {WS_EX_CLIENTEDGE, WS_POPUP, "0 0 96 76"},
        {WS_EX_CLIENTEDGE, WS_POPUP | WS_BORDER | WS_VSCROLL | WS_HSCROLL, "0 0 78 58"},
        {WS_EX_STATICEDGE, WS_POPUP, "0 0 98 78"},
        {WS_EX_DLGMODALFRAME, WS_POPUP, "0 0 94 74"},
    };
    for (const auto &row : rows) {
        const HWND window = CreateWindowExA(row.extended_style, TestWindow::Class(), "", row.style, 5, 5, 100,
                                            80, nullptr, nullptr, nullptr, nullptr);
        EXPECT_EQ(Client_Of(window), row.client) << std::hex << row.style;
        DestroyWindow(window);
    }
}

TEST_F(WindowTest, Coordinates_Wrap_Around) {
    TestWindow main(WS_POPUP | WS_CAPTION, {100, 200, 300, 400});
    for (const LONG extreme : {LONG_MAX, LONG_MIN}) {
        POINT far = {extreme, extreme};
        EXPECT_TRUE(ClientToScreen(main, &far) && ScreenToClient(main, &far));
        EXPECT_TRUE(far.x == extreme && far.y == extreme);
    }
}

TEST_F(WindowTest, Moving_Sends_What_Changes_And_Nothing_Else) {
    TestWindow main(Dialog, {0, 0, 100, 100});
    TestWindow child(WS_CHILD, {10, 10, 30, 30}, main);
    struct {
        int x, y, width, height;
        UINT flags;
        const char *place, *heard;
    } const rows[] = {
        {0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOZORDER, "13 13 33 33", "WM_WINDOWPOSCHANGING"},
        {10, 10, 20, 20, SWP_NOZORDER, "13 13 33 33", "WM_WINDOWPOSCHANGING"},
        {12, 10, 9, 9, SWP_NOZORDER | SWP_NOSIZE, "15 13 35 33",
         "WM_WINDOWPOSCHANGING WM_WINDOWPOSCHANGED WM_MOVE"},
        {9, 9, 40, 20, SWP_NOZORDER | SWP_NOMOVE, "15 13 55 33",
         "WM_WINDOWPOSCHANGING WM_WINDOWPOSCHANGED WM_SIZE"},
        {1, 2, 3, 4, SWP_NOZORDER | SWP_NOSENDCHANGING, "4 5 7 9", "WM_WINDOWPOSCHANGED WM_MOVE WM_SIZE"},
        {1, 2, -3, -4, SWP_NOZORDER, "4 5 4 5", "WM_WINDOWPOSCHANGING WM_WINDOWPOSCHANGED WM_SIZE"},
        {0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOZORDER | SWP_SHOWWINDOW, "4 5 4 5",
         "WM_WINDOWPOSCHANGING WM_WINDOWPOSCHANGED"},
        {0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOZORDER | SWP_SHOWWINDOW, "4 5 4 5",
         "WM_WINDOWPOSCHANGING"},
    };
    child.Heard();
    for (const auto &row : rows) {
        EXPECT_TRUE(SetWindowPos(child, nullptr, row.x, row.y, row.width, row.height, row.flags));
        EXPECT_EQ(child.Heard(), row.heard);
        EXPECT_EQ(Place_Of(child), row.place);
    }
    main.Heard();
    SetWindowLongA(main, GWL_STYLE, static_cast<LONG>(WS_POPUP | WS_CAPTION));
    for (const char *heard : {"WM_WINDOWPOSCHANGING WM_WINDOWPOSCHANGED WM_MOVE WM_SIZE",
                              "WM_WINDOWPOSCHANGING WM_WINDOWPOSCHANGED"}) {
        SetWindowPos(main, nullptr, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOZORDER | SWP_FRAMECHANGED);
        EXPECT_EQ(main.Heard(), heard) << "the caption takes its part once";
    }
}

TEST_F(WindowTest, Places_Beyond_Reach_Are_Brought_Within) {
    constexpr int Most = 0x7FFFFFFF;
    TestWindow window(WS_OVERLAPPEDWINDOW, {Most - 5, 5, Most, 10});
    EXPECT_EQ(Place_Of(window), "32767 5 32772 10");
    MoveWindow(window, -Most, Most, Most, Most, TRUE);
    EXPECT_EQ(Place_Of(window), "-32767 32767 0 65534");
    const WINDOWPLACEMENT stored = {sizeof stored, 0, SW_SHOW, {}, {}, {0, -Most - 1, 400, 700}};
    EXPECT_TRUE(SetWindowPlacement(window, &stored));
    EXPECT_EQ(Place_Of(window), "0 -32767 400 0");
}

std::string Normal_Of(HWND window) {
    WINDOWPLACEMENT placement = {};
    placement.length = sizeof placement;
    if (!GetWindowPlacement(window, &placement)) return "none";
    return std::to_string(placement.showCmd) + ": " + Text_Of(placement.rcNormalPosition);
}

TEST_F(WindowTest, Iconic_And_Zoomed_Windows_Know_Where_They_Belong) {
    TestWindow window(WS_OVERLAPPEDWINDOW, {50, 60, 350, 260});
    struct {
        int command;
        bool iconic, zoomed;
        const char *place, *normal;
    } const rows[] = {
        {SW_SHOWMAXIMIZED, false, true, "-4 -4 1028 772", "3: 50 60 350 260"},
        {SW_SHOWMINIMIZED, true, false, "-32000 -32000 -31840 -31976", "2: 50 60 350 260"},
        {SW_RESTORE, false, true, "-4 -4 1028 772", "3: 50 60 350 260"},
        {SW_RESTORE, false, false, "50 60 350 260", "1: 50 60 350 260"},
        {SW_MINIMIZE, true, false, "-32000 -32000 -31840 -31976", "2: 50 60 350 260"},
        {SW_HIDE, true, false, "-32000 -32000 -31840 -31976", "2: 50 60 350 260"},
        {SW_SHOWNORMAL, false, false, "50 60 350 260", "1: 50 60 350 260"},
    };
    for (const auto &row : rows) {
        ShowWindow(window, row.command);
        EXPECT_EQ(IsIconic(window), row.iconic) << row.command;
        EXPECT_EQ(IsZoomed(window), row.zoomed) << row.command;
        EXPECT_EQ(Place_Of(window), row.place) << row.command;
        EXPECT_EQ(Normal_Of(window), row.normal) << row.command;
    }
    ShowWindow(window, SW_MINIMIZE);
    EXPECT_EQ(Client_Of(window), "0 0 0 0");
    WINDOWPLACEMENT placement = {sizeof placement, 0, SW_SHOWNORMAL, {}, {}, {1, 2, 101, 202}};
    EXPECT_TRUE(SetWindowPlacement(window, &placement));
    EXPECT_EQ(Place_Of(window), "1 2 101 202");
    placement.length = 43;
    EXPECT_EQ(Error_Of(SetWindowPlacement(window, &placement)), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(Error_Of(GetWindowPlacement(window, &placement)), ERROR_INVALID_PARAMETER);
}

TEST_F(WindowTest, Invalid_Parts_Add_Up_Within_The_Client_Area) {
    TestWindow window(WS_POPUP, {0, 0, 100, 100});
    RECT r = {10, 10, 20, 20};
    EXPECT_TRUE(InvalidateRect(window, &r, FALSE));
    r = {-50, 15, 5, 30};
    EXPECT_TRUE(InvalidateRect(window, &r, FALSE));
    r = {200, 200, 300, 300};
    EXPECT_TRUE(InvalidateRect(window, &r, FALSE));
    EXPECT_TRUE(Invalid_Rectangle(window, &r, true));
    EXPECT_EQ(Text_Of(r), "0 10 20 30");
    EXPECT_FALSE(Invalid_Rectangle(window, &r, true));
    EXPECT_FALSE(InvalidateRect(nullptr, nullptr, FALSE));
}

} // namespace
