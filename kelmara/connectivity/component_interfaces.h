#pragma once
// The suite's components as everybody calls them: their classes, the interfaces they offer, the records and
// option codes that cross to them.
//
// Part of the contract between separately built components: the order of slots, the offsets and the codes do
// not change. Every identifier is defined here and nowhere else. References are counted by hand; COM is
// initialised on the thread. Slots that nobody here calls are named for their place behind IUnknown's three,
// and answer E_NOTIMPL where a component has nothing for them. Texts end with a zero byte; a size counts it,
// except where 255 is given for a buffer of 256 bytes.

#include <kelmara/connectivity/component_records.h>

#include <platform/com.h>

// --- classes ----------------------------------------------------------------------------------------------

// Created with CLSCTX_INPROC_SERVER, the server with CLSCTX_LOCAL_SERVER.
inline constexpr GUID CLSID_ConfigurationComponent = {
    0xDC495940, 0xFBB2, 0x11D1, {0x99, 0x60, 0x00, 0xA0, 0x24, 0x4E, 0xE2, 0xF7}};
inline constexpr GUID CLSID_ConnectionComponent = {
    0x2626B000, 0xCE20, 0x11D1, {0x99, 0x60, 0x00, 0xA0, 0x24, 0x4E, 0xE2, 0xF7}};
inline constexpr GUID CLSID_LocationComponent = {
    0xDE8200E0, 0xFB12, 0x11D1, {0x99, 0x60, 0x00, 0xA0, 0x24, 0x4E, 0xE2, 0xF7}};
inline constexpr GUID CLSID_PhonebookComponent = {
    0x2716A180, 0xFB13, 0x11D1, {0x99, 0x60, 0x00, 0xA0, 0x24, 0x4E, 0xE2, 0xF7}};
inline constexpr GUID CLSID_SuiteServer = {
    0xA09DF560, 0xC3F7, 0x11D1, {0x99, 0x60, 0x00, 0xA0, 0x24, 0x4E, 0xE2, 0xF7}};

// --- a component and its values ---------------------------------------------------------------------------

inline constexpr GUID IID_IComponentStorageInterface = {
    0x4E9C9920, 0xCB21, 0x11D1, {0x99, 0x60, 0x00, 0xA0, 0x24, 0x4E, 0xE2, 0xF7}};

/// Of the configuration, location and phone book components. Results are 0 on success.
class IComponentStorageInterface : public IUnknown {
  public:
    /// Binds a new object to the named component. The second argument is 0.
    virtual long Open_Component(ComponentLocator *locator, long zero) = 0;
    virtual long Slot_2() { return E_NOTIMPL; }
    virtual long Slot_3() { return E_NOTIMPL; }
    virtual long Slot_4() { return E_NOTIMPL; }
    /// (1, 0) before a change, (0, 0) after it.
    virtual long Set_Edit_Lock(long on, long zero) = 0;
    virtual long Slot_6() { return E_NOTIMPL; }
    virtual long Slot_7() { return E_NOTIMPL; }
    /// Stores the changed values.
    virtual long Commit_Component() = 0;
    virtual long Slot_9() { return E_NOTIMPL; }
    virtual long Slot_10() { return E_NOTIMPL; }
    /// Command_Test_Number is the one in use; the last two arguments are 0.
    virtual long Run_Component_Command(long command, char *name, char *text, long zero, long zero_too) = 0;

  protected:
    ~IComponentStorageInterface() = default;
};

inline constexpr GUID IID_IComponentValuesInterface = {
    0x5202AAE0, 0xC3F7, 0x11D1, {0x99, 0x60, 0x00, 0xA0, 0x24, 0x4E, 0xE2, 0xF7}};

/// Of the configuration and location components: options by their codes.
class IComponentValuesInterface : public IUnknown {
  public:
    virtual long Slot_1() { return E_NOTIMPL; }
    virtual long Slot_2() { return E_NOTIMPL; }
    /// `length` in bytes, the terminator counted.
    virtual long Set_Value(unsigned long code, char *data, long length) = 0;
    virtual long Slot_4() { return E_NOTIMPL; }
    virtual long Get_Value(unsigned long code, char *buffer, long size) = 0;

  protected:
    ~IComponentValuesInterface() = default;
};

