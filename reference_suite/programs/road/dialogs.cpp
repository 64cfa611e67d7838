#include <reference_suite/programs/road/dialogs.h>

#include <reference_suite/programs/road/narrator.h>
#include <reference_suite/programs/road/pictures.h>

#include <kelmara/kelmara.h>

#include <platform/gdi.h>
#include <platform/user.h>

#include <cstdint>
#include <string>

namespace {

struct Control {
    const char *control_class;
    const char *text;
    DWORD style;
    RECT place;
    int id;
};

constexpr DWORD Field = WS_TABSTOP | WS_BORDER | ES_AUTOHSCROLL;
constexpr int Frame = 20, Cancel = IDCANCEL;
constexpr Control Controls[] = {
    {"Static", "^KMSTR_ACCOUNT", SS_LEFT, {12, 14, 112, 30}, 0},
    {"Edit", "", Field, {120, 10, 330, 32}, 10},
    {"Static", "^KMSTR_USER_NAME", SS_LEFT, {12, 44, 112, 60}, 0},
    {"Edit", "Ann Example", Field, {120, 40, 330, 62}, 11},
    {"Static", "^KMSTR_PASSWORD", SS_LEFT, {12, 74, 112, 90}, 0},
    {"Edit", "secret", Field | ES_PASSWORD, {120, 70, 330, 92}, 12},
    {"Button", "^KMSTR_SAVE_PASSWORD", WS_TABSTOP | BS_AUTOCHECKBOX, {120, 98, 330, 116}, 13},
    {"Button", "^KMSTR_KIND_MODEM", BS_GROUPBOX, {8, 122, 334, 192}, Frame},
    {"Static", "^KMSTR_PHONE_NUMBER", SS_LEFT, {16, 144, 112, 160}, 0},
    {"Edit", "+1 (206) 5550100", Field, {120, 140, 326, 162}, 14},
    {"Button", "^KMSTR_USE_AREA_CODE", WS_TABSTOP | BS_AUTOCHECKBOX, {120, 168, 326, 186}, 15},
    {"Button", "^KMSTR_CONNECT", WS_TABSTOP | BS_DEFPUSHBUTTON, {150, 202, 236, 226}, IDOK},
    {"Button", "^KMSTR_CANCEL", WS_TABSTOP, {244, 202, 330, 226}, Cancel},
};

UINT As_Id(HMENU menu) {
    return static_cast<UINT>(reinterpret_cast<std::uintptr_t>(menu));
}

HMENU Make_Menu() {
    const HMENU bar = CreateMenu(), file = CreatePopupMenu(), help = CreatePopupMenu();
    AppendMenuA(file, MF_STRING, 101, "^KMSTR_MENU_CONNECT");
    AppendMenuA(file, MF_STRING, 102, "^KMSTR_MENU_DISCONNECT");
    AppendMenuA(file, MF_SEPARATOR, 0, nullptr);
    AppendMenuA(file, MF_STRING, 103, "^KMSTR_MENU_EXIT");
    AppendMenuA(help, MF_STRING, 104, "^KMSTR_MENU_ABOUT");
    AppendMenuA(bar, MF_POPUP, As_Id(file), "^KMSTR_MENU_FILE");
    AppendMenuA(bar, MF_POPUP, As_Id(help), "^KMSTR_MENU_HELP");
    return bar;
}

class Dialog {
  public:
    Dialog() {
        constexpr DWORD style = WS_POPUP | WS_CAPTION | WS_SYSMENU | WS_VISIBLE;
        window_ = CreateWindowExA(WS_EX_DLGMODALFRAME, "#32770", "^KMSTR_CONNECT_TITLE", style, 100, 100, 350,
                                  290, nullptr, Make_Menu(), nullptr, nullptr);
        Require(window_ != nullptr, "a dialog can be made");
        for (const Control &each : Controls) {
            const RECT &place = each.place;
            const HWND control = CreateWindowExA(
                0, each.control_class, each.text, WS_CHILD | WS_VISIBLE | each.style,
                static_cast<int>(place.left), static_cast<int>(place.top),
                static_cast<int>(place.right - place.left), static_cast<int>(place.bottom - place.top),
                window_, reinterpret_cast<HMENU>(each.id), nullptr, nullptr);
            SendMessageA(control, WM_SETFONT, reinterpret_cast<WPARAM>(GetStockObject(DEFAULT_GUI_FONT)), 0);
        }
    }
    ~Dialog() { DestroyWindow(window_); }
    Dialog(const Dialog &) = delete;
    Dialog &operator=(const Dialog &) = delete;
    operator HWND() const { return window_; }

  private:
    HWND window_;
};

std::string Text_Of_Item(HWND dialog, int id) {
    char text[512] = "";
    GetWindowTextA(GetDlgItem(dialog, id), text, sizeof text);
    return text;
}

std::string First_Menu_Item(HWND dialog) {
    char text[512] = "";
    GetMenuStringA(GetSubMenu(GetMenu(dialog), 0), 0, text, sizeof text, MF_BYPOSITION);
    return text;
}

std::string Translate(HWND dialog, const char *language) {
    CWorldBeat beat;
    Require(beat.Load_Localization((std::string(language) + ".ltx").c_str(), false) == 0,
            "the language's strings can be loaded");
    beat.Localize_Dialog(dialog);
    beat.Localize_Menu(GetMenu(dialog));
    Take_Picture(dialog, std::string("dialog_") + language);
    return Text_Of_Item(dialog, Cancel);
}

} // namespace

void Translate_A_Dialog() {
    Begin_Chapter("A dialog in two languages");
    const Dialog english, german;
    Tell("Pictures of a dialog as it was written, in English and in German:");
    Take_Picture(english, "dialog_before");
    Require(Translate(english, "english") == "Cancel" && Translate(german, "german") == "Abbrechen",
            "the button has its text in either language");
    Require(First_Menu_Item(german) == "&Verbinden\tStrg+O", "the menu has its text, with a real tab");

    Hide_Bound_Items(english, Frame);
    Tell("and with the telephone's part folded away:");
    Take_Picture(english, "dialog_folded");
    Save_Window_Position("Road", english);
    Restore_Saved_Window_Position("Road", german, false);
    Require(GetWindowHeight(german) == GetWindowHeight(english), "a saved position comes back");
}
