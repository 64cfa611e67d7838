#include <platform/user/controls/combo_box_ex.h>

#include <platform/user/controls/combo_box.h>
#include <platform/user/snapshot/picture.h>

#include <algorithm>
#include <cstring>

namespace {

const BuiltInClass extended_class("ComboBoxEx32", Control_Procedure<ComboBoxEx>);

constexpr DWORD Passed_On = 3 | CBS_AUTOHSCROLL | WS_VSCROLL | WS_DISABLED;

void Copy_Text(COMBOBOXEXITEM &item, const std::string &text) {
    if (!item.pszText || item.cchTextMax <= 0) return;
    const std::size_t length = std::min(text.size(), static_cast<std::size_t>(item.cchTextMax) - 1);
    std::memcpy(item.pszText, text.data(), length);
    item.pszText[length] = 0;
}

} // namespace

LRESULT ComboBoxEx::To_Combo(UINT message, WPARAM wparam, LPARAM lparam) const {
    return combo_ ? SendMessageA(combo_, message, wparam, lparam) : CB_ERR;
}

LRESULT ComboBoxEx::Create(const CREATESTRUCTA &create) {
    combo_ = CreateWindowExA(0, "ComboBox", create.lpszName, WS_CHILD | WS_VISIBLE | (Style() & Passed_On), 0,
                             0, create.cx, create.cy, window_, reinterpret_cast<HMENU>(GetDlgCtrlID(window_)),
                             create.hInstance, nullptr);
    if (!combo_) return -1;
    Fit(create.cx, create.cy);
    return 0;
}

