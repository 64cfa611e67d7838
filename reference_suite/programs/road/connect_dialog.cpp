#include <reference_suite/programs/road/connect_dialog.h>

#include <reference_suite/programs/road/narrator.h>

#include <kelmara/kelmara.h>

#include <platform/controls.h>
#include <platform/gdi.h>

#include <vector>

namespace connect {
namespace {

struct Control {
    const char *control_class;
    int id;
    const char *text;
    DWORD style;
    RECT place;
    long layout;
    int neighbour;
};

constexpr DWORD Check = WS_TABSTOP | BS_AUTOCHECKBOX, Radio = BS_AUTORADIOBUTTON;
constexpr long With_Window = APM_TEXT_FIXED | APM_KEEP_RIGHT | APM_RESIZE_WITH_PARENT;
constexpr long Fits = APM_DEFAULT_PADDING;
constexpr long Not_Narrower = Fits | APM_KEEP_MIN_WIDTH;
constexpr long Button = Not_Narrower | APM_KEEP_BOTTOM;
constexpr long No_Layout = -1; // a group box
// What is measured of a control's window is kept of its client area: it moves by both of its borders.
constexpr int Drift = 2;
constexpr int Width = 372, Height = 276;

constexpr Control Controls[] = {
    {"Static", User_Label, "^KMSTR_USER_NAME", SS_LEFT, {12, 14, 92, 30}, Fits, 0},
    {"Edit",
     User,
     "",
     WS_TABSTOP | WS_BORDER | ES_AUTOHSCROLL,
     {96, 10, 360 - Drift, 32},
     With_Window | APM_STRETCH_FROM_NEIGHBOUR,
     User_Label},
    {"Static",
     Account_Label,
     "^KMSTR_ACCOUNT",
     SS_LEFT,
     {12, 44, 92, 60},
     APM_TEXT_FIXED | APM_MATCH_NEIGHBOUR_WIDTH,
     User_Label},
    {"ComboBoxEx32",
     Account,
     "",
     WS_TABSTOP | CBS_DROPDOWNLIST,
     {96, 40, 360, 140},
     APM_TEXT_FIXED | APM_MATCH_NEIGHBOUR_WIDTH,
     User},
    {"Button",
     Remember,
     "^KMSTR_SAVE_PASSWORD",
     Check,
     {96, 70, 260, 88},
     Not_Narrower | APM_ALIGN_NEIGHBOUR_LEFT,
     User},
    {"Button", Device_Box, "^KMSTR_DEVICE", BS_GROUPBOX, {12, 96, 112, 200}, No_Layout, 0},
    {"Button",
     Modem,
     "^KMSTR_KIND_MODEM",
     Radio | WS_TABSTOP | WS_GROUP,
     {22, 116, 102, 132},
     Not_Narrower,
     0},
    {"Button", Isdn, "^KMSTR_KIND_ISDN", Radio, {22, 136, 102, 152}, Not_Narrower, 0},
    {"Button", Dsl, "^KMSTR_KIND_DSL", Radio, {22, 156, 102, 172}, Not_Narrower, 0},
    {"Button", Network, "^KMSTR_KIND_LAN", Radio, {22, 176, 102, 192}, Not_Narrower, 0},
    {"Button",
     Number_Box,
     "^KMSTR_PHONE_NUMBER",
     BS_GROUPBOX | WS_GROUP,
     {120, 96 - Drift, 360, 228},
     No_Layout,
     0},
    {"ListBox",
     Numbers,
     "",
     WS_TABSTOP | WS_BORDER | LBS_NOINTEGRALHEIGHT,
     {130, 116 - Drift, 350 - Drift, 164 - Drift},
     With_Window | APM_KEEP_BOTTOM | APM_STRETCH_FROM_NEIGHBOUR,
     Device_Box},
    {"Static",
     Dial_From_Label,
     "^KMSTR_DIAL_FROM",
     SS_LEFT,
     {130, 176, 200, 192},
     Fits | APM_KEEP_BOTTOM | APM_ALIGN_NEIGHBOUR_LEFT,
     Numbers},
    {"ComboBox",
     Dial_From,
     "",
     WS_TABSTOP | CBS_DROPDOWN | CBS_AUTOHSCROLL,
     {204, 172, 350, 272},
     With_Window | APM_TOP_FROM_BOTTOM | APM_STRETCH_FROM_NEIGHBOUR,
     Dial_From_Label},
    {"Button",
     Area_Code,
     "^KMSTR_USE_AREA_CODE",
     Check,
     {130, 202, 290, 220},
     Not_Narrower | APM_KEEP_BOTTOM | APM_ALIGN_NEIGHBOUR_LEFT,
     Numbers},
    {"Button", Properties, "^KMSTR_PROPERTIES", WS_TABSTOP, {12, 240, 98, 264}, Button, 0},
    {"Button", IDCANCEL, "^KMSTR_CANCEL", WS_TABSTOP, {274, 240, 360, 264}, Button | APM_KEEP_RIGHT, 0},
    {"Button",
     IDOK,
     "^KMSTR_CONNECT",
     WS_TABSTOP | BS_DEFPUSHBUTTON,
     {180, 240, 266, 264},
     Button | APM_LEFT_OF_NEIGHBOUR,
     IDCANCEL},
};
constexpr int In_Device_Box[] = {Modem, Isdn, Dsl, Network, 0};
constexpr int In_Number_Box[] = {Numbers, Dial_From_Label, Dial_From, Area_Code, 0};

bool Is_Box(const Control &control) {
    return control.layout == No_Layout;
}

bool Overlap(const RECT &a, const RECT &b) {
    return a.left < b.right && b.left < a.right && a.top < b.bottom && b.top < a.bottom;
}

bool Is_Inside(const RECT &inner, const RECT &outer) {
    return inner.left >= outer.left && inner.top >= outer.top && inner.right <= outer.right &&
           inner.bottom <= outer.bottom;
}

void Set_Font(HWND window) {
    SendMessageA(window, WM_SETFONT, reinterpret_cast<WPARAM>(GetStockObject(DEFAULT_GUI_FONT)), 0);
}

} // namespace

Dialog::Dialog() {
    constexpr DWORD style = WS_POPUP | WS_CAPTION | WS_SYSMENU | WS_VISIBLE;
    window_ = CreateWindowExA(WS_EX_DLGMODALFRAME, "#32770", "", style, 100, 100, Width, Height, nullptr,
                              nullptr, nullptr, nullptr);
    Require(window_ != nullptr, "a dialog can be made");
    Set_Font(window_); // in which texts are measured
    Resize_To(Width, Height);
    for (const Control &each : Controls) {
        const RECT &place = each.place;
        const HWND control = CreateWindowExA(
            0, each.control_class, each.text, WS_CHILD | WS_VISIBLE | each.style,
            static_cast<int>(place.left), static_cast<int>(place.top),
            static_cast<int>(place.right - place.left), static_cast<int>(place.bottom - place.top), window_,
            reinterpret_cast<HMENU>(each.id), nullptr, nullptr);
        Require(control != nullptr, "its controls can be made");
        Set_Font(control);
    }
    Manage_Layout();
}

void Dialog::Manage_Layout() {
    layout_.Initialize(window_);
    for (const Control &each : Controls) {
        if (Is_Box(each)) continue;
        Require(layout_.Manage_Control(each.id, each.layout, each.neighbour, nullptr) == 0,
                "a control's place is kept");
    }
    Require(layout_.Manage_GroupBox(Device_Box, 0, In_Device_Box, 0) == 0 &&
                layout_.Manage_GroupBox(Number_Box, 0, In_Number_Box, 0) == 0,
            "a group box has its members");
}

RECT Dialog::Place_Of(int id) const {
    RECT place = {};
    GetWindowRect(Item(id), &place);
    GlobalToLocalRect(&place, &place, window_);
    return place;
}

std::string Dialog::Text_Of(int id) const {
    char text[256] = "";
    GetWindowTextA(Item(id), text, sizeof text);
    return text;
}

void Dialog::Speak(const std::string &language) {
    SetWindowTextA(window_, "^KMSTR_CONNECT_TITLE");
    for (const Control &each : Controls) {
        if (*each.text) SetWindowTextA(Item(each.id), each.text);
    }
    CWorldBeat beat;
    Require(beat.Load_Localization((language + ".ltx").c_str(), false) == 0,
            "the language's strings can be loaded");
    beat.Localize_Dialog(window_);
    Require(layout_.Update_Controls() == 0, "the dialog is laid out for its texts");
}

void Dialog::Resize_To(int width, int height) {
    RECT window = {}, client = {};
    GetWindowRect(window_, &window);
    GetClientRect(window_, &client);
    const long frame_width = window.right - window.left - client.right;
    const long frame_height = window.bottom - window.top - client.bottom;
    SetWindowPos(window_, nullptr, 0, 0, static_cast<int>(width + frame_width),
                 static_cast<int>(height + frame_height), SWP_NOMOVE | SWP_NOZORDER);
    layout_.Update_Controls();
}

void Dialog::Check_Layout() const {
    RECT client = {};
    GetClientRect(window_, &client);
    for (const Control &one : Controls) {
        const RECT place = Place_Of(one.id);
        Require(Is_Inside(place, client), "every control is inside the dialog");
        std::string shown = Text_Of(one.id);
        std::erase(shown, '&');
        Require(!*one.text || Text_Width(window_, shown.c_str()) <= place.right - place.left,
                "every text fits into its control");
        for (const Control &other : Controls) {
            if (one.id == other.id || Is_Box(one) != Is_Box(other)) continue;
            Require(!Overlap(place, Place_Of(other.id)), "no control lies over another");
        }
    }
    for (const int id : In_Device_Box)
        Require(!id || Is_Inside(Place_Of(id), Place_Of(Device_Box)), "a group box wraps its members");
    for (const int id : In_Number_Box)
        Require(!id || Is_Inside(Place_Of(id), Place_Of(Number_Box)), "a group box wraps its members");
}

} // namespace connect
