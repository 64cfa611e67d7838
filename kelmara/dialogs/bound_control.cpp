#include <kelmara/dialogs/bound_control.h>

#include <kelmara/dialogs/bound_window.h>
#include <kelmara/dialogs/object_watch.h>
#include <kelmara/dialogs/transfer_buffer.h>
#include <kelmara/foundation/interface_identifiers.h>

#include <platform/errors.h>
#include <platform/user.h>

#include <cstring>

// GCC has offsets of members behind a virtual table, and says that it need not.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
struct BoundControlLayout {
    using C = CBoundControlNotifier;
    static_assert(offsetof(C, m_Signature) == 4 && offsetof(C, m_Client) == 8);
    static_assert(offsetof(C, m_OldWndProc) == 12 && offsetof(C, m_Hwnd) == 16);
    static_assert(offsetof(C, m_Valid) == 20 && offsetof(C, m_UserData) == 24);
    static_assert(offsetof(C, m_RefCount) == 28);
};
#pragma GCC diagnostic pop

CBoundControlNotifier::CBoundControlNotifier() = default;
CBoundControlNotifier::CBoundControlNotifier(const CBoundControlNotifier &other) = default;
CBoundControlNotifier &CBoundControlNotifier::operator=(const CBoundControlNotifier &other) = default;

CBoundControlNotifier::~CBoundControlNotifier() {
    if (m_Hwnd) BoundWindow::Give_Back(m_Hwnd, this, nullptr, m_OldWndProc);
    BoundWindow::Leave(this, m_UserData);
    ObjectWatch::Tell_Of_End(this);
}

long CBoundControlNotifier::QueryInterface(GUID const &iid, void **out) {
    if (!out) return E_INVALIDARG;
    *out = nullptr;
    if (!Is_Same_Identifier(iid, IID_IUnknown) && !Is_Same_Identifier(iid, IID_IBindingNotifierInterface))
        return E_NOINTERFACE;
    AddRef();
    *out = static_cast<IBindingNotifierInterface *>(this);
    return S_OK;
}

unsigned long CBoundControlNotifier::AddRef() {
    return ++m_RefCount;
}

unsigned long CBoundControlNotifier::Release() {
    if (--m_RefCount != 0) return m_RefCount;
    this->~CBoundControlNotifier();
    operator delete(this);
    return 0;
}

void CBoundControlNotifier::Binding_Changed() {}

void CBoundControlNotifier::Binding_Destroyed() {}

void CBoundControlNotifier::Set_Valid(bool valid) {
    const ObjectWatch watch(this);
    if (m_Hwnd) EnableWindow(m_Hwnd, valid);
    if (watch.Is_There()) m_Valid = valid;
}

void CBoundControlNotifier::Binding_Invalid() {
    Set_Valid(false);
}

void CBoundControlNotifier::Binding_Valid() {
    Set_Valid(true);
}

void CBoundControlNotifier::Install_Client_Interface(IBindingClientInterface *client) {
    m_Client = client;
}

bool CBoundControlNotifier::AttachTo(HWND window) {
    const ObjectWatch watch(this);
    if (m_Hwnd && m_Hwnd != window) Detach();
    if (!watch.Is_There()) return false;
    const long own = GetWndProc();
    if (!m_OldWndProc) m_OldWndProc = BoundWindow::Native(window, reinterpret_cast<WNDPROC>(own));
    BoundWindow::Displace(window, this);
    if (BoundWindow::Enter(window, this, m_UserData) && own) SetWindowLongA(window, GWL_WNDPROC, own);
    m_Hwnd = IsWindow(window) ? window : nullptr;
    return true;
}

void CBoundControlNotifier::Detach() {
    if (!m_Hwnd) return;
    BoundWindow::Give_Back(m_Hwnd, this, reinterpret_cast<WNDPROC>(GetWndProc()), m_OldWndProc);
    m_Hwnd = nullptr;
}

long CBoundControlNotifier::GetWndProc() {
    return 0;
}

long CBoundControlNotifier::Forward(HWND window, unsigned int message, unsigned int wparam, long lparam) {
    if (message == WM_NCDESTROY && m_Hwnd == window) m_Hwnd = nullptr;
    return BoundWindow::Send_On(m_OldWndProc, window, message, wparam, lparam);
}

long CBoundControlNotifier::To_Native(unsigned int message, unsigned int wparam, long lparam) {
    return m_Hwnd ? CallWindowProcA(m_OldWndProc, m_Hwnd, message, wparam, lparam) : 0;
}

bool CBoundControlNotifier::Read_Binding(long size, char *buffer) {
    if (!m_Valid || !m_Client || m_Reading) return false;
    const WatchedFlag reading(this, m_Reading);
    long room = size;
    m_Client->Read_Value(&room, buffer);
    buffer[size - 1] = 0;
    return reading.Is_Object_There() && m_Valid;
}

void CBoundControlNotifier::Write_To_Client(const char *text) {
    if (!m_Client || !text) return;
    const long size = static_cast<long>(std::strlen(text)) + 1;
    TransferBuffer copy(size);
    if (!copy.Get()) return;
    std::memcpy(copy.Get(), text, static_cast<std::size_t>(size));
    m_Client->Write_Value(copy.Get());
}