// The combo box takes the size that is wanted, and this window the one that comes of it.
void ComboBoxEx::Fit(int width, int height) {
    if (fitting_) return;
    const WhileSet fitting(fitting_);
    MoveWindow(combo_, 0, 0, width, height, TRUE);
    RECT place;
    if (GetWindowRect(combo_, &place))
        SetWindowPos(window_, nullptr, 0, 0, static_cast<int>(place.right - place.left),
                     static_cast<int>(place.bottom - place.top), SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
}

// A combo box that drops down finds its height itself.
void ComboBoxEx::Take_Font(WPARAM font, LPARAM redraw) {
    Control::Answer(WM_SETFONT, font, redraw);
    To_Combo(WM_SETFONT, font, redraw);
    RECT place;
    if (!GetWindowRect(window_, &place)) return;
    const LONG height = (Style() & 3) == CBS_SIMPLE ? place.bottom - place.top : 0;
    Fit(static_cast<int>(place.right - place.left), static_cast<int>(height));
}

void ComboBoxEx::Keep_Up_With(const WINDOWPOS &place) {
    if (!(place.flags & SWP_NOSIZE)) Fit(place.cx, place.cy);
}

HWND ComboBoxEx::Edit_Part() const {
    const ComboBox *combo = Contents_Of<ComboBox>(combo_);
    return combo ? combo->Edit_Part() : nullptr;
}

LRESULT ComboBoxEx::Insert(const COMBOBOXEXITEM &item) const {
    const char *text = (item.mask & CBEIF_TEXT) && item.pszText ? item.pszText : "";
    const LRESULT line = To_Combo(CB_INSERTSTRING, static_cast<WPARAM>(item.iItem), As_Parameter(text));
    if (line >= 0 && (item.mask & CBEIF_LPARAM))
        To_Combo(CB_SETITEMDATA, static_cast<WPARAM>(line), item.lParam);
    return std::max<LRESULT>(line, -1);
}

LRESULT ComboBoxEx::Give(COMBOBOXEXITEM &item) const {
    const auto line = static_cast<WPARAM>(item.iItem);
    const bool of_edit = item.iItem == -1 && Edit_Part();
    const LRESULT length = of_edit ? GetWindowTextLengthA(Edit_Part()) : To_Combo(CB_GETLBTEXTLEN, line);
    if (length < 0) return FALSE;
    if (item.mask & CBEIF_LPARAM) item.lParam = of_edit ? 0 : To_Combo(CB_GETITEMDATA, line);
    if (!(item.mask & CBEIF_TEXT)) return TRUE;
    return Within_Memory(FALSE, [&] {
        std::string text(static_cast<std::size_t>(length) + 1, 0);
        if (of_edit)
            GetWindowTextA(Edit_Part(), text.data(), static_cast<int>(text.size()));
        else
            To_Combo(CB_GETLBTEXT, line, As_Parameter(text.data()));
        text.pop_back();
        Copy_Text(item, text);
        return TRUE;
    });
}

// The new line goes in before the old one goes out, so that nothing is lost without memory.
LRESULT ComboBoxEx::Replace_Text(int line, const char *text) const {
    const auto at = static_cast<WPARAM>(line);
    const LPARAM data = To_Combo(CB_GETITEMDATA, at);
    const LRESULT chosen = To_Combo(CB_GETCURSEL);
    if (To_Combo(CB_INSERTSTRING, at, As_Parameter(text)) < 0) return FALSE;
    To_Combo(CB_SETITEMDATA, at, data);
    To_Combo(CB_DELETESTRING, at + 1);
    if (chosen == line) To_Combo(CB_SETCURSEL, at);
    return TRUE;
}

LRESULT ComboBoxEx::Set(const COMBOBOXEXITEM &item) const {
    const char *text = item.pszText ? item.pszText : "";
    if (item.iItem == -1) return (item.mask & CBEIF_TEXT) && Edit_Part() && SetWindowTextA(Edit_Part(), text);
    if (item.iItem < 0 || item.iItem >= To_Combo(CB_GETCOUNT)) return FALSE;
    if ((item.mask & CBEIF_TEXT) && !Replace_Text(item.iItem, text)) return FALSE;
    if (item.mask & CBEIF_LPARAM) To_Combo(CB_SETITEMDATA, static_cast<WPARAM>(item.iItem), item.lParam);
    return TRUE;
}

LRESULT ComboBoxEx::Answer_Window(UINT message, WPARAM wparam, LPARAM lparam) {
    switch (message) {
    case WM_CREATE:
        return lparam && !combo_ ? Create(*reinterpret_cast<const CREATESTRUCTA *>(lparam)) : -1;
    case WM_WINDOWPOSCHANGED:
        if (lparam) Keep_Up_With(*reinterpret_cast<const WINDOWPOS *>(lparam));
        return Control::Answer(message, wparam, lparam);
    case WM_SETFOCUS:
        SetFocus(combo_);
        return 0;
    case WM_ENABLE:
        EnableWindow(combo_, wparam != 0);
        return 0;
    case WM_COMMAND:
        if (reinterpret_cast<HWND>(lparam) == combo_) Notify(wparam >> 16);
        return 0;
    case WM_SETFONT:
        Take_Font(wparam, lparam);
        return 0;
    case WM_SETREDRAW:
    case WM_SETTEXT:
    case WM_GETTEXT:
    case WM_GETTEXTLENGTH:
        return To_Combo(message, wparam, lparam);
    default:
        return Control::Answer(message, wparam, lparam);
    }
}

LRESULT ComboBoxEx::Answer(UINT message, WPARAM wparam, LPARAM lparam) {
    switch (message) {
    case CBEM_INSERTITEM:
        return lparam ? Insert(*reinterpret_cast<const COMBOBOXEXITEM *>(lparam)) : -1;
    case CBEM_GETITEM:
        return lparam && Give(*reinterpret_cast<COMBOBOXEXITEM *>(lparam));
    case CBEM_SETITEM:
        return lparam && Set(*reinterpret_cast<const COMBOBOXEXITEM *>(lparam));
    case CBEM_GETCOMBOCONTROL:
        return As_Parameter(combo_);
    case CBEM_GETEDITCONTROL:
        return As_Parameter(Edit_Part());
    default:
        const bool of_a_combo = message >= CB_GETEDITSEL && message <= CB_FINDSTRINGEXACT;
        return of_a_combo ? To_Combo(message, wparam, lparam) : Answer_Window(message, wparam, lparam);
    }
}
