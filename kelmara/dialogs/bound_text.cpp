#include <kelmara/dialogs/bound_text.h>

#include <kelmara/dialogs/bound_window.h>
#include <kelmara/dialogs/object_watch.h>
#include <kelmara/dialogs/transfer_buffer.h>

#include <platform/user.h>

#include <climits>

// GCC has offsets of members behind a virtual table, and says that it need not.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
struct BoundTextLayout {
    static_assert(offsetof(CBoundTextControl, m_Updating) == 32);
};
#pragma GCC diagnostic pop

namespace {

bool Is_Arrow(unsigned int key) {
    return key >= VK_LEFT && key <= VK_DOWN;
}

} // namespace

CBoundTextControl::CBoundTextControl() = default;
CBoundTextControl::CBoundTextControl(const CBoundTextControl &other) = default;
CBoundTextControl &CBoundTextControl::operator=(const CBoundTextControl &other) = default;
CBoundTextControl::~CBoundTextControl() = default;

void CBoundTextControl::Show(const char *text) {
    const WatchedFlag updating(this, m_Updating);
    SetWindowTextA(m_Hwnd, text);
}

void CBoundTextControl::Binding_Changed() {
    if (!Can_Show() || m_Reading) return;
    const ObjectWatch watch(this);
    long size = -1;
    {
        const WatchedFlag reading(this, m_Reading);
        size = m_Client->Get_Value_Size();
    }
    if (size < 0 || !watch.Is_There() || !Can_Show()) return;
    TransferBuffer buffer(size);
    if (!buffer.Get()) return;
    {
        const WatchedFlag reading(this, m_Reading);
        m_Client->Read_Value(&size, buffer.Get());
    }
    buffer.Terminate();
    if (watch.Is_There() && Can_Show()) Show(buffer.Get());
}

void CBoundTextControl::Binding_Invalid() {
    const WatchedFlag going_invalid(this, m_Going_Invalid);
    if (m_Hwnd) Show("");
    if (going_invalid.Is_Object_There()) CBoundControlNotifier::Binding_Invalid();
}

void CBoundTextControl::Install_Client_Interface(IBindingClientInterface *client) {
    CBoundControlNotifier::Install_Client_Interface(client);
    if (client)
        Limit_Input();
    else
        To_Native(EM_LIMITTEXT, 0, 0);
}

bool CBoundTextControl::AttachTo(HWND window) {
    const bool attached = CBoundControlNotifier::AttachTo(window);
    if (attached) Limit_Input();
    return attached;
}

void CBoundTextControl::Detach() {
    const ObjectWatch watch(this);
    To_Native(EM_LIMITTEXT, 0, 0);
    if (watch.Is_There()) CBoundControlNotifier::Detach();
}

void CBoundTextControl::Limit_Input() {
    if (!m_Hwnd || !m_Client) return;
    const ObjectWatch watch(this);
    const long size = m_Client->Get_Value_Size();
    if (watch.Is_There()) To_Native(EM_LIMITTEXT, size > 0 ? static_cast<unsigned int>(size) - 1 : 0, 0);
}

void CBoundTextControl::Write_Binding() {
    if ((!m_Valid && !m_Hwnd) || !m_Client) return;
    const ObjectWatch watch(this);
    const HWND window = m_Hwnd;
    const int length = GetWindowTextLengthA(window);
    if (length == INT_MAX) return;
    const int size = length > 0 ? length + 1 : 1;
    TransferBuffer buffer(size);
    if (!buffer.Get()) return;
    GetWindowTextA(window, buffer.Get(), size);
    if (watch.Is_There() && m_Client && m_Hwnd == window) m_Client->Write_Value(buffer.Get());
}

// After a call that may have changed everything. A text that was blanked in it is no value.
bool CBoundTextControl::Still_Writes(HWND window, bool was_valid) const {
    return m_Hwnd == window && (m_Valid || !was_valid);
}

void CBoundTextControl::Write_If_Asked(HWND window, unsigned int message) {
    if (!m_Client || m_Hwnd != window || m_Going_Invalid) return;
    const ObjectWatch watch(this);
    const bool was_valid = m_Valid;
    const bool on_key = m_Client->Write_On_Key();
    if (on_key != (message == WM_KEYUP)) return;
    if (watch.Is_There() && Still_Writes(window, was_valid)) Write_Binding();
}

long CBoundTextControl::Set_By_Others(HWND window, unsigned int wparam, long lparam) {
    const ObjectWatch watch(this);
    const bool was_valid = m_Valid;
    const long result = Forward(window, WM_SETTEXT, wparam, lparam);
    if (watch.Is_There() && Still_Writes(window, was_valid)) Write_Binding();
    return result;
}

long CBoundTextControl::GetWndProc() {
    return reinterpret_cast<long>(ExternWndProc);
}

long CBoundTextControl::ExternWndProc(HWND window, unsigned int message, unsigned int wparam, long lparam) {
    auto *const control = BoundWindow::Control_Of<CBoundTextControl>(window);
    if (!control) return BoundWindow::Pass_On(ExternWndProc, window, message, wparam, lparam);
    if (message == WM_SETTEXT && !control->m_Updating) return control->Set_By_Others(window, wparam, lparam);
    if (message != WM_KILLFOCUS && (message != WM_KEYUP || Is_Arrow(wparam)))
        return control->Forward(window, message, wparam, lparam);
    const WNDPROC native = control->m_OldWndProc; // the control may be gone when it has written
    control->Write_If_Asked(window, message);
    return CallWindowProcA(native, window, message, wparam, lparam);
}
