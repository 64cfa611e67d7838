#include <platform/user/controls/list_box.h>

#include <platform/user/snapshot/picture.h>

#include <algorithm>

int ListBox::Line_At(LPARAM point) const {
    const int line = top_ + static_cast<int>(Point_Of(point).y / Line_Height());
    return Is_In_Client(point) && lines_.Has(line) ? line : -1;
}

// A combo box hears of everything, whatever the style.
bool ListBox::Tell(UINT notice) {
    if (combo_) {
        const auto id = static_cast<UINT>(GetDlgCtrlID(window_)) & 0xFFFF;
        SendMessageA(combo_, WM_COMMAND, id | notice << 16, As_Parameter(window_));
        return Find_Window(window_) != nullptr;
    }
    return !(Style() & LBS_NOTIFY) || Notify(notice);
}

void ListBox::Choose_By_Hand(int index) {
    if (!lines_.Has(index)) return;
    Choose(index);
    Tell(LBN_SELCHANGE);
}

void ListBox::Key(UINT key) {
    if (!lines_.Count()) return;
    const int last = lines_.Count() - 1, page = std::max(Lines_Shown() - 1, 1), at = lines_.chosen;
    int wanted;
    switch (key) {
    case VK_UP:
    case VK_LEFT:
        wanted = at - 1;
        break;
    case VK_DOWN:
    case VK_RIGHT:
        wanted = at + 1;
        break;
    case VK_PRIOR:
        wanted = at - page;
        break;
    case VK_NEXT:
        wanted = at + page;
        break;
    case VK_HOME:
        wanted = 0;
        break;
    case VK_END:
        wanted = last;
        break;
    default:
        return;
    }
    wanted = std::clamp(wanted, 0, last);
    if (wanted != at) Choose_By_Hand(wanted);
}

void ListBox::Character(char typed) {
    const int found = lines_.Find(lines_.chosen, {&typed, 1}, ListLines::Match::Beginning);
    if (found != -1 && found != lines_.chosen) Choose_By_Hand(found);
}

// While a combo box's list is down, it gets every press; one outside of it closes it.
void ListBox::Pointer_Down(LPARAM point) {
    if (combo_ && !Is_In_Client(point)) {
        Release_Pointer(window_);
        SendMessageA(combo_, CB_SHOWDROPDOWN, FALSE, 0);
        return;
    }
    const HWND wants_focus = combo_ ? combo_ : window_, focus = GetFocus();
    if (focus != wants_focus && !(focus && IsChild(wants_focus, focus))) SetFocus(wants_focus);
    if (!Find_Window(window_)) return;
    const int line = Line_At(point);
    if (line == -1) return;
    held_ = true;
    Capture_Pointer(window_, combo_ ? combo_ : window_);
    Choose(line);
}

void ListBox::Pointer_Up(LPARAM point) {
    if (!held_) return;
    held_ = false;
    Release_Pointer(window_);
    if (Line_At(point) != -1) Choose(Line_At(point));
    Tell(LBN_SELCHANGE);
}

LRESULT ListBox::Answer_Input(UINT message, WPARAM wparam, LPARAM lparam) {
    switch (message) {
    case WM_GETDLGCODE:
        return DLGC_WANTARROWS | DLGC_WANTCHARS;
    case WM_LBUTTONDOWN:
        Pointer_Down(lparam);
        return 0;
    case WM_LBUTTONUP:
        Pointer_Up(lparam);
        return 0;
    case WM_KEYDOWN:
        Key(wparam);
        return 0;
    case WM_CHAR:
        if (wparam > 32) Character(static_cast<char>(wparam));
        return 0;
    case WM_SETFOCUS:
        Changed();
        Tell(LBN_SETFOCUS);
        return 0;
    case WM_KILLFOCUS:
        Changed();
        Tell(LBN_KILLFOCUS);
        return 0;
    case WM_SIZE:
        Keep_Room_Filled();
        return Control::Answer(message, wparam, lparam);
    case WM_SETFONT:
        Control::Answer(message, wparam, lparam);
        Keep_Room_Filled();
        return 0;
    case WM_CANCELMODE:
        held_ = false;
        return Control::Answer(message, wparam, lparam);
    default:
        return Control::Answer(message, wparam, lparam);
    }
}

void ListBox::Draw(Picture &picture) const {
    const RECT client = Client();
    picture.Fill(client, Colour_White);
    for (int line = top_; line < lines_.Count(); ++line) {
        const LONG top = (line - top_) * Line_Height();
        if (top >= client.bottom) return;
        const RECT place = {0, top, client.right, top + Line_Height()};
        TextLook look;
        look.font = Font();
        look.enabled = Is_Enabled();
        if (line == lines_.chosen && look.enabled) {
            picture.Fill(place, Colour_Selection);
            look.colour = Colour_White;
        }
        picture.Text({2, place.top, place.right, place.bottom}, lines_.At(line).text, look);
    }
}
