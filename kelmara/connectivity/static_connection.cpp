#include <kelmara/connectivity/connection_kind.h>

#include <kelmara/connectivity/component_interfaces.h>
#include <kelmara/connectivity/owned_interface.h>
#include <kelmara/shared_state/log.h>

#include <cstring>

namespace {

constexpr char No_Access[] = "Can't get a configuration simple access interface for %s.";

// A setting's text. A size that a component tells wrongly is put right: it is handed on with the text.
struct SettingText {
    char text[256] = {};
    long size = 255;

    template <class Component>
    void Read(Component &component, ComponentOption setting) {
        component.Read_Setting(setting.code, text, &size);
        text[sizeof text - 1] = 0;
        if (size < 0 || size > static_cast<long>(sizeof text))
            size = static_cast<long>(std::strlen(text)) + 1;
    }
};

long Create_Server(OwnedInterface<IServerSimpleAccessInterface> &server) {
    return server.Take([](void **out) {
        return CoCreateInstance(CLSID_SuiteServer, nullptr, CLSCTX_LOCAL_SERVER,
                                IID_IServerSimpleAccessInterface, out);
    });
}

void Connect_Statically(IServerSimpleAccessInterface &server, IConnectionInterface &connection,
                        SettingText &name) {
    const unsigned long setting = Setting_Static_Configuration.code;
    if (server.Update_Setting(setting, name.text, name.size, 0) != 0)
        server.Write_Setting(setting, name.text, name.size);
    connection.Connect(nullptr, true);
}

unsigned int Verify() {
    SettingText name, method;
    OwnedInterface<IServerSimpleAccessInterface> server;
    if (const long result = Create_Server(server)) {
        Debug_Log_Entry(No_Access, name.text);
        return static_cast<unsigned int>(result);
    }
    name.Read(*server.Get(), Setting_Current_Configuration);
    Debug_Log_Entry("Checking to see if we need to run update for %s.", name.text);

    OwnedInterface<IConfigSimpleAccessInterface> configuration;
    if (const long result =
            configuration.Create(CLSID_ConfigurationComponent, IID_IConfigSimpleAccessInterface)) {
        Debug_Log_Entry(No_Access, name.text);
        return static_cast<unsigned int>(result);
    }
    if (const long result = configuration->Open_By_Name(name.text)) {
        Debug_Log_Entry("Can't get a configuration simple access interface for %s. It doesn't seem to exist",
                        name.text);
        return static_cast<unsigned int>(result);
    }
    method.Read(*configuration.Get(), Option_Connection_Method);

    OwnedInterface<IConnectionInterface> connection;
    if (const long result = connection.Create(CLSID_ConnectionComponent, IID_ConnectionInterface)) {
        Debug_Log_Entry("Can't get a IID_ConnectionInterface. Result: %X", static_cast<unsigned int>(result));
        return static_cast<unsigned int>(E_UNEXPECTED);
    }
    connection->Use_Method(method.text);
    if (!connection->Is_Dialup()) Connect_Statically(*server.Get(), *connection.Get(), name);
    return 0;
}

} // namespace

unsigned int Verify_Static_Connection() try { return Verify(); } catch (...) {
    return 0;
}
