#include <kelmara/dialogs/bound_list_box.h>

#include <kelmara/containers/iterator.h>
#include <kelmara/dialogs/bound_window.h>
#include <kelmara/dialogs/object_watch.h>
#include <kelmara/dialogs/transfer_buffer.h>

#include <platform/user.h>

#include <algorithm>
#include <climits>

// GCC has offsets of members behind a virtual table, and says that it need not.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
struct BoundListBoxLayout {
    static_assert(offsetof(CBoundListEntry, m_List) == 32 && offsetof(CBoundListEntry, m_Index) == 36);
    using C = CBoundListboxControl;
    static_assert(offsetof(C, m_Entries) == 4 && offsetof(C, m_UserData) == 44);
    static_assert(offsetof(C, m_OldWndProc) == 48 && offsetof(C, m_Hwnd) == 52);
};
#pragma GCC diagnostic pop

namespace {

class MessageOnItsWay;
[[gnu::tls_model("initial-exec")]] constinit thread_local MessageOnItsWay *Innermost = nullptr;

/// A message that a list box passes on. What it is passed on to may stand above the list box as well, and
/// hand the same message back to it: what has had the window before, and has put itself back since.
class MessageOnItsWay {
  public:
    MessageOnItsWay(HWND window, unsigned int message, unsigned int wparam, long lparam)
        : m_Window(window), m_Message(message), m_Wparam(wparam), m_Lparam(lparam), m_Outer(Innermost) {
        Innermost = this;
    }
    ~MessageOnItsWay() { Innermost = m_Outer; }
    MessageOnItsWay(const MessageOnItsWay &) = delete;
    MessageOnItsWay &operator=(const MessageOnItsWay &) = delete;

    /// Whether it is the one that the window is working at.
    static bool Is_There(HWND window, unsigned int message, unsigned int wparam, long lparam) {
        const MessageOnItsWay *on_its_way = Innermost;
        while (on_its_way && on_its_way->m_Window != window) on_its_way = on_its_way->m_Outer;
        return on_its_way && on_its_way->m_Message == message && on_its_way->m_Wparam == wparam &&
               on_its_way->m_Lparam == lparam;
    }

  private:
    const HWND m_Window;
    const unsigned int m_Message, m_Wparam;
    const long m_Lparam;
    MessageOnItsWay *const m_Outer;
};

long Send_On(BoundProcedure procedure, HWND window, unsigned int message, unsigned int wparam, long lparam) {
    const MessageOnItsWay on_its_way(window, message, wparam, lparam);
    return CallWindowProcA(procedure, window, message, wparam, lparam);
}

} // namespace

CBoundListEntry::CBoundListEntry(CBoundListboxControl *list_box, int index)
    : m_List(list_box), m_Index(index) {}
CBoundListEntry::CBoundListEntry(const CBoundListEntry &other) = default;
CBoundListEntry &CBoundListEntry::operator=(const CBoundListEntry &other) = default;
CBoundListEntry::~CBoundListEntry() = default;

void CBoundListEntry::Binding_Changed() {
    char value[256] = {};
    if (Read_Binding(sizeof value, value) && m_List) m_List->SetEntry(m_Index, value);
}

void CBoundListEntry::Write_String(const char *text) {
    if (m_Valid) Write_To_Client(text);
}

CBoundListboxControl::CBoundListboxControl() = default;
CBoundListboxControl::CBoundListboxControl(const CBoundListboxControl &other) = default;
CBoundListboxControl &CBoundListboxControl::operator=(const CBoundListboxControl &other) = default;

CBoundListboxControl::~CBoundListboxControl() {
    Detach();
    while (m_Entries.Entries(0) > 0) delete static_cast<CBoundListEntry *>(m_Entries.Pop(0));
    BoundWindow::Leave(this, m_UserData);
    ObjectWatch::Tell_Of_End(this);
}

bool CBoundListboxControl::AttachTo(HWND window) {
    if (m_Hwnd && m_Hwnd != window) Detach();
    m_OldWndProc = BoundWindow::Current(window, ExternWndProc);
    BoundWindow::Displace(window, this);
    if (BoundWindow::Enter(window, this, m_UserData))
        SetWindowLongA(window, GWL_WNDPROC, reinterpret_cast<LONG>(ExternWndProc));
    m_Hwnd = IsWindow(window) ? window : nullptr;
    return true;
}

void CBoundListboxControl::Detach() {
    if (!m_Hwnd) return;
    BoundWindow::Give_Back(m_Hwnd, this, ExternWndProc, m_OldWndProc);
    m_Hwnd = nullptr;
}

void CBoundListboxControl::AddBoundListEntry(CBoundListEntry *entry) {
    if (entry) m_Entries.Add(entry, 0);
}

bool CBoundListboxControl::GetEntry(int line, char *text) {
    if (!text) return false;
    *text = 0;
    return m_Hwnd && SendMessageA(m_Hwnd, LB_GETTEXT, static_cast<unsigned int>(line),
                                  reinterpret_cast<long>(text)) >= 0;
}

void CBoundListboxControl::SetEntry(int line, const char *text) {
    if (!m_Hwnd || !text || line < 0) return;
    const HWND window = m_Hwnd; // the list box may go meanwhile
    const WNDPROC native = m_OldWndProc;
    const auto at = static_cast<unsigned int>(line);
    SendMessageA(window, WM_SETREDRAW, 0, 0);
    if (!*text)
        Send_On(native, window, LB_DELETESTRING, at, 0);
    else if (Send_On(native, window, LB_INSERTSTRING, at, reinterpret_cast<long>(text)) >= 0)
        Send_On(native, window, LB_DELETESTRING, at + 1, 0);
    SendMessageA(window, WM_SETREDRAW, 1, 0);
}

void CBoundListboxControl::Write_Line(int line, CBoundListEntry *entry) {
    const ObjectWatch watch(this);
    const HWND window = m_Hwnd; // which may be lost in each call
    const long length = SendMessageA(window, LB_GETTEXTLEN, static_cast<unsigned int>(line), 0);
    if (length == LONG_MAX) return;
    TransferBuffer buffer(std::max(length, 0L) + 1);
    if (!watch.Is_There() || m_Hwnd != window || !buffer.Get()) return;
    GetEntry(line, buffer.Get());
    if (watch.Is_There() && m_Hwnd == window) entry->Write_String(buffer.Get());
}

void CBoundListboxControl::ListChanged() {
    const ObjectWatch watch(this);
    CIterator walk;
    int line = 0;
    for (void *entry = walk.Iterate(&m_Entries); m_Hwnd && walk.More(); entry = walk.Next()) {
        if (entry) Write_Line(line++, static_cast<CBoundListEntry *>(entry));
        if (!watch.Is_There()) return;
    }
}

long CBoundListboxControl::ExternWndProc(HWND window, unsigned int message, unsigned int wparam,
                                         long lparam) {
    CBoundListboxControl *const control = BoundWindow::List_Box_Of(window);
    const bool has_come_back = MessageOnItsWay::Is_There(window, message, wparam, lparam);
    if (!control || control->m_Hwnd != window || has_come_back)
        return BoundWindow::Pass_On(ExternWndProc, window, message, wparam, lparam);
    const ObjectWatch watch(control);
    if (message == WM_NCDESTROY) control->m_Hwnd = nullptr;
    const long result = Send_On(control->m_OldWndProc, window, message, wparam, lparam);
    const bool changes_lines = message >= LB_ADDSTRING && message <= LB_DELETESTRING;
    if (changes_lines && watch.Is_There() && control->m_Hwnd == window) control->ListChanged();
    return result;
}
