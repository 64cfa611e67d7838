#pragma once
// The channel of one proxy: its interface's calls on the object's connection.

#include <platform/com/client_connection.h>

class ProxyChannel final : public IRpcChannelBuffer {
  public:
    ProxyChannel(std::shared_ptr<ClientConnection> connection, REFIID iid)
        : connection_(std::move(connection)), iid_(iid) {}

    HRESULT QueryInterface(REFIID iid, void **out) override;
    ULONG AddRef() override { return ++count_; }
    ULONG Release() override;
    HRESULT GetBuffer(RPCOLEMESSAGE *message, REFIID iid) override;
    HRESULT SendReceive(RPCOLEMESSAGE *message, ULONG *status) override;
    HRESULT FreeBuffer(RPCOLEMESSAGE *message) override;
    HRESULT GetDestCtx(DWORD *context, void **reserved) override;
    HRESULT IsConnected() override { return connection_->Is_Over() ? S_FALSE : S_OK; }

  private:
    ~ProxyChannel() = default;
    HRESULT Call(RPCOLEMESSAGE &message) const;

    const std::shared_ptr<ClientConnection> connection_;
    const GUID iid_;
    std::atomic<ULONG> count_{1};
};