inline constexpr GUID IID_IConfigSimpleAccessInterface = {
    0x819AE124, 0x00FB, 0x11D5, {0xB0, 0xEC, 0x00, 0xA0, 0x24, 0x4E, 0xE2, 0xF7}};

/// Of the configuration component: a configuration's options without the rest.
class IConfigSimpleAccessInterface : public IUnknown {
  public:
    /// 0 on success.
    virtual long Open_By_Name(char *name) = 0;
    /// `*size` in: the buffer's; out: the text's.
    virtual long Read_Setting(unsigned long code, char *buffer, long *size) = 0;

  protected:
    ~IConfigSimpleAccessInterface() = default;
};

inline constexpr GUID IID_IPhonebookInterface = {
    0x13DF8EE0, 0xD2CA, 0x11D1, {0x99, 0x60, 0x00, 0xA0, 0x24, 0x4E, 0xE2, 0xF7}};

/// Of the phone book component, which is only asked for its storage.
class IPhonebookInterface : public IUnknown {
  protected:
    ~IPhonebookInterface() = default;
};

// --- connections ------------------------------------------------------------------------------------------

/// Who is told of a connection's state. Passed through; the library calls nothing on it.
class IConnectionHandlerInterface : public IUnknown {
  protected:
    ~IConnectionHandlerInterface() = default;
};

inline constexpr GUID IID_ConnectionInterface = {
    0xC9042420, 0xE4F4, 0x11D1, {0x99, 0x60, 0x00, 0xA0, 0x24, 0x4E, 0xE2, 0x15}};

/// Of the connection component.
class IConnectionInterface : public IUnknown {
  public:
    /// Binds the object to the method that Option_Connection_Method names; 0 on success.
    virtual long Use_Method(char *method) = 0;
    virtual long Slot_2() { return E_NOTIMPL; }
    virtual long Slot_3() { return E_NOTIMPL; }
    /// False for a configuration that needs no dialling.
    virtual bool Is_Dialup() = 0;
    /// The name of the configuration that is connected at present, empty for none, to 256 bytes.
    virtual void Get_Active_Config(char *out) = 0;
    virtual long Slot_6() { return E_NOTIMPL; }
    virtual void Add_Status_Handler(IConnectionHandlerInterface *handler) = 0;
    virtual void Remove_Status_Handler(IConnectionHandlerInterface *handler) = 0;
    virtual void Get_Connected_Status_String(char *out) = 0;
    /// The record may be null.
    virtual long Connect(ConnectParams *params, bool flag) = 0;
    virtual void Close() = 0;
    /// 0 on success, and event handles that the caller owns and closes, one for each pointer that is not
    /// null: set when a connection comes up or goes down, and reset by the caller.
    virtual long Get_Monitor_Events(HANDLE *connected, HANDLE *disconnected) = 0;

  protected:
    ~IConnectionInterface() = default;
};

// --- the suite server -------------------------------------------------------------------------------------

inline constexpr GUID IID_IServerInterface = {
    0x3DC0E780, 0xCAEC, 0x11D1, {0x99, 0x60, 0x00, 0xA0, 0x24, 0x4E, 0xE2, 0xF7}};

class IServerInterface : public IUnknown {
  public:
    virtual long Slot_1() { return E_NOTIMPL; }
    virtual long Slot_2() { return E_NOTIMPL; }
    virtual long Slot_3() { return E_NOTIMPL; }
    virtual long Slot_4() { return E_NOTIMPL; }
    /// 0 on success, with the locator filled: its `present` says whether there is such a component.
    virtual long Find_Component(long kind, char *name, ComponentLocator *out) = 0;

  protected:
    ~IServerInterface() = default;
};

inline constexpr GUID IID_IServerSimpleAccessInterface = {
    0x61926260, 0x6D8F, 0x11D2, {0xAE, 0x14, 0x00, 0xA0, 0x24, 0x4E, 0xE2, 0xF7}};

/// The server's settings by their codes.
class IServerSimpleAccessInterface : public IUnknown {
  public:
    /// `*size` in: the buffer's; out: the text's.
    virtual long Read_Setting(unsigned long code, char *buffer, long *size) = 0;
    virtual long Slot_2() { return E_NOTIMPL; }
    virtual long Slot_3() { return E_NOTIMPL; }
    virtual long Write_Setting(unsigned long code, char *text, long size) = 0;
    virtual long Slot_5() { return E_NOTIMPL; }
    /// 0 if the setting was taken; otherwise Write_Setting follows. The last argument is 0.
    virtual long Update_Setting(unsigned long code, char *text, long size, long zero) = 0;

