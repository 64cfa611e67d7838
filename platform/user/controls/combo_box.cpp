#include <platform/user/controls/combo_box.h>

#include <platform/user/controls/edit.h>
#include <platform/user/controls/list_box.h>

#include <algorithm>

namespace {

const BuiltInClass combo_class("ComboBox", Control_Procedure<ComboBox>);

constexpr int List_Id = 1000, Edit_Id = 1001;
constexpr LONG Least_Lines = 8; // that a list shows if it has them, however low it was wanted

struct StylePair {
    DWORD combo, part;
};

DWORD Translated(DWORD style, std::initializer_list<StylePair> pairs) {
    DWORD out = 0;
    for (const StylePair &each : pairs) {
        if (style & each.combo) out |= each.part;
    }
    return out;
}

// It stands on the desktop, and goes with the combo box however that goes.
void Give_List_To(HWND combo, HWND list) {
    const TreeLock lock;
    const WindowPointer owner = Find_Window(combo), owned = Find_Window(list);
    if (owner && owned) owned->owner = owner.get();
}

} // namespace

LRESULT ComboBox::To_List(UINT message, WPARAM wparam, LPARAM lparam) const {
    return SendMessageA(list_, message, wparam, lparam);
}

LRESULT ComboBox::To_Edit(UINT message, WPARAM wparam, LPARAM lparam) const {
    return SendMessageA(edit_, message, wparam, lparam);
}

LRESULT ComboBox::Create(const CREATESTRUCTA &create) {
    wanted_height_ = create.cy;
    const DWORD style = Style(), visible = Drops() ? 0 : WS_VISIBLE;
    const DWORD list_style = WS_CHILD | WS_BORDER | visible | LBS_NOTIFY | LBS_HASSTRINGS |
                             Translated(style, {{CBS_SORT, LBS_SORT}, {WS_VSCROLL, WS_VSCROLL}});
    list_ =
        CreateWindowExA(0, "ComboLBox", "", list_style, 0, 0, 0, 0, Drops() ? GetDesktopWindow() : window_,
                        reinterpret_cast<HMENU>(List_Id), create.hInstance, nullptr);
    if (!list_) return -1;
    Contents_Of<ListBox>(list_)->Belong_To(window_);
    if (Drops()) Give_List_To(window_, list_);
    if (Kind() != CBS_DROPDOWNLIST) {
        const DWORD edit_style = WS_CHILD | WS_VISIBLE |
                                 Translated(style, {{CBS_AUTOHSCROLL, ES_AUTOHSCROLL},
                                                    {CBS_UPPERCASE, ES_UPPERCASE},
                                                    {CBS_LOWERCASE, ES_LOWERCASE},
                                                    {WS_DISABLED, WS_DISABLED}});
        edit_ = CreateWindowExA(0, "Edit", create.lpszName, edit_style, 0, 0, 0, 0, window_,
                                reinterpret_cast<HMENU>(Edit_Id), create.hInstance, nullptr);
        if (!edit_) return -1;
        Contents_Of<Edit>(edit_)->Belong_To(window_);
    }
    SetWindowPos(window_, nullptr, 0, 0, create.cx, create.cy, SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
    Lay_Out();
    return 0;
}

RECT ComboBox::Arrow() const {
    const RECT client = Client();
    if (!Drops()) return {};
    return {client.right - Edge - Arrow_Width, Edge, client.right - Edge, client.bottom - Edge};
}

void ComboBox::Lay_Out() {
    const RECT client = Client();
    const LONG height = Height_Without_List(), right = Drops() ? Arrow().left : client.right - Edge;
    constexpr LONG Margin = Edge + 1;
    if (edit_)
        MoveWindow(edit_, Margin, Margin, static_cast<int>(std::max(right - Margin, 0L)),
                   static_cast<int>(height - 2 * Margin), TRUE);
    if (!Drops())
        MoveWindow(list_, 0, static_cast<int>(height), static_cast<int>(client.right),
                   static_cast<int>(std::max(client.bottom - height, 0L)), TRUE);
}

// The height that is wanted is that of window and list together.
void ComboBox::Keep_Height(WINDOWPOS *wanted) {
    if (!wanted || !Drops() || (wanted->flags & SWP_NOSIZE)) return;
    if (wanted->cy > Height_Without_List()) wanted_height_ = wanted->cy;
    wanted->cy = static_cast<int>(Height_Without_List());
}

void ComboBox::Take_Font(WPARAM font, LPARAM redraw) {
    Control::Answer(WM_SETFONT, font, redraw);
    To_List(WM_SETFONT, font, redraw);
    if (edit_) To_Edit(WM_SETFONT, font, redraw);
    RECT place;
    if (!GetWindowRect(window_, &place)) return;
    if (Drops())
        SetWindowPos(window_, nullptr, 0, 0, static_cast<int>(place.right - place.left),
                     static_cast<int>(wanted_height_), SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
    Lay_Out();
}

// One that does not drop down goes as a child.
void ComboBox::Destroy_List() {
    Release_Pointer(list_);
    if (!list_ || !Drops()) return;
    DestroyWindow(list_);
    list_ = nullptr;
}

RECT ComboBox::Place_Of_List() const {
    RECT place = {};
    GetWindowRect(Drops() ? window_ : list_, &place);
    if (!Drops()) return place;
    const LONG lines = std::clamp<LONG>(To_List(LB_GETCOUNT), 1, Least_Lines);
    const LONG least = lines * Line_Height() + 2, wanted = wanted_height_ - (place.bottom - place.top);
    return {place.left, place.bottom, place.right, place.bottom + std::max(least, wanted)};
}

LRESULT ComboBox::Give_Place(RECT *out) const {
    if (!out || !GetWindowRect(window_, out)) return FALSE;
    out->bottom = Place_Of_List().bottom;
    return TRUE;
}

LRESULT ComboBox::Answer_Window(UINT message, WPARAM wparam, LPARAM lparam) {
    switch (message) {
    case WM_CREATE:
        return lparam && !list_ ? Create(*reinterpret_cast<const CREATESTRUCTA *>(lparam)) : -1;
    case WM_DESTROY:
        Destroy_List();
        return 0;
    case WM_NCDESTROY: // a subclass may have kept WM_DESTROY to itself
        Destroy_List();
        return Control::Answer(message, wparam, lparam);
    case WM_WINDOWPOSCHANGING:
        Keep_Height(reinterpret_cast<WINDOWPOS *>(lparam));
        return 0;
    case WM_SIZE:
        if (list_) Lay_Out();
        return 0;
    case WM_SETFONT:
        Take_Font(wparam, lparam);
        return 0;
    case WM_ENABLE:
        if (edit_) EnableWindow(edit_, wparam != 0);
        if (!Drops()) EnableWindow(list_, wparam != 0);
        return Control::Answer(message, wparam, lparam);
    case WM_SETREDRAW:
        To_List(message, wparam, lparam);
        if (edit_) To_Edit(message, wparam, lparam);
        return Control::Answer(message, wparam, lparam);
    default:
        return Answer_Input(message, wparam, lparam);
    }
}
