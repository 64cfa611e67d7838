#include <reference_suite/components/server/suite_server.h>

#include <reference_suite/components/component_store.h>

#include <platform/user.h>

#include <cstring>
#include <new>

namespace {

using Opening = StoredKey::Opening;

long Store(Opening opening, unsigned long code, const char *text, long size) {
    if (!text || size < 0) return E_INVALIDARG;
    const std::string_view setting(text, strnlen(text, static_cast<std::size_t>(size)));
    const StoredKey settings(Settings_Key, opening);
    if (opening == Opening::If_There) {
        if (const long result = settings.Find(code); result != 0) return result;
    }
    return settings.Write(code, setting);
}

long Load(unsigned long code, char *buffer, long *size) {
    std::string text;
    const long result = StoredKey(Settings_Key, Opening::If_There).Read(code, text);
    const long room = *size;
    *size = static_cast<long>(text.size()) + 1;
    buffer[0] = 0;
    if (result != 0) return result;
    if (room < *size) return ERROR_MORE_DATA;
    std::memcpy(buffer, text.c_str(), text.size() + 1);
    return 0;
}

template <class Step>
long Within(Step step) try {
    return step();
} catch (const std::bad_alloc &) {
    return E_OUTOFMEMORY;
}

} // namespace

SuiteServer *SuiteServer::Make() {
    return new (std::nothrow) SuiteServer;
}

HRESULT SuiteServer::QueryInterface(REFIID iid, void **out) {
    if (!out) return E_POINTER;
    *out = nullptr;
    if (IsEqualGUID(iid, IID_IUnknown) || IsEqualGUID(iid, IID_IServerInterface))
        *out = static_cast<IServerInterface *>(this);
    else if (IsEqualGUID(iid, IID_IServerSimpleAccessInterface))
        *out = static_cast<IServerSimpleAccessInterface *>(this);
    if (*out) AddRef();
    return *out ? S_OK : E_NOINTERFACE;
}

ULONG SuiteServer::Release() {
    const ULONG left = --count_;
    if (left == 0) delete this;
    return left;
}

long SuiteServer::Find_Component(long kind, char *name, ComponentLocator *out) {
    if (!out) return E_INVALIDARG;
    *out = {};
    if (!name) return E_INVALIDARG;
    return Within([&]() -> long {
        if (Component_Key(kind, name).empty()) return E_INVALIDARG;
        std::strcpy(out->name, name);
        out->kind = kind;
        out->present = Is_Component_Stored(kind, name);
        return 0;
    });
}

long SuiteServer::Read_Setting(unsigned long code, char *buffer, long *size) {
    if (!buffer || !size || *size < 1) return E_INVALIDARG;
    return Within([&] { return Load(code, buffer, size); });
}

long SuiteServer::Write_Setting(unsigned long code, char *text, long size) {
    if (code == Setting_End_Server) return PostQuitMessage(0), 0;
    return Within([&] { return Store(Opening::Make, code, text, size); });
}

long SuiteServer::Update_Setting(unsigned long code, char *text, long size, long) {
    return Within([&] { return Store(Opening::If_There, code, text, size); });
}
