#include <platform/com/remote_object.h>

#include <platform/com/class_keys.h>
#include <platform/com/proxy_channel.h>
#include <platform/com/proxy_factory.h>

HRESULT RemoteObject::Create(const std::shared_ptr<ClientConnection> &connection, REFIID iid, void **out) {
    const Reference<RemoteObject> object(new RemoteObject(connection));
    const HRESULT made = object->Ask_Server(FrameKind::Create, iid, ClientConnection::Longest_Making);
    if (made < 0) return made;
    if (object->Hand_Out_Known(iid, out)) return S_OK;
    return object->Add_Facet(iid, out);
}

RemoteObject::~RemoteObject() {
    for (const Facet &facet : facets_) facet.proxy->Disconnect();
}

ULONG RemoteObject::Release() {
    const ULONG left = --count_;
    if (left == 0) delete this;
    return left;
}

HRESULT RemoteObject::QueryInterface(REFIID iid, void **out) {
    if (!out) return E_POINTER;
    *out = nullptr;
    const Reference<RemoteObject> kept =
        Reference<RemoteObject>::Another(this); // whatever is served meanwhile
    return Result_Within_Memory([&]() -> HRESULT {
        if (Hand_Out_Known(iid, out)) return S_OK;
        if (const HRESULT result = Ask_Server(FrameKind::Query, iid); result < 0) return result;
        return Add_Facet(iid, out);
    });
}

bool RemoteObject::Hand_Out_Known(REFIID iid, void **out) {
    IUnknown *known = nullptr;
    if (IsEqualGUID(iid, IID_IUnknown)) {
        known = this;
    } else {
        const std::lock_guard guard(lock_);
        for (const Facet &facet : facets_) {
            if (IsEqualGUID(facet.iid, iid)) known = facet.interface;
        }
    }
    if (!known) return false;
    AddRef();
    *out = known;
    return true;
}

HRESULT RemoteObject::Ask_Server(FrameKind kind, REFIID iid, DWORD limit) {
    Frame request;
    request.header.kind = kind;
    request.header.iid = iid;
    std::string nothing;
    return connection_->Call(request, nothing, limit);
}

// The reference that comes with the interface is the caller's. A proxy that two threads made is there twice,
// and both serve.
HRESULT RemoteObject::Add_Facet(REFIID iid, void **out) {
    Reference<IPSFactoryBuffer> factory;
    if (const HRESULT result = Find_Proxy_Factory(iid, factory); result < 0) return result;
    const Reference<ProxyChannel> channel(new ProxyChannel(connection_, iid));
    Facet facet{iid, {}, nullptr};
    Reference<IUnknown> counted;
    const HRESULT made = factory->CreateProxy(this, iid, facet.proxy.Fill(), counted.Fill_Any());
    if (made < 0) return (void)facet.proxy.Give(), (void)counted.Give(), made;
    if (!facet.proxy || !counted) return E_UNEXPECTED;
    facet.interface = counted.Get();
    if (const HRESULT result = facet.proxy->Connect(channel.Get()); result < 0) return result;
    const std::lock_guard guard(lock_);
    facets_.push_back(std::move(facet));
    *out = counted.Give();
    return S_OK;
}
