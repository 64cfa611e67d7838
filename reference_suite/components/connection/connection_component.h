#pragma once
// The object of the connection component's class: a way to the one connection of the machine, which all
// objects of all processes see, and the factory of value trees.
//
// A connection lives as long as the process that made it; it outlasts the objects. What becomes of it is for
// the settings of connection_fate.h to say. The `flag` of Connect has the call wait for the end of dialling.

#include <reference_suite/components/component_object.h>
#include <reference_suite/components/connection/status_handlers.h>

#include <kelmara/connectivity/component_interfaces.h>

class ConnectionComponent final
    : public ComponentObject<Offer<IComplexValueFactoryInterface, IID_IComplexValueFactoryInterface>,
                             Offer<IConnectionInterface, IID_ConnectionInterface>> {
  public:
    /// An empty tree, which may outlive this object.
    long Create_Tree(IComplexValueInterface **out) override;

    /// "Modem", "ISDN", "PPPoE" or "LAN", in any letter case; E_INVALIDARG for others, and the method stays.
    long Use_Method(char *method) override;
    /// False for "LAN" alone.
    bool Is_Dialup() override;
    void Get_Active_Config(char *out) override;
    void Add_Status_Handler(IConnectionHandlerInterface *handler) override;
    void Remove_Status_Handler(IConnectionHandlerInterface *handler) override;
    /// To 256 bytes.
    void Get_Connected_Status_String(char *out) override;
    /// E_UNEXPECTED without a method, E_INVALIDARG without a configuration's name and for one that does not
    /// end in its field, Connection_Busy while any is connected or dialling, or what dialling came to.
    /// Without dialling, at once. There the record may be null: the configuration is then the one of the
    /// server's setting "svac", by at most 255 characters.
    long Connect(ConnectParams *params, bool flag) override;
    /// Whichever configuration is connected.
    void Close() override;
    long Get_Monitor_Events(HANDLE *connected, HANDLE *disconnected) override;

  private:
    ~ConnectionComponent() override;

    ConnectionFacts Look();
    long Begin(ConnectParams *params, bool wait);
    long Open_Board();

    std::shared_ptr<ConnectionBoard> m_Board;
    StatusHandlers m_Handlers;
    ConnectionStage m_Told = ConnectionStage::None;
    int m_Method = -1;
};
