#include <kelmara/dialogs/bound_radio_group.h>

#include <kelmara/containers/iterator.h>
#include <kelmara/dialogs/bound_window.h>
#include <kelmara/dialogs/object_watch.h>

#include <platform/user.h>

#include <cstring>

// GCC has offsets of members behind a virtual table, and says that it need not.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
struct BoundRadioLayout {
    static_assert(offsetof(CBoundRadioButtonControl, m_WndProc) == 32);
    static_assert(offsetof(CBoundRadioButtonControl, m_Group) == 36);
    static_assert(offsetof(CBoundRadioGroupControl, m_ControlIds) == 32);
    static_assert(offsetof(CBoundRadioGroupControl, m_Values) == 36);
    static_assert(offsetof(CBoundRadioGroupControl, m_Notifiers) == 40);
};
#pragma GCC diagnostic pop

namespace {

/// The buttons' notifiers with their values.
class Buttons {
  public:
    Buttons(CDSList *notifiers, CDSList *values)
        : m_Notifier(m_Notifiers.Iterate(notifiers)), m_Value(m_Values.Iterate(values)) {}

    bool More() { return m_Notifiers.More(); }
    void Next() {
        m_Notifier = m_Notifiers.Next();
        m_Value = m_Values.Next();
    }
    /// Each null for a button without one.
    CBoundRadioButtonControl *Notifier() const { return static_cast<CBoundRadioButtonControl *>(m_Notifier); }
    const char *Value() const { return static_cast<const char *>(m_Value); }

  private:
    CIterator m_Notifiers, m_Values;
    void *m_Notifier;
    void *m_Value;
};

} // namespace

CBoundRadioButtonControl::CBoundRadioButtonControl(CBoundRadioGroupControl *group,
                                                   long (*procedure)(HWND, unsigned int, unsigned int, long))
    : m_WndProc(procedure), m_Group(group) {}
CBoundRadioButtonControl::CBoundRadioButtonControl(const CBoundRadioButtonControl &other) = default;
CBoundRadioButtonControl &
CBoundRadioButtonControl::operator=(const CBoundRadioButtonControl &other) = default;
CBoundRadioButtonControl::~CBoundRadioButtonControl() = default;

void CBoundRadioButtonControl::Clicked(HWND button) {
    if (m_Group) m_Group->Clicked(button);
}

long CBoundRadioButtonControl::GetWndProc() {
    return reinterpret_cast<long>(m_WndProc);
}

CBoundRadioGroupControl::CBoundRadioGroupControl(CDSList *ids, CDSList *values)
    : m_ControlIds(ids), m_Values(values) {}
CBoundRadioGroupControl::CBoundRadioGroupControl(const CBoundRadioGroupControl &other) = default;
CBoundRadioGroupControl &CBoundRadioGroupControl::operator=(const CBoundRadioGroupControl &other) = default;

CBoundRadioGroupControl::~CBoundRadioGroupControl() {
    Delete_List(m_ControlIds);
    Delete_List(m_Values);
    Remove_Notifiers();
}

unsigned long CBoundRadioGroupControl::Release() {
    if (m_RefCount != 1) return --m_RefCount;
    delete this;
    return 0;
}

void CBoundRadioGroupControl::Remove_Notifiers() {
    ObjectWatch::Tell_Of_End(&m_Notifiers); // those who walk them
    while (m_Notifiers.Entries(0) > 0) {
        auto *const notifier = static_cast<CBoundRadioButtonControl *>(m_Notifiers.Pop(0));
        if (notifier) delete notifier;
    }
}

bool CBoundRadioGroupControl::AttachTo(HWND) {
    return false;
}

void CBoundRadioGroupControl::Detach() {
    CIterator walk;
    for (void *each = walk.Iterate(&m_Notifiers); walk.More(); each = walk.Next()) {
        if (each) static_cast<CBoundRadioButtonControl *>(each)->Detach();
    }
}

// Adds null where there is no memory for the notifier, so that those behind it keep to their values. False
// where there is none for the entry either.
bool CBoundRadioGroupControl::Add_Notifier(HWND button) {
    auto *const notifier = new CBoundRadioButtonControl(this, ExternWndProc);
    try {
        m_Notifiers.Add(notifier, 0);
    } catch (...) {
        if (notifier) delete notifier;
        return false;
    }
    if (notifier) notifier->AttachTo(button);
    return true;
}

void CBoundRadioGroupControl::Setup_Bound_Notifiers(HWND dialog) {
    Remove_Notifiers();
    CIterator walk;
    for (void *id = walk.Iterate(m_ControlIds); walk.More(); id = walk.Next()) {
        if (!Add_Notifier(GetDlgItem(dialog, static_cast<int>(reinterpret_cast<long>(id))))) return;
    }
}

void CBoundRadioGroupControl::Binding_Changed() {
    char value[256] = {};
    if (!Read_Binding(sizeof value, value)) return;
    const ObjectWatch watch(&m_Notifiers);
    for (Buttons walk(&m_Notifiers, m_Values); walk.More(); walk.Next()) {
        const bool is_value = walk.Value() && std::strcmp(walk.Value(), value) == 0;
        if (walk.Notifier()) walk.Notifier()->To_Native(BM_SETCHECK, is_value, 0);
        if (!watch.Is_There()) return; // with the group or set up anew
    }
}

void CBoundRadioGroupControl::Clicked(HWND button) {
    if (!button) return;
    for (Buttons walk(&m_Notifiers, m_Values); walk.More(); walk.Next()) {
        if (walk.Notifier() && walk.Notifier()->m_Hwnd == button) return Write_To_Client(walk.Value());
    }
}

long CBoundRadioGroupControl::GetWndProc() {
    return reinterpret_cast<long>(ExternWndProc);
}

long CBoundRadioGroupControl::ExternWndProc(HWND window, unsigned int message, unsigned int wparam,
                                            long lparam) {
    auto *const button = BoundWindow::Control_Of<CBoundRadioButtonControl>(window);
    if (!button) return BoundWindow::Pass_On(ExternWndProc, window, message, wparam, lparam);
    const ObjectWatch watch(button);
    const long result = button->Forward(window, message, wparam, lparam);
    const bool checks = (message == WM_NULL || message == BM_SETCHECK) && wparam == 1;
    if (checks && watch.Is_There() && button->m_Hwnd == window) button->Clicked(window);
    return result;
}
