#include <platform/user/controls/button.h>

#include <platform/user/controls/groups.h>

void Button::Check_In_Group() {
    std::vector<HWND> group;
    if (!Succeed_Or_Tell(Code_Of([&] { return Collect_Group(window_, group); }))) return;
    for (const HWND each : group) {
        if (SendMessageA(each, WM_GETDLGCODE, 0, 0) & DLGC_RADIOBUTTON)
            SendMessageA(each, BM_SETCHECK, each == window_, 0);
    }
}

void Button::Clicked() {
    switch (Kind()) {
    case BS_GROUPBOX:
        return;
    case BS_AUTOCHECKBOX:
        SendMessageA(window_, BM_SETCHECK, !check_, 0);
        break;
    case BS_AUTO3STATE:
        SendMessageA(window_, BM_SETCHECK, (check_ + 1) % 3, 0);
        break;
    case BS_AUTORADIOBUTTON:
        Check_In_Group();
        break;
    default:
        break;
    }
    if (Find_Window(window_)) Notify(BN_CLICKED);
}

void Button::Click_By_Code() {
    if (in_click_) return;
    const WhileSet click(in_click_);
    SendMessageA(window_, WM_LBUTTONDOWN, 0, 0);
    if (Find_Window(window_)) SendMessageA(window_, WM_LBUTTONUP, 0, 0);
}

void Button::Pointer_Down() {
    if (!Has_Focus()) {
        const WhileSet click(in_click_);
        SetFocus(window_);
    }
    if (!Find_Window(window_)) return;
    held_ = true;
    Capture_Pointer(window_, window_);
    SendMessageA(window_, BM_SETSTATE, TRUE, 0);
}

void Button::Pointer_Up(LPARAM point) {
    if (!held_) return;
    held_ = false;
    Release_Pointer(window_);
    SendMessageA(window_, BM_SETSTATE, FALSE, 0);
    if (Find_Window(window_) && Is_In_Client(point)) Clicked();
}

void Button::Gain_Focus() {
    Changed();
    if ((Style() & BS_NOTIFY) && !Notify(BN_SETFOCUS)) return;
    if (Is_Radio() && !in_click_ && !check_) Clicked();
}

void Button::Lose_Focus() {
    held_ = false;
    Release_Pointer(window_);
    Set_Pushed(false);
    Changed();
    if (Style() & BS_NOTIFY) Notify(BN_KILLFOCUS);
}

LRESULT Button::Answer_Input(UINT message, WPARAM wparam, LPARAM lparam) {
    switch (message) {
    case WM_LBUTTONDOWN:
        Pointer_Down();
        return 0;
    case WM_MOUSEMOVE:
        if (held_) SendMessageA(window_, BM_SETSTATE, Is_In_Client(lparam), 0);
        return 0;
    case WM_LBUTTONUP:
        Pointer_Up(lparam);
        return 0;
    case WM_KEYDOWN:
        if (wparam == VK_SPACE) SendMessageA(window_, BM_SETSTATE, TRUE, 0);
        return 0;
    case WM_KEYUP:
        if (wparam != VK_SPACE || !pushed_) return 0;
        SendMessageA(window_, BM_SETSTATE, FALSE, 0);
        if (Find_Window(window_)) Clicked();
        return 0;
    case WM_SETFOCUS:
        Gain_Focus();
        return 0;
    case WM_KILLFOCUS:
        Lose_Focus();
        return 0;
    case WM_CANCELMODE:
        held_ = false;
        Set_Pushed(false);
        return Control::Answer(message, wparam, lparam);
    default:
        return Control::Answer(message, wparam, lparam);
    }
}
