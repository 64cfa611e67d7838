#pragma once
// One named connection configuration of the suite: its options, connecting by it, and monitors that tell a
// window when a connection comes up or is lost.
//
//     CConnectionUtility utility;
//     if (utility.Set_Config("Home") != 0) return;
//     utility.Monitor_Connections(window);     // from now on Connection_Message
//     ConnectParams params = {};
//     utility.Initialize_Connect_Params(&params);
//     utility.Connect(&params, false, true);
//
// The object owns references to the configuration and the connection component, up to two threads and their
// events, and gives all of it up in its destructor, once the threads have ended; a connection that is up
// stays up. One thread at a time, with COM initialised. A copy has the same references and handles and
// serves to read the texts: of the two only one may be destroyed while they hold any.
//
// What is `long` is 0 on success and otherwise the code of the component that failed, unchanged; what is
// `bool` is false for every failure. Without a configuration (Set_Config) options are empty, what is `long`
// is E_UNEXPECTED, and nothing else happens. Buffers for texts have 256 bytes, unless a line says so, or are
// null; what a component writes there is cut to that, and nothing behind the terminator is written.

#include <kelmara/connectivity/component_interfaces.h>
#include <kelmara/foundation/auto_deleteable_object.h>

class ConnectionMonitor; // inside the library

/// Posted to the window of a monitor: WPARAM is 1 for a new connection, 0 for one that was lost.
inline constexpr unsigned int Connection_Message = 0x8002;

class KELMARA_API CConnectionUtility : public CAutoDeleteableObject {
  public:
    /// Without a configuration.
    CConnectionUtility();
    CConnectionUtility(const CConnectionUtility &other);
    CConnectionUtility &operator=(const CConnectionUtility &other);
    ~CConnectionUtility() override;

    // --- the configuration --------------------------------------------------------------------------------

    /// Opens a configuration, by at most 255 characters of its name; null is an empty one. With another name
    /// than before, the monitors are stopped and everything of the former one is let go first; with the same,
    /// it is opened again in the objects that are there. The name stays also after a failure, which lets go
    /// of the components that it came to. E_INVALIDARG for a name of more than 129 characters, which fits no
    /// locator: cut, it would be another configuration's.
    long Set_Config(const char *name);
    /// The reference is the object's; null before Set_Config.
    IConnectionInterface *Get_Connection();

    /// Whether this configuration is the one that is connected; one that needs no dialling always is. `out`
    /// receives the name of the one that is, and stays as it is without a connection component.
    bool Is_Connected(char *out);
    /// Whether none is connected at all.
    bool Can_Connect();
    bool Is_Lan_Config();
    /// Whether its device is one that no number is dialled with (connection_kind.h).
    bool Modem_Is_DSL();
    /// As the connection component writes it, of the room that it needs.
    void Get_Connected_Status_String(char *out);
    void Add_Status_Handler(IConnectionHandlerInterface *handler);
    void Remove_Status_Handler(IConnectionHandlerInterface *handler);

    // --- its options --------------------------------------------------------------------------------------

    void Get_Account_ID(char *out);
    void Get_Password(char *out);
    /// As they stand in the configuration: canonical.
    void Get_Dialup_Numbers(char *first, char *second);
    /// `*flag`: whether option DFP! is "FALSE". It may be null.
    void Get_Phonebook_Info(char *name, bool *flag);
    void Get_Default_Location(char *out);
    /// These two to 64 bytes.
    void Get_Default_Mobile_Location(char *out);
    void Get_Last_Mobile_Number(char *out);
    /// Stored at once, under the configuration's edit lock, which is given back also when storing fails. Null
    /// is an empty text.
    long Set_Default_Mobile_Location(const char *name);
    long Set_Last_Mobile_Number(const char *number);

    /// What the user is shown of dialling the first or the second number from the default location. Without a
    /// configuration `out` stays as it is.
    void Get_Formated_Dialed_Number(bool first_number, char *out);
    /// Whether the phone book knows the first or the second number. True without asking for a device that
    /// dials none, and for an empty second number. False also when the phone book cannot be had.
    bool Verify_Phone_Number(bool first_number);
    /// Whether the suite server knows the default location; true for a device that dials no number.
    bool Verify_Location();
    /// E_NOTIMPL, and nothing is touched.
    long Check_Dialup_Numbers(bool *first_ok, char *first, bool *second_ok, char *second, int size);

    // --- connecting ---------------------------------------------------------------------------------------

    /// Fills the record from the options: name, account, password, the numbers to dial from the default
    /// location, and the two numbers behind them. The second number comes first: the ten-digit options of the
    /// first are the location's at the end, and stay. Nothing is filled for a configuration without dialling;
    /// for a device that dials no number, "1.1.1.1" is the first one and the second stays. A name of more
    /// than 67 characters fits no record and is left empty, which nobody connects by: cut, it would be
    /// another's.
    void Initialize_Connect_Params(ConnectParams *params);
    /// Connects by the record, without its second number unless that is wanted: it is emptied there. The
    /// first one is remembered whether or not it connects. E_INVALIDARG for null.
    long Connect(ConnectParams *params, bool use_second_number, bool flag);
    void Close();

    /// Starts telling `window` of new and of lost connections, by Connection_Message. A monitor that runs is
    /// not started again; otherwise the window becomes that of the other monitor too. Where the component
    /// hands out no event, or the machine no thread, the monitor stays stopped. One whose thread has ended by
    /// itself, for an event that is none, counts as running until it is stopped.
    void Monitor_Connections(HWND window);
    void Monitor_Disconnections(HWND window);
    /// Return when the thread has ended; what it posted before that may still come.
    void Stop_Connection_Monitor();
    void Stop_Disconnection_Monitor();

  protected:
    /// Posts the message, whatever the window is.
    void Handle_Connection_Event(bool connected);
    /// What the threads do: 1 when they were stopped or cannot wait any more, -1 without an event.
    static unsigned int Connect_Monitor_Thread(CConnectionUtility *utility);
    static unsigned int Disconnect_Monitor_Thread(CConnectionUtility *utility);

    // The order of the fields is frozen; the pointer to the virtual table is at 0.
    char m_Configuration_Name[256];             // offset 4
    char m_Last_Dialled_Number[256];            // offset 260, the first dial string of the last Connect
    IComponentValuesInterface *m_Configuration; // offset 516, owned
    IConnectionInterface *m_Connection;         // offset 520, owned
    HANDLE m_Connect_Thread;                    // offset 524, 0: the monitor is stopped
    HANDLE m_Disconnect_Thread;                 // offset 528
    HANDLE m_Disconnect_Stop_Event;             // offset 532, kept until the destructor
    HANDLE m_Connect_Stop_Event;                // offset 536
    HWND m_Window;                              // offset 540, of both monitors; set by their start
    HANDLE m_Connect_Event;                     // offset 544, kept until the configuration changes
    HANDLE m_Disconnect_Event;                  // offset 548

  private:
    friend struct ConnectionUtilityLayout;

    KELMARA_INTERNAL ConnectionMonitor Connect_Monitor();
    KELMARA_INTERNAL ConnectionMonitor Disconnect_Monitor();
    KELMARA_INTERNAL void Stop_Monitors_And_Close_Events();
    KELMARA_INTERNAL void Release_Components();
    KELMARA_INTERNAL void Set_Window(HWND window);
    KELMARA_INTERNAL void Fill_Dial_Strings(ConnectParams &params);
    KELMARA_INTERNAL long Store_Option(ComponentOption option, const char *text);
};
static_assert(sizeof(CConnectionUtility) == 552);
