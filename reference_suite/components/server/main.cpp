// kmserver: the suite server, a program without a window. It offers its class until it is told to end by the
// setting Setting_End_Server, or its owner ends where it has one (Server_Owner_Variable). Of several that are
// started on a machine one serves; the others end as soon as it can be reached.

#include <reference_suite/components/server/suite_server.h>

#include <platform/kernel.h>
#include <platform/user.h>

#include <cstdio>
#include <cstdlib>

namespace {

constexpr int Attempts = 1000;
constexpr DWORD Pause = 10; // milliseconds

// Lasts as long as the process.
class ServerFactory final : public IClassFactory {
  public:
    HRESULT QueryInterface(REFIID iid, void **out) override {
        const bool known = IsEqualGUID(iid, IID_IUnknown) || IsEqualGUID(iid, IID_IClassFactory);
        *out = known ? this : nullptr;
        return known ? S_OK : E_NOINTERFACE;
    }
    ULONG AddRef() override { return 2; }
    ULONG Release() override { return 1; }
    HRESULT CreateInstance(IUnknown *outer, REFIID iid, void **out) override {
        *out = nullptr;
        if (outer) return CLASS_E_NOAGGREGATION;
        SuiteServer *const server = SuiteServer::Make();
        if (!server) return E_OUTOFMEMORY;
        const HRESULT result = server->QueryInterface(iid, out);
        server->Release();
        return result;
    }
    HRESULT LockServer(BOOL) override { return E_NOTIMPL; }
};

constinit ServerFactory factory;

bool Another_Can_Be_Reached() {
    void *found = nullptr;
    if (CoGetClassObject(CLSID_SuiteServer, CLSCTX_LOCAL_SERVER, nullptr, IID_IClassFactory, &found) != S_OK)
        return false;
    static_cast<IClassFactory *>(found)->Release();
    return true;
}

// The mutex is held by who serves, and comes free with its end.
bool Is_Mine_To_Serve(HANDLE mutex) {
    for (int i = 0; i < Attempts; ++i) {
        const DWORD taken = WaitForSingleObject(mutex, 0);
        if (taken == WAIT_OBJECT_0 || taken == WAIT_ABANDONED) return true;
        if (taken == WAIT_FAILED || Another_Can_Be_Reached()) return false;
        Sleep(Pause);
    }
    return false;
}

enum class Owner { None, There, Ended, Unknown };

// The process that the server ends with.
Owner Find_Owner(HANDLE &process) {
    const char *const id = std::getenv(Server_Owner_Variable);
    if (!id) return Owner::None;
    char *end = nullptr;
    const DWORD number = std::strtoul(id, &end, 10);
    process = number && !*end ? OpenProcess(SYNCHRONIZE, FALSE, number) : nullptr;
    if (process) return Owner::There;
    if (number && !*end && GetLastError() == ERROR_INVALID_PARAMETER) return Owner::Ended;
    std::fprintf(stderr, "kmserver: the owner %s cannot be waited for\n", id);
    return Owner::Unknown;
}

void Answer_Calls(HANDLE owner) {
    const DWORD awaited = owner ? 1 : 0;
    MSG message;
    while (MsgWaitForMultipleObjects(awaited, &owner, FALSE, INFINITE, QS_ALLEVENTS) ==
           WAIT_OBJECT_0 + awaited) {
        if (!PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) continue;
        if (message.message == WM_QUIT) return;
        DispatchMessageA(&message);
    }
}

int Serve(HANDLE owner) {
    DWORD cookie = 0;
    const HRESULT result =
        CoRegisterClassObject(CLSID_SuiteServer, &factory, CLSCTX_LOCAL_SERVER, REGCLS_MULTIPLEUSE, &cookie);
    if (result != S_OK) {
        std::fprintf(stderr, "kmserver: the class cannot be offered: %lX\n", static_cast<DWORD>(result));
        return 1;
    }
    Answer_Calls(owner);
    CoRevokeClassObject(cookie);
    return 0;
}

} // namespace

int main() {
    HANDLE owner = nullptr;
    const Owner found = Find_Owner(owner);
    if (found == Owner::Ended || found == Owner::Unknown) return found == Owner::Ended ? 0 : 1;
    if (CoInitialize(nullptr) != S_OK) return 1;
    const HANDLE mutex = CreateMutexA(nullptr, FALSE, Server_Mutex);
    const int code = Is_Mine_To_Serve(mutex) ? Serve(owner) : 0;
    CoUninitialize();
    CloseHandle(mutex);
    if (owner) CloseHandle(owner);
    return code;
}
