#include <platform/com/remote_factory.h>

#include <platform/com/class_keys.h>
#include <platform/com/remote_object.h>

#include <utility>

namespace {

constexpr int Attempts = 3;
constexpr DWORD Pause = 10; // milliseconds

class RemoteFactory final : public IClassFactory {
  public:
    RemoteFactory(REFCLSID clsid, std::shared_ptr<ClientConnection> connection)
        : clsid_(clsid), first_(std::move(connection)) {}

    HRESULT QueryInterface(REFIID iid, void **out) override {
        const bool known = IsEqualGUID(iid, IID_IUnknown) || IsEqualGUID(iid, IID_IClassFactory);
        *out = known ? this : nullptr;
        if (known) AddRef();
        return known ? S_OK : E_NOINTERFACE;
    }
    ULONG AddRef() override { return ++count_; }
    ULONG Release() override {
        const ULONG left = --count_;
        if (left == 0) delete this;
        return left;
    }
    HRESULT CreateInstance(IUnknown *outer, REFIID iid, void **out) override {
        if (!out) return E_POINTER;
        *out = nullptr;
        if (outer) return CLASS_E_NOAGGREGATION;
        const Reference<RemoteFactory> kept = Reference<RemoteFactory>::Another(this);
        return Result_Within_Memory([&] { return Create_Somewhere(iid, out); });
    }
    // A server lives as it likes; its objects are held by their connections.
    HRESULT LockServer(BOOL) override { return E_NOTIMPL; }

  private:
    ~RemoteFactory() = default;

    // A program that is about to end, or has just revoked the class, may still be connected to; another may
    // serve in its place. RPC_E_DISCONNECTED may be the class's own answer, and is believed the second time.
    HRESULT Create_Somewhere(REFIID iid, void **out) {
        HRESULT result = HRESULT_SERVER_UNAVAILABLE;
        bool told_before = false;
        for (int i = 0; i < Attempts; ++i) {
            const std::shared_ptr<ClientConnection> connection = Take_Connection();
            if (!connection) return result == RPC_E_DISCONNECTED ? REGDB_E_CLASSNOTREG : result;
            result = RemoteObject::Create(connection, iid, out);
            const bool revoked = result == RPC_E_DISCONNECTED && !std::exchange(told_before, true);
            if (!revoked && result != HRESULT_CALL_FAILED && result != HRESULT_SERVER_UNAVAILABLE)
                return result;
            Sleep(Pause);
        }
        return result;
    }

    // The one that found the server makes the first object.
    std::shared_ptr<ClientConnection> Take_Connection() {
        {
            const std::lock_guard guard(lock_);
            if (first_) return std::exchange(first_, nullptr);
        }
        return ClientConnection::Open(clsid_);
    }

    const GUID clsid_;
    std::atomic<ULONG> count_{1};
    std::mutex lock_;
    std::shared_ptr<ClientConnection> first_;
};

} // namespace

HRESULT Get_Remote_Class_Object(REFCLSID clsid, REFIID iid, void **out) {
    std::shared_ptr<ClientConnection> connection = ClientConnection::Open(clsid);
    if (!connection) return REGDB_E_CLASSNOTREG;
    const Reference<RemoteFactory> factory(new RemoteFactory(clsid, std::move(connection)));
    return factory->QueryInterface(iid, out);
}
