#include <platform/com.h>

#include <platform/com/class_keys.h>
#include <platform/com/class_list.h>
#include <platform/com/class_modules.h>
#include <platform/com/com_thread.h>
#include <platform/com/reference.h>
#include <platform/com/remote_factory.h>
#include <platform/kernel.h>

namespace {

HRESULT Find_Class_Object(REFCLSID clsid, DWORD context, REFIID iid, void **out) {
    const std::shared_ptr<Apartment> apartment = Own_Apartment();
    IUnknown *const own = apartment ? apartment->Find(clsid) : nullptr;
    if (own && context) return own->QueryInterface(iid, out);
    HRESULT result = REGDB_E_CLASSNOTREG;
    if (context & CLSCTX_INPROC_SERVER) result = Get_Module_Class_Object(clsid, iid, out);
    if (result == REGDB_E_CLASSNOTREG && (context & CLSCTX_LOCAL_SERVER))
        result = Get_Remote_Class_Object(clsid, iid, out);
    return result;
}

HRESULT Register_Class_Object(REFCLSID clsid, IUnknown *factory, DWORD &cookie) {
    SetLastError(NO_ERROR); // says why there is no apartment
    const std::shared_ptr<Apartment> apartment = Own_Or_New_Apartment();
    return apartment ? apartment->Register(clsid, factory, cookie)
                     : Refusal_To_List(static_cast<long>(GetLastError()));
}

} // namespace

extern "C" {

HRESULT CoGetClassObject(REFCLSID clsid, DWORD context, void *server, REFIID iid, void **out) {
    if (!out) return E_INVALIDARG;
    *out = nullptr;
    if (server) return E_INVALIDARG;
    if (!Thread_Uses_Com()) return CO_E_NOTINITIALIZED;
    const HRESULT result = Result_Within_Memory([&] { return Find_Class_Object(clsid, context, iid, out); });
    if (result < 0) *out = nullptr;
    return result;
}

HRESULT CoCreateInstance(REFCLSID clsid, IUnknown *outer, DWORD context, REFIID iid, void **out) {
    if (!out) return E_INVALIDARG;
    *out = nullptr;
    Reference<IClassFactory> factory;
    const HRESULT found = CoGetClassObject(clsid, context, nullptr, IID_IClassFactory, factory.Fill_Any());
    if (found < 0) return found;
    if (!factory) return E_UNEXPECTED; // a module's "success"
    const HRESULT result = Result_Within_Memory([&] { return factory->CreateInstance(outer, iid, out); });
    if (result < 0) *out = nullptr;
    return result;
}

HRESULT CoRegisterClassObject(REFCLSID clsid, IUnknown *factory, DWORD context, DWORD flags, DWORD *cookie) {
    if (!cookie) return E_INVALIDARG;
    *cookie = 0;
    if (!factory || context != CLSCTX_LOCAL_SERVER || flags != REGCLS_MULTIPLEUSE) return E_INVALIDARG;
    if (!Thread_Uses_Com()) return CO_E_NOTINITIALIZED;
    return Result_Within_Memory([&] { return Register_Class_Object(clsid, factory, *cookie); });
}

HRESULT CoRevokeClassObject(DWORD cookie) {
    const std::shared_ptr<Apartment> apartment = Own_Apartment();
    return apartment ? apartment->Revoke(cookie) : CO_E_OBJNOTREG;
}

void CoFreeUnusedLibraries() {
    Result_Within_Memory([] {
        Free_Unused_Class_Modules();
        return S_OK;
    });
}
}
