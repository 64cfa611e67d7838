#include <platform/com.h>

#include <platform/com/class_keys.h>
#include <platform/com/class_modules.h>
#include <platform/com/com_thread.h>

namespace {

// One reference, given back at the scope's end.
struct Factory {
    ~Factory() {
        if (held) held->Release();
    }
    IClassFactory *held = nullptr;
};

HRESULT Find_Class_Object(REFCLSID clsid, DWORD context, REFIID iid, void **out) {
    if (context & CLSCTX_INPROC_SERVER) return Get_Module_Class_Object(clsid, iid, out);
    return REGDB_E_CLASSNOTREG;
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
    Factory factory;
    const HRESULT found = CoGetClassObject(clsid, context, nullptr, IID_IClassFactory,
                                           reinterpret_cast<void **>(&factory.held));
    if (found < 0) return found;
    const HRESULT result = factory.held->CreateInstance(outer, iid, out);
    if (result < 0) *out = nullptr;
    return result;
}

void CoFreeUnusedLibraries() {
    Result_Within_Memory([] {
        Free_Unused_Class_Modules();
        return S_OK;
    });
}
}
