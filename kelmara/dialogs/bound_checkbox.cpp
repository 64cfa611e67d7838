#include <kelmara/dialogs/bound_checkbox.h>

#include <kelmara/dialogs/bound_window.h>
#include <kelmara/dialogs/object_watch.h>

#include <platform/user.h>

#include <cstring>

// GCC has offsets of members behind a virtual table, and says that it need not.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
struct BoundCheckboxLayout {
    static_assert(offsetof(CBoundCheckboxControl, m_Opposite) == 32);
};
#pragma GCC diagnostic pop

CBoundCheckboxControl::CBoundCheckboxControl() = default;
CBoundCheckboxControl::CBoundCheckboxControl(const CBoundCheckboxControl &other) = default;
CBoundCheckboxControl &CBoundCheckboxControl::operator=(const CBoundCheckboxControl &other) = default;
CBoundCheckboxControl::~CBoundCheckboxControl() = default;

void CBoundCheckboxControl::OppositeBind() {
    m_Opposite = true;
}

void CBoundCheckboxControl::Binding_Changed() {
    if (!Can_Show()) return;
    char value[16] = "FALSE";
    if (!Read_Binding(sizeof value, value)) return;
    const bool is_true = std::strcmp(value, "TRUE") == 0;
    To_Native(BM_SETCHECK, is_true != m_Opposite, 0);
}

void CBoundCheckboxControl::Clicked() {
    if (!m_Hwnd) return;
    const ObjectWatch watch(this);
    const HWND window = m_Hwnd;
    const bool checked = To_Native(BM_GETCHECK, 0, 0) != BST_UNCHECKED;
    if (watch.Is_There() && m_Hwnd == window && m_Valid)
        Write_To_Client(checked != m_Opposite ? "TRUE" : "FALSE");
}

long CBoundCheckboxControl::GetWndProc() {
    return reinterpret_cast<long>(ExternWndProc);
}

long CBoundCheckboxControl::ExternWndProc(HWND window, unsigned int message, unsigned int wparam,
                                          long lparam) {
    auto *const control = BoundWindow::Control_Of<CBoundCheckboxControl>(window);
    if (!control) return BoundWindow::Pass_On(ExternWndProc, window, message, wparam, lparam);
    const ObjectWatch watch(control);
    const long result = control->Forward(window, message, wparam, lparam);
    const bool sets_check = message == WM_NULL || message == BM_SETCHECK;
    if (sets_check && watch.Is_There() && control->m_Hwnd == window) control->Clicked();
    return result;
}
