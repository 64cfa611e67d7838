#pragma once
// A group of radio buttons bound to one value: each button stands for a text, and the one whose text is the
// value is checked; with any other value none is.
//
//     auto *group = cache.GetRadioGroupControl(ids, values);     // in step: identifiers, and char * texts
//     group->Setup_Bound_Notifiers(dialog);
//     group->Install_Client_Interface(client);
//
// A group has no window: its buttons have notifiers, which only serve their windows. They stay enabled while
// the value is invalid. A button that is checked by anybody but the binding writes its text; one that is
// unchecked writes nothing, nor does one without a text. Values are of at most 255 characters.

#include <kelmara/containers/list.h>
#include <kelmara/dialogs/bound_control.h>

// The base's destructor is not virtual, and this one is.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

class CBoundRadioGroupControl;

/// The window of one radio button, whose group it tells of clicks.
class KELMARA_API CBoundRadioButtonControl : public CBoundControlNotifier {
  public:
    CBoundRadioButtonControl(CBoundRadioGroupControl *group,
                             long (*procedure)(HWND, unsigned int, unsigned int, long));
    CBoundRadioButtonControl(const CBoundRadioButtonControl &other);
    CBoundRadioButtonControl &operator=(const CBoundRadioButtonControl &other);
    virtual ~CBoundRadioButtonControl();

    void Clicked(HWND button);

  protected:
    long GetWndProc() override;

    // Offsets are frozen.
    BoundProcedure m_WndProc;         // offset 32
    CBoundRadioGroupControl *m_Group; // offset 36

  private:
    friend class CBoundRadioGroupControl;
    friend struct BoundRadioLayout;
};
static_assert(sizeof(CBoundRadioButtonControl) == 40);

class KELMARA_API CBoundRadioGroupControl : public CBoundControlNotifier {
  public:
    /// Takes both lists over, made with `new`; null is an empty one. What they release with themselves goes
    /// with the group. Throws as a list does where there is no memory for the pool of items; the lists are
    /// then the caller's.
    CBoundRadioGroupControl(CDSList *ids, CDSList *values);
    CBoundRadioGroupControl(const CBoundRadioGroupControl &other);
    CBoundRadioGroupControl &operator=(const CBoundRadioGroupControl &other);
    virtual ~CBoundRadioGroupControl();

    /// The last reference destroys all of the group.
    unsigned long Release() override;
    void Binding_Changed() override;
    /// Does nothing: false.
    bool AttachTo(HWND window) override;
    /// Detaches all buttons.
    void Detach() override;

    /// Makes a notifier for each identifier and attaches it to the dialog's item. A second call begins anew.
    /// A button that is not there, or that there is no memory for, stays unbound and keeps its value's place.
    void Setup_Bound_Notifiers(HWND dialog);
    /// Writes the button's value, whether or not the value is valid; nothing for a window that is no button
    /// of the group.
    void Clicked(HWND button);

  protected:
    long GetWndProc() override;
    static long ExternWndProc(HWND window, unsigned int message, unsigned int wparam, long lparam);

    // Offsets are frozen.
    CDSList *m_ControlIds; // offset 32
    CDSList *m_Values;     // offset 36
    CDSList m_Notifiers;   // offset 40, in step with the two; null for a button without memory

  private:
    friend struct BoundRadioLayout;

    KELMARA_INTERNAL void Remove_Notifiers();
    KELMARA_INTERNAL bool Add_Notifier(HWND button);
};
static_assert(sizeof(CBoundRadioGroupControl) == 80);

#pragma GCC diagnostic pop
