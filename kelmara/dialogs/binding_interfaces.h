#pragma once
// The two sides of a binding as components see them: the notifier, by which the binding side tells a control
// of its value, and the client, by which a control reads and writes it. Values cross as terminated text.
//
// Part of the contract between separately built components: neither the order nor a signature changes. The
// library implements the notifier (bound_control.h) and calls the client, which the binding side keeps alive.
// Calls come on the thread that owns the control's window. Within any of them a client may call the notifier
// back, detach or destroy the control, or destroy its window.

#include <kelmara/api.h>

inline constexpr GUID IID_IBindingNotifierInterface = {
    0xD63689C0, 0xC330, 0x11D1, {0x99, 0x60, 0x00, 0xA0, 0x24, 0x4E, 0xE2, 0xF7}};

class KELMARA_API IBindingClientInterface {
  public:
    virtual long QueryInterface(GUID const &iid, void **out) = 0;
    virtual unsigned long AddRef() = 0;
    virtual unsigned long Release() = 0;
    /// Fills `buffer` with the value; `*size` is the room in it. A value that leaves no room for its
    /// terminator is cut, and what `*size` is afterwards is not looked at.
    virtual void Read_Value(long *size, char *buffer) = 0;
    /// The binding side's own: the library never calls it.
    virtual void Reserved() = 0;
    /// Stores a value. The text is the caller's and ends with the call.
    virtual void Write_Value(char *text) = 0;
    /// The bytes that hold the value with its terminator, -1 when there is nothing to read; for a text
    /// control also the input limit plus 1.
    virtual long Get_Value_Size() = 0;
    /// Whether a text control writes at every released key, or when it loses the focus.
    virtual bool Write_On_Key() = 0;

  protected:
    ~IBindingClientInterface() = default;
};

class KELMARA_API IBindingNotifierInterface {
  public:
    virtual long QueryInterface(GUID const &iid, void **out) = 0;
    virtual unsigned long AddRef() = 0;
    virtual unsigned long Release() = 0;
    /// The value has changed; the control is to show it.
    virtual void Binding_Changed() = 0;
    virtual void Binding_Destroyed() = 0;
    /// The value has gone, and it is back.
    virtual void Binding_Invalid() = 0;
    virtual void Binding_Valid() = 0;
    /// The client's reference is not counted; null takes it away.
    virtual void Install_Client_Interface(IBindingClientInterface *client) = 0;

  protected:
    ~IBindingNotifierInterface() = default;
};
