#include <kelmara/dialogs/active_help.h>

#include <kelmara/dialogs/object_watch.h>
#include <kelmara/dialogs/window_user_data.h>

#include <cstdio>
#include <cstring>

namespace {

constexpr unsigned long Signature = 0xCAFEBABE;
constexpr int Help_Slot = 1;

} // namespace

// GCC has offsets beside a member with a virtual table, and says that it need not.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
struct ActiveHelpLayout {
    static_assert(sizeof(CActiveHelpManager) == 48);
    static_assert(offsetof(CActiveHelpManager, m_Current) == 4);
    static_assert(offsetof(CActiveHelpManager, m_HelpControls) == 8);
    static_assert(offsetof(CActiveHelpControl, m_Signature) == 4);
    static_assert(offsetof(CActiveHelpControl, m_Depth) == 8);
    static_assert(offsetof(CActiveHelpControl, m_HelpText) == 12);
    static_assert(offsetof(CActiveHelpControl, m_OldWndProc) == 268);
    static_assert(offsetof(CActiveHelpControl, m_Hwnd) == 272);
    static_assert(offsetof(CActiveHelpControl, m_UserData) == 276);
};
#pragma GCC diagnostic pop

// --- the manager ------------------------------------------------------------------------------------------

CActiveHelpManager::CActiveHelpManager() : m_HelpWindow(nullptr), m_Current(nullptr) {}

CActiveHelpManager::CActiveHelpManager(const CActiveHelpManager &other) = default;
CActiveHelpManager &CActiveHelpManager::operator=(const CActiveHelpManager &other) = default;

CActiveHelpManager::~CActiveHelpManager() {
    while (m_HelpControls.Entries(0) > 0) delete static_cast<CActiveHelpControl *>(m_HelpControls.Pop(0));
}

void CActiveHelpManager::Initialize(HWND help_window) {
    m_HelpWindow = help_window;
    m_Current = nullptr;
}

void CActiveHelpManager::AddControl(HWND control, const char *help_text) {
    if (CActiveHelpControl::Has_Help(control)) return;
    auto *const added = new CActiveHelpControl(this, control, help_text);
    if (!added) return;
    bool kept = false;
    try {
        kept = added->m_UserData && m_HelpControls.Add(added, 0);
    } catch (...) { // no item for it
    }
    if (kept) return;
    added->Restore_Procedure();
    delete added;
}

void CActiveHelpManager::SetHelp(CActiveHelpControl *control, const char *text) {
    if (control == m_Current) return;
    m_Current = control;
    SetWindowTextA(m_HelpWindow, text);
}

// --- a control --------------------------------------------------------------------------------------------

/// A call of WndProc under way. In the outermost one of a control its window has the old procedure. Whatever
/// way the call ends, the control is as it was, if it is still there.
class CActiveHelpControl::Call {
  public:
    Call(CActiveHelpControl &control, HWND window) : m_Watch(&control), m_Control(control), m_Window(window) {
        if (++control.m_Depth == 1)
            SetWindowLongA(window, GWL_WNDPROC, reinterpret_cast<LONG>(control.m_OldWndProc));
    }
    ~Call() {
        Return_To_Window();
        if (Is_Control_There()) --m_Control.m_Depth;
    }
    Call(const Call &) = delete;
    Call &operator=(const Call &) = delete;

    bool Is_Control_There() const { return m_Watch.Is_There(); }
    /// The old procedure is through.
    void Return_To_Window() {
        if (m_Returned || !Is_Control_There()) return;
        m_Returned = true;
        const bool is_its_window = Of(m_Window) == &m_Control; // the handle may be another's by now
        if (m_Control.m_Depth == 1 && is_its_window)
            SetWindowLongA(m_Window, GWL_WNDPROC, reinterpret_cast<LONG>(WndProc));
    }

  private:
    const ObjectWatch m_Watch;
    CActiveHelpControl &m_Control;
    const HWND m_Window;
    bool m_Returned = false;
};

CActiveHelpControl::CActiveHelpControl(CActiveHelpManager *manager, HWND window, const char *help_text)
    : m_Manager(manager),
      m_Signature(Signature),
      m_Depth(0),
      m_OldWndProc(reinterpret_cast<WNDPROC>(GetWindowLongA(window, GWL_WNDPROC))) {
    SetWindowLongA(window, GWL_WNDPROC, reinterpret_cast<LONG>(WndProc));
    m_UserData = InsertWindowUserData(window, Help_Slot, this);
    m_Hwnd = window;
    std::snprintf(m_HelpText, sizeof m_HelpText, "%s", help_text ? help_text : "");
}

CActiveHelpControl::CActiveHelpControl(const CActiveHelpControl &other) = default;
CActiveHelpControl &CActiveHelpControl::operator=(const CActiveHelpControl &other) = default;

CActiveHelpControl::~CActiveHelpControl() {
    ObjectWatch::Tell_Of_End(this);
    if (!m_UserData) return;
    Empty_Window_Slot(m_UserData, Help_Slot, this);
    DeleteWindowUserData(m_UserData);
    m_UserData = nullptr;
}

CActiveHelpControl *CActiveHelpControl::Of(HWND window) {
    const long value = GetWindowUserData(window, Help_Slot);
    if (value == -1 || value == 0) return nullptr;
    auto *const control = reinterpret_cast<CActiveHelpControl *>(value);
    return control->m_Signature == Signature ? control : nullptr;
}

bool CActiveHelpControl::Has_Help(HWND window) {
    return GetWindowLongA(window, GWL_WNDPROC) == reinterpret_cast<LONG>(WndProc) || Of(window);
}

void CActiveHelpControl::Restore_Procedure() {
    SetWindowLongA(m_Hwnd, GWL_WNDPROC, reinterpret_cast<LONG>(m_OldWndProc));
}

long CActiveHelpControl::WndProc(HWND window, unsigned int message, unsigned int wparam, long lparam) {
    CActiveHelpControl *const control = Of(window);
    if (!control) return 0;
    Call call(*control, window);
    const long result = CallWindowProcA(control->m_OldWndProc, window, message, wparam, lparam);
    call.Return_To_Window();
    if (message == WM_SETCURSOR && call.Is_Control_There()) {
        char text[sizeof m_HelpText]; // which outlives the control, should the pane's answer be its end
        std::memcpy(text, control->m_HelpText, sizeof text);
        control->m_Manager->SetHelp(control, text);
    }
    return result;
}
