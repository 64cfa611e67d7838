#pragma once
// What a client has of an object in a server: its identity here, which is its IUnknown, and a proxy for each
// interface that was asked for. The connection goes with the last reference, and the object with it. Proxies
// are parts of it and count their references there.

#include <platform/com/client_connection.h>
#include <platform/com/reference.h>

#include <list>

class RemoteObject final : public IUnknown {
  public:
    /// Has the server make an object, and hands out that interface of it. May throw std::bad_alloc.
    static HRESULT Create(const std::shared_ptr<ClientConnection> &connection, REFIID iid, void **out);

    HRESULT QueryInterface(REFIID iid, void **out) override;
    ULONG AddRef() override { return ++count_; }
    ULONG Release() override;

  private:
    struct Facet {
        GUID iid;
        Reference<IRpcProxyBuffer> proxy;
        IUnknown *interface; // not counted
    };

    explicit RemoteObject(std::shared_ptr<ClientConnection> connection)
        : connection_(std::move(connection)) {}
    ~RemoteObject();
    bool Hand_Out_Known(REFIID iid, void **out);
    HRESULT Ask_Server(FrameKind kind, REFIID iid, DWORD limit = INFINITE);
    HRESULT Add_Facet(REFIID iid, void **out);

    const std::shared_ptr<ClientConnection> connection_;
    std::atomic<ULONG> count_{1};
    std::mutex lock_;         // of what follows
    std::list<Facet> facets_; // each stays until the end
};
