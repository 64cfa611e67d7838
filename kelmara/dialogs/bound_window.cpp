#include <kelmara/dialogs/bound_window.h>

#include <kelmara/dialogs/bound_list_box.h>
#include <kelmara/dialogs/window_user_data.h>

#include <platform/kernel.h>
#include <platform/user.h>

namespace {

constexpr int Control_Slot = 0, Procedure_Slot = 2;
constexpr long Nothing = -1;
constexpr int Most_Turns = 32;

void *Owner_Of(HWND window) {
    const long owner = GetWindowUserData(window, Control_Slot);
    return owner == Nothing ? nullptr : reinterpret_cast<void *>(owner);
}

// A list box has the address of its list's virtual table at the signature's place.
bool Is_Notifier(const void *owner) {
    using Word [[gnu::may_alias]] = const unsigned long;
    return owner && static_cast<Word *>(owner)[1] == CBoundControlNotifier::Signature;
}

BoundProcedure As_Procedure(long word) {
    return reinterpret_cast<BoundProcedure>(word);
}

// What the window had when its record was made.
BoundProcedure Recorded(HWND window, BoundProcedure own) {
    const long recorded = GetWindowUserData(window, Procedure_Slot);
    const bool is_of_use = recorded != Nothing && recorded != 0 && As_Procedure(recorded) != own;
    return is_of_use ? As_Procedure(recorded) : DefWindowProcA;
}

BoundProcedure Other_Than(BoundProcedure own, BoundProcedure procedure) {
    return procedure && procedure == own ? DefWindowProcA : procedure;
}

// A message that goes on to another procedure, for as long as that works at it.
class Turn {
  public:
    Turn(HWND window, unsigned int message, unsigned int wparam, long lparam)
        : m_Window(window), m_Message(message), m_Wparam(wparam), m_Lparam(lparam), m_Outer(Innermost) {
        Innermost = this;
    }
    ~Turn() { Innermost = m_Outer; }
    Turn(const Turn &) = delete;
    Turn &operator=(const Turn &) = delete;

    // How often this thread is at it.
    int Count() const {
        int count = 0;
        for (const Turn *turn = this; turn; turn = turn->m_Outer) {
            count += turn->m_Window == m_Window && turn->m_Message == m_Message &&
                     turn->m_Wparam == m_Wparam && turn->m_Lparam == m_Lparam;
        }
        return count;
    }

  private:
    const HWND m_Window;
    const unsigned int m_Message, m_Wparam;
    const long m_Lparam;
    Turn *const m_Outer;

    [[gnu::tls_model("initial-exec")]] static constinit thread_local Turn *Innermost;
};

constinit thread_local Turn *Turn::Innermost = nullptr;

} // namespace

CBoundControlNotifier *BoundWindow::Notifier_Of(HWND window) {
    void *const owner = Owner_Of(window);
    return Is_Notifier(owner) ? static_cast<CBoundControlNotifier *>(owner) : nullptr;
}

CBoundListboxControl *BoundWindow::List_Box_Of(HWND window) {
    void *const owner = Owner_Of(window);
    return Is_Notifier(owner) ? nullptr : static_cast<CBoundListboxControl *>(owner);
}

void BoundWindow::Displace(HWND window, const void *by) {
    if (Owner_Of(window) == by) return;
    if (CBoundControlNotifier *const notifier = Notifier_Of(window)) notifier->m_Hwnd = nullptr;
    if (CBoundListboxControl *const list_box = List_Box_Of(window)) list_box->m_Hwnd = nullptr;
}

BoundProcedure BoundWindow::Native(HWND window, BoundProcedure own) {
    const long recorded = GetWindowUserData(window, Procedure_Slot);
    return Other_Than(own,
                      As_Procedure(recorded != Nothing ? recorded : GetWindowLongA(window, GWL_WNDPROC)));
}

BoundProcedure BoundWindow::Current(HWND window, BoundProcedure own) {
    const BoundProcedure current = As_Procedure(GetWindowLongA(window, GWL_WNDPROC));
    const CBoundControlNotifier *const notifier = Notifier_Of(window);
    if (notifier && notifier->m_Hwnd == window) return Other_Than(own, notifier->m_OldWndProc);
    const CBoundListboxControl *const list_box = List_Box_Of(window);
    if (list_box && list_box->m_Hwnd == window) return list_box->m_OldWndProc;
    return current == own ? Native(window, own) : current;
}

long BoundWindow::Pass_On(BoundProcedure own, HWND window, unsigned int message, unsigned int wparam,
                          long lparam) {
    const CBoundControlNotifier *const notifier = Notifier_Of(window);
    const BoundProcedure saved = notifier ? notifier->m_OldWndProc : nullptr;
    const BoundProcedure next = saved && saved != own ? saved : Recorded(window, own);
    return Send_On(next, window, message, wparam, lparam);
}

long BoundWindow::Send_On(BoundProcedure procedure, HWND window, unsigned int message, unsigned int wparam,
                          long lparam) {
    const Turn turn(window, message, wparam, lparam);
    const bool goes_round = turn.Count() > Most_Turns;
    return CallWindowProcA(goes_round ? DefWindowProcA : procedure, window, message, wparam, lparam);
}

void BoundWindow::Give_Back(HWND window, const void *owner, BoundProcedure own, BoundProcedure saved) {
    const DWORD last_error = GetLastError(); // giving back leaves it as it was
    const long recorded = GetWindowUserData(window, Control_Slot);
    const bool is_owners = recorded == Nothing
                               ? own && As_Procedure(GetWindowLongA(window, GWL_WNDPROC)) == own
                               : reinterpret_cast<const void *>(recorded) == owner;
    if (is_owners) SetWindowLongA(window, GWL_WNDPROC, reinterpret_cast<LONG>(saved));
    SetLastError(last_error);
}

bool BoundWindow::Enter(HWND window, void *owner, void *&record) {
    void *const entered = InsertWindowUserData(window, Control_Slot, owner);
    if (!entered) return false;
    if (entered == record) {
        DeleteWindowUserData(entered); // counted once already
        return true;
    }
    Leave(owner, record);
    record = entered;
    return true;
}

void BoundWindow::Leave(const void *owner, void *&record) {
    if (!record) return;
    Empty_Window_Slot(record, Control_Slot, owner);
    DeleteWindowUserData(record);
    record = nullptr;
}
