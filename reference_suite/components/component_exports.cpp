// The exports of a module that offers one class: to be had, to be let go, to be registered.

#include <reference_suite/components/component_object.h>

#include <kelmara/suite/com_registration.h>

#define MODULE_EXPORT extern "C" [[gnu::visibility("default")]]

static constinit HINSTANCE own_module = nullptr;

MODULE_EXPORT BOOL DllMain(HINSTANCE instance, DWORD reason, void *) {
    constexpr DWORD Attach = 1;
    if (reason == Attach) own_module = instance;
    return TRUE;
}

MODULE_EXPORT HRESULT DllGetClassObject(REFCLSID clsid, REFIID iid, void **out) {
    if (!out) return E_POINTER;
    *out = nullptr;
    if (!IsEqualGUID(clsid, component_class.clsid)) return CLASS_E_CLASSNOTAVAILABLE;
    return component_class.factory.QueryInterface(iid, out);
}

MODULE_EXPORT HRESULT DllCanUnloadNow() {
    if (component_class.tidy) component_class.tidy();
    return living_objects == 0 ? S_OK : S_FALSE;
}

MODULE_EXPORT HRESULT DllRegisterServer() {
    return RegisterServer(own_module, component_class.clsid, component_class.friendly_name,
                          component_class.version_independent_id, component_class.program_id);
}

MODULE_EXPORT HRESULT DllUnregisterServer() {
    return UnregisterServer(component_class.clsid, component_class.version_independent_id,
                            component_class.program_id);
}