  protected:
    ~IServerSimpleAccessInterface() = default;
};

// --- dialling locations -----------------------------------------------------------------------------------

inline constexpr GUID IID_ITDDOptionsInterface = {
    0x1614E886, 0x1211, 0x11D4, {0xBD, 0xE2, 0x44, 0x45, 0x53, 0x54, 0x00, 0x01}};

/// Of the location component. Results are 0 on success.
class ITDDOptionsInterface : public IUnknown {
  public:
    /// Stores the present options, under a token that is not 0.
    virtual long Save_Options(unsigned long *token) = 0;
    /// The two answers stand the other way round than in CDialLocHelper::Set_TDD_Options.
    virtual long Apply_Options(bool second, bool first, char *area_code, char *exchange) = 0;
    /// The token stays valid.
    virtual long Restore_Options(unsigned long token) = 0;
    virtual long Discard_Saved_Options(unsigned long token) = 0;

  protected:
    ~ITDDOptionsInterface() = default;
};

// --- value trees ------------------------------------------------------------------------------------------

/// A value tree, and each of its items. It has no identifier.
class IComplexValueInterface : public IUnknown {
  public:
    virtual long Slot_1() { return E_NOTIMPL; }
    virtual long Slot_2() { return E_NOTIMPL; }
    virtual long Slot_3() { return E_NOTIMPL; }
    virtual long Slot_4() { return E_NOTIMPL; }
    virtual long Slot_5() { return E_NOTIMPL; }
    virtual long Slot_6() { return E_NOTIMPL; }
    virtual long Slot_7() { return E_NOTIMPL; }
    virtual long Slot_8() { return E_NOTIMPL; }
    virtual long Slot_9() { return E_NOTIMPL; }
    virtual long Slot_10() { return E_NOTIMPL; }
    virtual long Slot_11() { return E_NOTIMPL; }
    virtual long Slot_12() { return E_NOTIMPL; }
    /// Valid until the item is released.
    virtual char *Get_Text() = 0;
    /// A new reference, null if there is no such item. The second argument is 0.
    virtual IComplexValueInterface *Find_Item(unsigned long code, long zero) = 0;

  protected:
    ~IComplexValueInterface() = default;
};

inline constexpr GUID IID_IComplexValueFactoryInterface = {
    0x53419380, 0xC3F7, 0x11D1, {0x99, 0x60, 0x00, 0xA0, 0x24, 0x4E, 0xE2, 0xF7}};

/// Of the connection component's class.
class IComplexValueFactoryInterface : public IUnknown {
  public:
    virtual long Slot_1() { return E_NOTIMPL; }
    /// 0 on success: an empty tree, the caller's.
    virtual long Create_Tree(IComplexValueInterface **out) = 0;

  protected:
    ~IComplexValueFactoryInterface() = default;
};

/// The caller's own object, of whatever class. It has no identifier.
class IComplexComponentInterface : public IUnknown {
  public:
    virtual long Slot_1() { return E_NOTIMPL; }
    virtual long Slot_2() { return E_NOTIMPL; }
    virtual long Slot_3() { return E_NOTIMPL; }
    virtual long Slot_4() { return E_NOTIMPL; }
    virtual long Slot_5() { return E_NOTIMPL; }
    virtual long Slot_6() { return E_NOTIMPL; }
    virtual long Slot_7() { return E_NOTIMPL; }
    virtual long Slot_8() { return E_NOTIMPL; }
    virtual long Slot_9() { return E_NOTIMPL; }
    virtual long Slot_10() { return E_NOTIMPL; }
    virtual long Slot_11() { return E_NOTIMPL; }
    virtual long Slot_12() { return E_NOTIMPL; }
    /// Writes the component's values into the tree; 0 on success.
    virtual long Fill_Tree(IComplexValueInterface *tree) = 0;
    virtual long Slot_14() { return E_NOTIMPL; }
    /// Empty: there is nothing to look at.
    virtual long Get_Component_Text(char *out) = 0;

  protected:
    ~IComplexComponentInterface() = default;
};
