#include <platform/user/controls/button.h>

namespace {

const BuiltInClass button_class("Button", Control_Procedure<Button>);

// How many states BM_SETCHECK knows, by kind.
WPARAM Most_Check(DWORD kind) {
    switch (kind) {
    case BS_CHECKBOX:
    case BS_AUTOCHECKBOX:
    case BS_RADIOBUTTON:
    case BS_AUTORADIOBUTTON:
        return BST_CHECKED;
    case BS_3STATE:
    case BS_AUTO3STATE:
        return BST_INDETERMINATE;
    default:
        return BST_UNCHECKED;
    }
}

} // namespace

LRESULT Button::Dialog_Code() const {
    switch (Kind()) {
    case BS_PUSHBUTTON:
        return DLGC_BUTTON | DLGC_UNDEFPUSHBUTTON;
    case BS_DEFPUSHBUTTON:
        return DLGC_BUTTON | DLGC_DEFPUSHBUTTON;
    case BS_RADIOBUTTON:
    case BS_AUTORADIOBUTTON:
        return DLGC_BUTTON | DLGC_RADIOBUTTON;
    case BS_GROUPBOX:
        return DLGC_STATIC;
    default:
        return DLGC_BUTTON;
    }
}

LRESULT Button::State() const {
    return static_cast<LRESULT>(check_) | (pushed_ ? BST_PUSHED : 0) | (Has_Focus() ? BST_FOCUS : 0);
}

// Of a group of radio buttons the checked one is where Tab stops.
void Button::Set_Check(WPARAM check) {
    if (check > Most_Check(Kind())) check = Most_Check(Kind());
    if (Is_Radio()) {
        const DWORD style = check ? Style() | WS_TABSTOP : Style() & ~WS_TABSTOP;
        SetWindowLongA(window_, GWL_STYLE, static_cast<LONG>(style));
    }
    if (check_ == check) return;
    check_ = check;
    Changed();
}

void Button::Set_Kind(WPARAM kind) {
    const DWORD style = (Style() & ~BS_TYPEMASK) | (kind & BS_TYPEMASK);
    SetWindowLongA(window_, GWL_STYLE, static_cast<LONG>(style));
    Changed();
}

void Button::Set_Pushed(bool pushed) {
    if (pushed_ == pushed) return;
    pushed_ = pushed;
    Changed();
}

LRESULT Button::Answer(UINT message, WPARAM wparam, LPARAM lparam) {
    switch (message) {
    case BM_GETCHECK:
        return static_cast<LRESULT>(check_);
    case BM_SETCHECK:
        Set_Check(wparam);
        return 0;
    case BM_GETSTATE:
        return State();
    case BM_SETSTATE:
        Set_Pushed(wparam != 0);
        return 0;
    case BM_SETSTYLE:
        Set_Kind(wparam);
        return 0;
    case BM_CLICK:
        Click_By_Code();
        return 0;
    case WM_GETDLGCODE:
        return Dialog_Code();
    case WM_NCHITTEST:
        return Kind() == BS_GROUPBOX ? HTTRANSPARENT : HTCLIENT;
    default:
        return Kind() == BS_GROUPBOX ? Control::Answer(message, wparam, lparam)
                                     : Answer_Input(message, wparam, lparam);
    }
}
