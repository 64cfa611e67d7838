// The keys that move through a dialog.

#include <platform/user/controls/groups.h>
#include <platform/user/hands/keys.h>

#include <platform/kernel/outcome.h>

#include <algorithm>

namespace {

LRESULT Code_Of_Control(HWND control, const MSG *message) {
    return SendMessageA(control, WM_GETDLGCODE, message ? message->wParam : 0, As_Parameter(message));
}

bool Is_Radio_Button(HWND control) {
    return Code_Of_Control(control, nullptr) & DLGC_RADIOBUTTON;
}

// Where the keys arrive a field's text is selected whole, as if to be typed over.
void Go_To(HWND control) {
    SetFocus(control);
    const HWND there = GetFocus();
    if (there && (Code_Of_Control(there, nullptr) & DLGC_HASSETSEL)) SendMessageA(there, EM_SETSEL, 0, -1);
}

// The stop after or before the one with the focus, which may stand inside a stop.
HWND Next_Stop(const std::vector<HWND> &stops, HWND from, bool back) {
    if (stops.empty()) return nullptr;
    const auto holds = [from](HWND stop) { return stop == from || IsChild(stop, from); };
    const auto at = from ? std::find_if(stops.begin(), stops.end(), holds) : stops.end();
    if (at == stops.end()) return back ? stops.back() : stops.front();
    const auto index = static_cast<std::size_t>(at - stops.begin());
    return stops[(index + (back ? stops.size() - 1 : 1)) % stops.size()];
}

void Tab(HWND dialog) {
    std::vector<HWND> stops;
    const HWND focus = GetFocus();
    if (!Within_Memory(false, [&] { return stops = Tab_Stops(dialog, focus), true; })) return;
    if (const HWND next = Next_Stop(stops, focus, Is_Key_Down(VK_SHIFT))) Go_To(next);
}

// Arrows go to the next usable control of the group; a radio button that they reach is clicked.
void Arrow(HWND dialog, HWND focus, bool back) {
    if (focus == dialog) return; // its siblings are none of its controls
    std::vector<HWND> group;
    if (!Succeed_Or_Tell(Code_Of([&] { return Collect_Group(focus, group); }))) return;
    if (back) std::reverse(group.begin(), group.end());
    const auto at = std::find(group.begin(), group.end(), focus);
    if (at == group.end()) return;
    std::rotate(group.begin(), at + 1, group.end());
    for (const HWND each : group) {
        if (!IsWindowVisible(each) || !IsWindowEnabled(each)) continue;
        if (Code_Of_Control(each, nullptr) & DLGC_STATIC) continue;
        if (each == focus) return;
        SetFocus(each);
        const bool unclicked =
            Is_Radio_Button(each) && SendMessageA(each, BM_GETCHECK, 0, 0) == BST_UNCHECKED;
        if (unclicked) SendMessageA(each, BM_CLICK, 0, 0);
        return;
    }
}

// A button with the focus, else the dialog's default one, else IDOK. The focus stays.
void Enter(HWND dialog, HWND focus) {
    HWND button = nullptr;
    if (focus && (Code_Of_Control(focus, nullptr) & (DLGC_UNDEFPUSHBUTTON | DLGC_DEFPUSHBUTTON)))
        button = focus;
    for (HWND each = GetWindow(dialog, GW_CHILD); each && !button; each = GetWindow(each, GW_HWNDNEXT)) {
        if (Code_Of_Control(each, nullptr) & DLGC_DEFPUSHBUTTON) button = each;
    }
    if (button && !IsWindowEnabled(button)) return;
    const auto id = button ? static_cast<UINT>(GetDlgCtrlID(button)) & 0xFFFF : UINT{IDOK};
    if (!button) button = GetDlgItem(dialog, IDOK);
    SendMessageA(dialog, WM_COMMAND, id | BN_CLICKED << 16, As_Parameter(button));
}

void Escape(HWND dialog) {
    const HWND cancel = GetDlgItem(dialog, IDCANCEL);
    if (!cancel || IsWindowEnabled(cancel)) SendMessageA(dialog, WM_COMMAND, IDCANCEL, As_Parameter(cancel));
}

// False when the control wants the key itself.
bool Answer_Key(HWND dialog, const MSG &message) {
    const LRESULT code = Code_Of_Control(message.hwnd, &message);
    const auto wants = [code](LRESULT bits) { return (code & (bits | DLGC_WANTMESSAGE)) != 0; };
    switch (message.wParam) {
    case VK_TAB:
        return !wants(DLGC_WANTTAB) && (Tab(dialog), true);
    case VK_LEFT:
    case VK_UP:
        return !wants(DLGC_WANTARROWS) && (Arrow(dialog, message.hwnd, true), true);
    case VK_RIGHT:
    case VK_DOWN:
        return !wants(DLGC_WANTARROWS) && (Arrow(dialog, message.hwnd, false), true);
    case VK_RETURN:
        return !wants(0) && (Enter(dialog, message.hwnd), true);
    case VK_ESCAPE:
        return !wants(0) && (Escape(dialog), true);
    default:
        return false;
    }
}

} // namespace

extern "C" BOOL IsDialogMessageA(HWND dialog, MSG *message) {
    if (!message || !message->hwnd) return FALSE;
    if (message->hwnd != dialog && !IsChild(dialog, message->hwnd)) return FALSE;
    if (message->message == WM_KEYDOWN && Answer_Key(dialog, *message)) return TRUE;
    TranslateMessage(message);
    DispatchMessageA(message);
    return TRUE;
}
