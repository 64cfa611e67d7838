#pragma once
// What ties a native control of a dialog to a value that is kept elsewhere: the base of the bound controls.
//
//     text->AttachTo(GetDlgItem(dialog, 100));     // the window's side: its procedure becomes the control's
//     text->Install_Client_Interface(client);      // the binding's side, before or after
//     text->Binding_Changed();                     // shows the value; from then on input is written
//     text->Detach();
//
// A control shows its value when Binding_Changed tells it to, and never asks for it by itself. Controls come
// from CBoundControlCache (bound_control_cache.h), which deletes them; the reference count is for the binding
// side alone and must not reach 0 before. Nothing is reported: where there is no memory, one transfer is left
// out. A control without a client, or without a window, transfers nothing.
//
// All calls come on the thread that owns the window, also in the middle of one another: a client or a
// window's procedure may call back, and may detach or destroy the control. A window that is destroyed is let
// go of. A control that is destroyed while it has a window gives that its procedure back.
//
// A copy has its original's fields, the window's record too: of the two only one may be attached or
// destroyed.

#include <kelmara/dialogs/binding_interfaces.h>
#include <kelmara/foundation/new_delete.h>

struct BoundWindow; // inside the library

using BoundProcedure = long (*)(HWND window, unsigned int message, unsigned int wparam, long lparam);

// The order of the virtual operations is part of the contract: destructors are behind them, in each control.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

class KELMARA_API CBoundControlNotifier : public IBindingNotifierInterface {
  public:
    KELMARA_CLASS_ALLOCATION

    static constexpr unsigned long Signature = 0x12345678; // of every notifier

    CBoundControlNotifier();
    CBoundControlNotifier(const CBoundControlNotifier &other);
    CBoundControlNotifier &operator=(const CBoundControlNotifier &other);
    /// Not virtual. Gives the window's record back, and the window its procedure if it is still attached.
    ~CBoundControlNotifier();

    /// 0 for IID_IUnknown and IID_IBindingNotifierInterface, with `*out` the control and a reference counted;
    /// otherwise E_NOINTERFACE with `*out` null. E_INVALIDARG for a null `out`.
    long QueryInterface(GUID const &iid, void **out) override;
    unsigned long AddRef() override;
    /// The last reference destroys the control, which must have been made with `new`.
    unsigned long Release() override;
    /// Does nothing here. In no control while its client is being asked for the value.
    void Binding_Changed() override;
    /// Does nothing in any control.
    void Binding_Destroyed() override;
    /// The window is disabled, and enabled again. While it is invalid, no value is shown.
    void Binding_Invalid() override;
    void Binding_Valid() override;
    void Install_Client_Interface(IBindingClientInterface *client) override;

    /// Takes the window over; true. A control that has it loses it, and the procedure that messages are
    /// passed on to is the native one all the same, from the first attachment on for good. A control that has
    /// another window is detached from that first; false when it is destroyed in that. What is no window
    /// counts as none. Where the window's word is used for something else, or there is no memory for its
    /// record, the window keeps its procedure: values are shown in it, and none is written.
    virtual bool AttachTo(HWND window);
    /// Gives the window its procedure back.
    virtual void Detach();

  protected:
    /// The address of the control's window procedure; 0: none, and the window keeps its own.
    virtual long GetWndProc();

    // Offsets are frozen; the pointer to the virtual table is at 0.
    unsigned long m_Signature = Signature;       // offset 4
    IBindingClientInterface *m_Client = nullptr; // offset 8, not counted
    BoundProcedure m_OldWndProc = nullptr;       // offset 12, what messages are passed on to
    HWND m_Hwnd = nullptr;                       // offset 16, null when detached
    bool m_Valid = true;                         // offset 20
    bool m_Reading = false;                      // the library's own: the client is being asked
    void *m_UserData = nullptr;                  // offset 24, the window's record
    unsigned long m_RefCount = 0;                // offset 28

    /// Passes a message on. Of the window's last one the control takes its leave.
    KELMARA_INTERNAL long Forward(HWND window, unsigned int message, unsigned int wparam, long lparam);
    /// A message of the control's own to its window, unheard by its procedure.
    KELMARA_INTERNAL long To_Native(unsigned int message, unsigned int wparam, long lparam);
    KELMARA_INTERNAL bool Can_Show() const { return m_Valid && m_Hwnd && m_Client; }
    /// Fills and terminates a buffer of `size` bytes. False when it is not to be shown: without a client,
    /// when the value is invalid, and when the control has been destroyed meanwhile.
    KELMARA_INTERNAL bool Read_Binding(long size, char *buffer);
    /// Gives the client a copy of the text; nothing for null.
    KELMARA_INTERNAL void Write_To_Client(const char *text);

  private:
    friend struct BoundWindow;
    friend struct BoundControlLayout;

    KELMARA_INTERNAL void Set_Valid(bool valid);
};
static_assert(sizeof(CBoundControlNotifier) == 32);

#pragma GCC diagnostic pop
