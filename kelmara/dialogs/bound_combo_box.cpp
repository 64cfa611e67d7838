#include <kelmara/dialogs/bound_combo_box.h>

#include <kelmara/dialogs/bound_window.h>
#include <kelmara/dialogs/object_watch.h>

#include <platform/user.h>

#include <cstring>

// GCC has offsets of members behind a virtual table, and says that it need not.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
struct BoundComboBoxLayout {
    static_assert(offsetof(CBoundComboBoxControl, m_Extended) == 32);
};
#pragma GCC diagnostic pop

namespace {

constexpr unsigned int Write_Later = 1147; // posted to the window itself
constexpr int Text_Size = 256, Text_Limit = 255;
constexpr long Kind_Mask = 15;

long As_Parameter(const void *pointer) {
    return reinterpret_cast<long>(pointer);
}

} // namespace

CBoundComboBoxControl::CBoundComboBoxControl() = default;
CBoundComboBoxControl::CBoundComboBoxControl(const CBoundComboBoxControl &other) = default;
CBoundComboBoxControl &CBoundComboBoxControl::operator=(const CBoundComboBoxControl &other) = default;
CBoundComboBoxControl::~CBoundComboBoxControl() = default;

bool CBoundComboBoxControl::AttachTo(HWND window) {
    char name[Text_Size] = {};
    GetClassNameA(window, name, Text_Limit);
    m_Extended = std::strcmp(name, "ComboBoxEx32") == 0;
    return CBoundControlNotifier::AttachTo(window);
}

// Made if the box takes new ones; -1 for none, whatever the box says when it fails.
long CBoundComboBoxControl::Line_Of(const char *value) {
    const auto from_start = static_cast<unsigned int>(-1);
    const ObjectWatch watch(this);
    long line = To_Native(CB_FINDSTRINGEXACT, from_start, As_Parameter(value));
    if (!watch.Is_There()) return CB_ERR;
    const long kind = GetWindowLongA(m_Hwnd, GWL_STYLE) & Kind_Mask;
    if (line < 0 && kind == CBS_DROPDOWN) line = To_Native(CB_ADDSTRING, 0, As_Parameter(value));
    return line < 0 ? CB_ERR : line;
}

void CBoundComboBoxControl::Binding_Changed() {
    if (!Can_Show()) return;
    char value[Text_Size] = {};
    if (!Read_Binding(Text_Limit, value)) return;
    const WatchedFlag showing(this, m_Showing);
    const long line = m_Hwnd ? Line_Of(value) : CB_ERR;
    if (showing.Is_Object_There()) To_Native(CB_SETCURSEL, static_cast<unsigned int>(line), 0);
}

void CBoundComboBoxControl::Get_Chosen_Line(char *text, int size) {
    const ObjectWatch watch(this);
    const long chosen = To_Native(CB_GETCURSEL, 0, 0);
    if (!watch.Is_There()) return;
    COMBOBOXEXITEM item = {};
    item.mask = CBEIF_TEXT;
    item.iItem = static_cast<int>(chosen);
    item.pszText = text;
    item.cchTextMax = size;
    To_Native(CBEM_GETITEM, 0, As_Parameter(&item));
}

void CBoundComboBoxControl::HandleSelectionChange() {
    if (!m_Hwnd || !m_Client) return;
    char text[Text_Size] = {};
    const ObjectWatch watch(this);
    const HWND window = m_Hwnd;
    if (m_Extended)
        Get_Chosen_Line(text, Text_Limit);
    else
        GetWindowTextA(window, text, Text_Limit);
    if (watch.Is_There() && m_Hwnd == window) Write_To_Client(text);
}

void CBoundComboBoxControl::Heard(unsigned int message, unsigned int notice) {
    switch (message) {
    case WM_COMMAND:
        if (m_Showing || (notice != EN_UPDATE && notice != CBN_SELCHANGE)) return;
        if (!PostMessageA(m_Hwnd, Write_Later, 0, 0)) HandleSelectionChange();
        return;
    case Write_Later:
    case WM_SETTEXT:
    case WM_WINDOWPOSCHANGING:
        return HandleSelectionChange();
    default:
        return;
    }
}

long CBoundComboBoxControl::GetWndProc() {
    return reinterpret_cast<long>(ExternWndProc);
}

long CBoundComboBoxControl::ExternWndProc(HWND window, unsigned int message, unsigned int wparam,
                                          long lparam) {
    auto *const control = BoundWindow::Control_Of<CBoundComboBoxControl>(window);
    if (!control) return BoundWindow::Pass_On(ExternWndProc, window, message, wparam, lparam);
    const ObjectWatch watch(control);
    const long result = control->Forward(window, message, wparam, lparam);
    if (watch.Is_There() && control->m_Hwnd == window) control->Heard(message, wparam >> 16);
    return result;
}
