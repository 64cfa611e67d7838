// What a combo box hears from its parts, the pointer and the keys.

#include <platform/user/controls/combo_box.h>

#include <platform/user/snapshot/picture.h>

void ComboBox::Drop() {
    if (!Drops() || dropped_ || !Can_Be_Used()) return;
    if (!Notify(CBN_DROPDOWN) || dropped_) return;
    if (!Can_Be_Used()) {
        Notify(CBN_CLOSEUP);
        return;
    }
    if (edit_) {
        std::string text;
        const bool known = Within_Memory(false, [&] { return text = Text_Of_Window(edit_), true; });
        const LRESULT line =
            known ? To_List(LB_FINDSTRINGEXACT, static_cast<WPARAM>(-1), As_Parameter(text.c_str())) : LB_ERR;
        if (line != LB_ERR) To_List(LB_SETCURSEL, static_cast<WPARAM>(line));
    }
    dropped_ = true;
    const RECT place = Place_Of_List();
    SetWindowPos(list_, HWND_TOP, static_cast<int>(place.left), static_cast<int>(place.top),
                 static_cast<int>(place.right - place.left), static_cast<int>(place.bottom - place.top),
                 SWP_SHOWWINDOW | SWP_NOACTIVATE);
    Capture_Pointer(list_, window_);
    Changed();
}

// `notice`: whether what was chosen is meant. False when the window has gone.
bool ComboBox::Close(UINT notice) {
    if (!dropped_) return true;
    dropped_ = false;
    To_List(WM_CANCELMODE); // a button may be held down over it
    Release_Pointer(list_); // also when its procedure does not answer that
    ShowWindow(list_, SW_HIDE);
    Changed();
    return Notify(notice) && Notify(CBN_CLOSEUP);
}

void ComboBox::Heard_Of_Choice() {
    const bool there = dropped_ && !by_key_ ? Close(CBN_SELENDOK) : Notify(CBN_SELENDOK);
    if (there && Notify(CBN_SELCHANGE)) Show_Choice();
}

// What was typed is no line any more.
void ComboBox::Heard_Of_Typing(UINT notice) {
    if (by_code_) return;
    if (notice == EN_UPDATE) {
        Notify(CBN_EDITUPDATE);
        return;
    }
    To_List(LB_SETCURSEL, static_cast<WPARAM>(-1));
    Notify(CBN_EDITCHANGE);
}

void ComboBox::Focus_Lost() {
    Changed();
    if (Close(CBN_SELENDCANCEL)) Notify(CBN_KILLFOCUS);
}

void ComboBox::Heard(HWND part, UINT notice) {
    if (part == list_) {
        if (notice == LBN_SELCHANGE) Heard_Of_Choice();
        return;
    }
    switch (notice) {
    case EN_UPDATE:
    case EN_CHANGE:
        return Heard_Of_Typing(notice);
    case EN_SETFOCUS:
        Notify(CBN_SETFOCUS);
        return;
    case EN_KILLFOCUS:
        return Focus_Lost();
    case EN_ERRSPACE:
        Notify(static_cast<UINT>(CBN_ERRSPACE));
        return;
    default:
        return;
    }
}

void ComboBox::Key(UINT key) {
    switch (key) {
    case VK_F4:
        if (dropped_)
            Close(CBN_SELENDOK);
        else
            Drop();
        return;
    case VK_RETURN:
        Close(CBN_SELENDOK);
        return;
    case VK_ESCAPE:
        Close(CBN_SELENDCANCEL);
        return;
    default:
        const WhileSet during(by_key_);
        To_List(WM_KEYDOWN, key);
    }
}

void ComboBox::Character(WPARAM typed) {
    const WhileSet during(by_key_);
    To_List(WM_CHAR, typed);
}

LRESULT ComboBox::Dialog_Code(const MSG *message) const {
    const bool closes = message && (message->wParam == VK_RETURN || message->wParam == VK_ESCAPE);
    return DLGC_WANTARROWS | DLGC_WANTCHARS | (dropped_ && closes ? DLGC_WANTMESSAGE : 0);
}

LRESULT ComboBox::Answer_Input(UINT message, WPARAM wparam, LPARAM lparam) {
    switch (message) {
    case WM_COMMAND:
        Heard(reinterpret_cast<HWND>(lparam), wparam >> 16);
        return 0;
    case WM_SETFOCUS:
        Changed();
        if (edit_)
            SetFocus(edit_);
        else
            Notify(CBN_SETFOCUS);
        return 0;
    case WM_KILLFOCUS:
        if (!edit_) Focus_Lost();
        return 0;
    case WM_LBUTTONDOWN:
        if (GetFocus() != (edit_ ? edit_ : window_)) SetFocus(window_);
        if (Find_Window(window_)) Drop();
        return 0;
    case WM_KEYDOWN:
        Key(wparam);
        return 0;
    case WM_CHAR:
        if (!edit_) Character(wparam);
        return 0;
    case WM_CANCELMODE:
        return Close(CBN_SELENDCANCEL) ? Control::Answer(message, wparam, lparam) : 0;
    case WM_GETDLGCODE:
        return Dialog_Code(reinterpret_cast<const MSG *>(lparam));
    default:
        return Control::Answer(message, wparam, lparam);
    }
}
