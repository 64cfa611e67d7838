#include <platform/com/proxy_channel.h>

#include <platform/com/class_keys.h>
#include <platform/com/message_memory.h>

HRESULT ProxyChannel::QueryInterface(REFIID iid, void **out) {
    const bool known = IsEqualGUID(iid, IID_IUnknown) || IsEqualGUID(iid, IID_IRpcChannelBuffer);
    *out = known ? this : nullptr;
    if (known) AddRef();
    return known ? S_OK : E_NOINTERFACE;
}

ULONG ProxyChannel::Release() {
    const ULONG left = --count_;
    if (left == 0) delete this;
    return left;
}

HRESULT ProxyChannel::GetBuffer(RPCOLEMESSAGE *message, REFIID) {
    return Give_Buffer(message);
}

HRESULT ProxyChannel::FreeBuffer(RPCOLEMESSAGE *message) {
    return Take_Buffer_Back(message);
}

HRESULT ProxyChannel::GetDestCtx(DWORD *context, void **reserved) {
    if (context) *context = 0; // this machine
    if (reserved) *reserved = nullptr;
    return S_OK;
}

HRESULT ProxyChannel::SendReceive(RPCOLEMESSAGE *message, ULONG *status) {
    if (!message) return E_INVALIDARG;
    const HRESULT result = Result_Within_Memory([&] { return Call(*message); });
    if (result < 0) Take_Buffer_Back(message);
    if (status) *status = static_cast<ULONG>(result);
    return result;
}

HRESULT ProxyChannel::Call(RPCOLEMESSAGE &message) const {
    if (message.cbBuffer > Largest_Message || (message.cbBuffer && !message.Buffer)) return E_INVALIDARG;
    Frame request;
    request.header.kind = FrameKind::Call;
    request.header.iid = iid_;
    request.header.method = message.iMethod;
    if (message.cbBuffer) request.body.assign(static_cast<const char *>(message.Buffer), message.cbBuffer);
    std::string results;
    // What is served meanwhile may let the proxy go.
    const std::shared_ptr<ClientConnection> kept = connection_;
    if (const HRESULT result = kept->Call(request, results); result < 0) return result;
    Take_Buffer_Back(&message);
    message.cbBuffer = static_cast<ULONG>(results.size());
    if (const HRESULT result = Give_Buffer(&message); result < 0) return result;
    std::memcpy(message.Buffer, results.data(), results.size());
    return S_OK;
}
