// kmserverproxy: the proxy module of the suite server's interfaces, for its clients and for the server.

#include <reference_suite/components/marshalling/proxy_module.h>
#include <reference_suite/components/server_proxy/server_faces.h>
#include <reference_suite/components/server_proxy/server_stubs.h>

#include <kelmara/suite/com_registration.h>
#include <kelmara/system/reg_master.h>

#include <kelmara/foundation/conversions.h>

namespace {

constexpr GUID CLSID_ServerProxy = {
    0x3E9D52A4, 0x10B7, 0x4C63, {0x8A, 0x4F, 0x62, 0xD1, 0x0B, 0x93, 0x7E, 0x01}};
constexpr char Program_Id[] = "Kelmara.ServerProxy.1";
constexpr char Version_Independent_Id[] = "Kelmara.ServerProxy";

constexpr MarshalledInterface Interfaces[] = {
    {IID_IServerInterface, Proxy<ServerFace>::Make, Make_Stub<ServerStub>},
    {IID_IServerSimpleAccessInterface, Proxy<ServerSettingsFace>::Make, Make_Stub<ServerSettingsStub>},
};

constinit ProxyModule module(Interfaces);
constinit HINSTANCE own_module = nullptr;

bool Name_Proxy_Of(GUID const &iid) {
    char interface_text[39], class_text[39];
    GUIDToString(&iid, interface_text, false);
    GUIDToString(&CLSID_ServerProxy, class_text, false);
    CRegMaster registry;
    return registry.CreateKey(HKEY_CLASSES_ROOT,
                              (std::string("Interface\\") + interface_text + "\\ProxyStubClsid32").c_str()) &&
           registry.SetRegEntry("", class_text);
}

} // namespace

#define MODULE_EXPORT extern "C" [[gnu::visibility("default")]]

MODULE_EXPORT BOOL DllMain(HINSTANCE instance, DWORD reason, void *) {
    constexpr DWORD Attach = 1;
    if (reason == Attach) own_module = instance;
    return TRUE;
}

MODULE_EXPORT HRESULT DllGetClassObject(REFCLSID clsid, REFIID iid, void **out) {
    return IsEqualGUID(clsid, CLSID_ServerProxy) ? module.QueryInterface(iid, out)
                                                 : CLASS_E_CLASSNOTAVAILABLE;
}

/// Enters the module for its interfaces; E_FAIL when the registry does not take them.
MODULE_EXPORT HRESULT DllRegisterServer() try {
    RegisterServer(own_module, CLSID_ServerProxy, "Kelmara server proxy", Version_Independent_Id, Program_Id);
    for (const MarshalledInterface &each : Interfaces) {
        if (!Name_Proxy_Of(each.iid)) return E_FAIL;
    }
    return S_OK;
} catch (...) {
    return E_OUTOFMEMORY;
}
