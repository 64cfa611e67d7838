// What a combo box answers about its lines and its text.

#include <platform/user/controls/combo_box.h>

#include <algorithm>
#include <cstring>

namespace {

struct SameMessage {
    UINT combo, list;
};

// What the list answers alone.
constexpr SameMessage Same_Messages[] = {{CB_ADDSTRING, LB_ADDSTRING},
                                         {CB_INSERTSTRING, LB_INSERTSTRING},
                                         {CB_DELETESTRING, LB_DELETESTRING},
                                         {CB_GETCOUNT, LB_GETCOUNT},
                                         {CB_GETCURSEL, LB_GETCURSEL},
                                         {CB_GETLBTEXT, LB_GETTEXT},
                                         {CB_GETLBTEXTLEN, LB_GETTEXTLEN},
                                         {CB_FINDSTRING, LB_FINDSTRING},
                                         {CB_GETITEMDATA, LB_GETITEMDATA},
                                         {CB_SETITEMDATA, LB_SETITEMDATA},
                                         {CB_FINDSTRINGEXACT, LB_FINDSTRINGEXACT}};

} // namespace

std::string ComboBox::Chosen_Text() const {
    const auto chosen = static_cast<WPARAM>(To_List(LB_GETCURSEL));
    const LRESULT length = To_List(LB_GETTEXTLEN, chosen);
    if (length < 0) return {};
    std::string text(static_cast<std::size_t>(length) + 1, 0);
    To_List(LB_GETTEXT, chosen, As_Parameter(text.data()));
    text.pop_back();
    return text;
}

LRESULT ComboBox::Give_Chosen_Text(WPARAM size, char *out) const {
    if (size == 0 || !out) return 0;
    std::string text;
    const bool known = Within_Memory(false, [&] { return text = Chosen_Text(), true; });
    const std::size_t length = known ? std::min<std::size_t>(text.size(), size - 1) : 0;
    std::memcpy(out, text.data(), length);
    out[length] = 0;
    return static_cast<LRESULT>(length);
}

// The edit takes the text of the line that is chosen.
void ComboBox::Show_Choice() {
    Changed();
    if (!edit_) return;
    std::string text;
    if (!Within_Memory(false, [&] { return text = Chosen_Text(), true; })) return;
    const WhileSet change(by_code_);
    To_Edit(WM_SETTEXT, 0, As_Parameter(text.c_str()));
    if (Find_Window(edit_)) To_Edit(EM_SETSEL, 0, -1);
}

LRESULT ComboBox::Set_Text(LPARAM text) {
    if (!edit_) return CB_ERR;
    const WhileSet change(by_code_);
    const LRESULT set = To_Edit(WM_SETTEXT, 0, text);
    if (Find_Window(window_)) To_List(LB_SETCURSEL, static_cast<WPARAM>(-1));
    return set;
}

LRESULT ComboBox::Set_Edit_Selection(LPARAM packed) const {
    if (!edit_) return CB_ERR;
    const POINT ends = Point_Of(packed);
    return To_Edit(EM_SETSEL, static_cast<WPARAM>(ends.x), ends.y);
}

LRESULT ComboBox::Answer_About_Text(UINT message, WPARAM wparam, LPARAM lparam) {
    switch (message) {
    case WM_SETTEXT:
        return Set_Text(lparam);
    case WM_GETTEXT:
        return edit_ ? To_Edit(message, wparam, lparam)
                     : Give_Chosen_Text(wparam, reinterpret_cast<char *>(lparam));
    case WM_GETTEXTLENGTH:
        return edit_ ? To_Edit(message)
                     : std::max(To_List(LB_GETTEXTLEN, static_cast<WPARAM>(To_List(LB_GETCURSEL))), 0L);
    case CB_LIMITTEXT:
        if (edit_) To_Edit(EM_LIMITTEXT, wparam);
        return TRUE;
    case CB_GETEDITSEL:
        return edit_ ? To_Edit(EM_GETSEL, wparam, lparam) : CB_ERR;
    case CB_SETEDITSEL:
        return Set_Edit_Selection(lparam);
    default:
        return Answer_Window(message, wparam, lparam);
    }
}

LRESULT ComboBox::Answer_About_Lines(UINT message, WPARAM wparam, LPARAM lparam) {
    LRESULT result;
    switch (message) {
    case CB_SETCURSEL:
        result = To_List(LB_SETCURSEL, wparam);
        if (result == LB_ERR) To_List(LB_SETCURSEL, static_cast<WPARAM>(-1));
        Show_Choice();
        return result;
    case CB_SELECTSTRING:
        result = To_List(LB_SELECTSTRING, wparam, lparam);
        if (result != LB_ERR) Show_Choice();
        return result;
    case CB_RESETCONTENT:
        To_List(LB_RESETCONTENT);
        Show_Choice();
        return CB_OKAY;
    case CB_SHOWDROPDOWN:
        if (wparam)
            Drop();
        else
            Close(CBN_SELENDCANCEL);
        return TRUE;
    case CB_GETDROPPEDSTATE:
        return dropped_;
    case CB_GETDROPPEDCONTROLRECT:
        return Give_Place(reinterpret_cast<RECT *>(lparam));
    default:
        return Answer_About_Text(message, wparam, lparam);
    }
}

LRESULT ComboBox::Answer(UINT message, WPARAM wparam, LPARAM lparam) {
    for (const SameMessage &each : Same_Messages) {
        if (each.combo == message) {
            const LRESULT result = To_List(each.list, wparam, lparam);
            if (!edit_ && message != CB_GETCURSEL) Changed();
            return result;
        }
    }
    return Answer_About_Lines(message, wparam, lparam);
}
