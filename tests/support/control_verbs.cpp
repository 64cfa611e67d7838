#include <tests/support/control_verbs.h>

namespace {

struct NoticeName {
    const char *control_class;
    UINT notice;
    const char *name;
};

constexpr NoticeName Names[] = {
    {"Edit", EN_SETFOCUS, "EN_SETFOCUS"},
    {"Edit", EN_KILLFOCUS, "EN_KILLFOCUS"},
    {"Edit", EN_CHANGE, "EN_CHANGE"},
    {"Edit", EN_UPDATE, "EN_UPDATE"},
    {"Edit", EN_MAXTEXT, "EN_MAXTEXT"},
    {"Button", BN_CLICKED, "BN_CLICKED"},
    {"Button", BN_SETFOCUS, "BN_SETFOCUS"},
    {"Button", BN_KILLFOCUS, "BN_KILLFOCUS"},
    {"Static", STN_CLICKED, "STN_CLICKED"},
    {"ListBox", LBN_SELCHANGE, "LBN_SELCHANGE"},
    {"ListBox", LBN_SETFOCUS, "LBN_SETFOCUS"},
    {"ListBox", LBN_KILLFOCUS, "LBN_KILLFOCUS"},
    {"Combo", CBN_SELCHANGE, "CBN_SELCHANGE"},
    {"Combo", CBN_SETFOCUS, "CBN_SETFOCUS"},
    {"Combo", CBN_KILLFOCUS, "CBN_KILLFOCUS"},
    {"Combo", CBN_EDITCHANGE, "CBN_EDITCHANGE"},
    {"Combo", CBN_EDITUPDATE, "CBN_EDITUPDATE"},
    {"Combo", CBN_DROPDOWN, "CBN_DROPDOWN"},
    {"Combo", CBN_CLOSEUP, "CBN_CLOSEUP"},
    {"Combo", CBN_SELENDOK, "CBN_SELENDOK"},
    {"Combo", CBN_SELENDCANCEL, "CBN_SELENDCANCEL"},
};

bool Is_Combo(HWND window) {
    char name[50] = "";
    GetClassNameA(window, name, sizeof name);
    return std::string(name).starts_with("Combo");
}

std::string Name_Of(HWND control, UINT notice) {
    char name[50] = "";
    GetClassNameA(control, name, sizeof name);
    for (const NoticeName &each : Names) {
        if (std::string(name).starts_with(each.control_class) && each.notice == notice) return each.name;
    }
    return std::to_string(notice);
}

} // namespace

TestDialog::TestDialog(RECT place, const char *title)
    : window_(
          WS_POPUP | WS_CAPTION | WS_SYSMENU | WS_VISIBLE, place, nullptr, 0,
          [this](HWND, UINT message, WPARAM wparam, LPARAM lparam) { return Hear(message, wparam, lparam); },
          title) {}

std::optional<LRESULT> TestDialog::Hear(UINT message, WPARAM wparam, LPARAM lparam) {
    if (message != WM_COMMAND) return std::nullopt;
    const int id = wparam & 0xFFFF;
    const UINT notice = wparam >> 16;
    told_ += (told_.empty() ? "" : " ") + std::to_string(id) + ":" +
             Name_Of(reinterpret_cast<HWND>(lparam), notice);
    if (on_notice) on_notice(id, notice);
    return 0;
}

HWND TestDialog::Add(const char *control_class, const char *text, RECT r, DWORD style, int id,
                     DWORD extended_style) {
    const HWND control = CreateWindowExA(
        extended_style, control_class, text, WS_CHILD | WS_VISIBLE | style, static_cast<int>(r.left),
        static_cast<int>(r.top), static_cast<int>(r.right - r.left), static_cast<int>(r.bottom - r.top),
        window_, reinterpret_cast<HMENU>(id), nullptr, nullptr);
    SendMessageA(control, WM_SETFONT, reinterpret_cast<WPARAM>(GetStockObject(DEFAULT_GUI_FONT)), 0);
    return control;
}

std::string TestDialog::Told() {
    return std::exchange(told_, {});
}

std::string Line_Of(HWND list, int line) {
    char text[300];
    const UINT message = Is_Combo(list) ? CB_GETLBTEXT : LB_GETTEXT;
    const bool there =
        SendMessageA(list, message, static_cast<WPARAM>(line), reinterpret_cast<LPARAM>(text)) >= 0;
    return there ? text : "none";
}

std::string Lines_Of(HWND list) {
    std::string lines;
    const LRESULT count = SendMessageA(list, Is_Combo(list) ? CB_GETCOUNT : LB_GETCOUNT, 0, 0);
    for (int i = 0; i < count; ++i) lines += (i ? " " : "") + Line_Of(list, i);
    return lines;
}
