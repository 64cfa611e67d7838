#pragma once
// The factory of a proxy module, from a table of its interfaces. It lasts as long as the module.

#include <platform/com_marshalling.h>

struct MarshalledInterface {
    GUID iid;
    HRESULT (*make_proxy)(IUnknown *outer, IRpcProxyBuffer **proxy, void **object);
    HRESULT (*make_stub)(IUnknown *server, IRpcStubBuffer **stub);
};

class ProxyModule final : public IPSFactoryBuffer {
  public:
    template <std::size_t Count>
    constexpr explicit ProxyModule(const MarshalledInterface (&interfaces)[Count])
        : interfaces_(interfaces), count_(Count) {}

    HRESULT QueryInterface(REFIID iid, void **out) override {
        const bool known = IsEqualGUID(iid, IID_IUnknown) || IsEqualGUID(iid, IID_IPSFactoryBuffer);
        *out = known ? this : nullptr;
        return known ? S_OK : E_NOINTERFACE;
    }
    ULONG AddRef() override { return 2; }
    ULONG Release() override { return 1; }
    HRESULT CreateProxy(IUnknown *outer, REFIID iid, IRpcProxyBuffer **proxy, void **object) override {
        const MarshalledInterface *known = Find(iid);
        return known ? known->make_proxy(outer, proxy, object) : E_NOINTERFACE;
    }
    HRESULT CreateStub(REFIID iid, IUnknown *server, IRpcStubBuffer **stub) override {
        const MarshalledInterface *known = Find(iid);
        return known ? known->make_stub(server, stub) : E_NOINTERFACE;
    }

  private:
    const MarshalledInterface *Find(REFIID iid) const {
        for (std::size_t i = 0; i < count_; ++i) {
            if (IsEqualGUID(interfaces_[i].iid, iid)) return &interfaces_[i];
        }
        return nullptr;
    }

    const MarshalledInterface *interfaces_;
    std::size_t count_;
};
