#include <platform/com/served_object.h>

#include <platform/com/message_memory.h>
#include <platform/com/proxy_factory.h>

namespace {

// The channel of one call. It lasts as long as that, whatever is counted.
class AnswerChannel final : public IRpcChannelBuffer {
  public:
    AnswerChannel() = default;
    ~AnswerChannel() { CoTaskMemFree(results_); }
    AnswerChannel(const AnswerChannel &) = delete;
    AnswerChannel &operator=(const AnswerChannel &) = delete;

    void Take_Results(const RPCOLEMESSAGE &message, std::string &results) const {
        if (results_ && message.Buffer == results_ && message.cbBuffer <= size_)
            results.assign(static_cast<const char *>(results_), message.cbBuffer);
    }

    HRESULT QueryInterface(REFIID iid, void **out) override {
        const bool known = IsEqualGUID(iid, IID_IUnknown) || IsEqualGUID(iid, IID_IRpcChannelBuffer);
        *out = known ? this : nullptr;
        return known ? S_OK : E_NOINTERFACE;
    }
    ULONG AddRef() override { return 2; }
    ULONG Release() override { return 1; }
    HRESULT GetBuffer(RPCOLEMESSAGE *message, REFIID) override {
        if (!message) return E_INVALIDARG;
        FreeBuffer(message);
        const HRESULT result = Give_Buffer(message);
        if (result < 0) return result;
        results_ = message->Buffer;
        size_ = message->cbBuffer;
        return S_OK;
    }
    HRESULT SendReceive(RPCOLEMESSAGE *, ULONG *) override { return E_UNEXPECTED; }
    // The arguments are the call's own and stay.
    HRESULT FreeBuffer(RPCOLEMESSAGE *message) override {
        if (message && message->Buffer == results_) message->Buffer = nullptr;
        CoTaskMemFree(results_);
        results_ = nullptr;
        return S_OK;
    }
    HRESULT GetDestCtx(DWORD *context, void **reserved) override {
        if (context) *context = 0;
        if (reserved) *reserved = nullptr;
        return S_OK;
    }
    HRESULT IsConnected() override { return S_OK; }

  private:
    void *results_ = nullptr;
    ULONG size_ = 0;
};

} // namespace

HRESULT ServedObject::Make(IUnknown *factory, REFIID iid, std::shared_ptr<ServedObject> &made) {
    Reference<IClassFactory> maker;
    if (const HRESULT result = factory->QueryInterface(IID_IClassFactory, maker.Fill_Any()); result < 0)
        return (void)maker.Give(), result;
    Reference<IUnknown> object;
    const HRESULT result = maker->CreateInstance(nullptr, iid, object.Fill_Any());
    if (result < 0) return (void)object.Give(), result;
    if (!object) return E_UNEXPECTED;
    const std::shared_ptr<ServedObject> served(new ServedObject(std::move(object)));
    if (const HRESULT queried = served->Query(iid); queried < 0) return queried;
    made = served;
    return S_OK;
}

ServedObject::~ServedObject() {
    for (const auto &[iid, stub] : stubs_) stub->Disconnect();
}

HRESULT ServedObject::Query(REFIID iid) {
    if (IsEqualGUID(iid, IID_IUnknown) || stubs_.contains(iid)) return S_OK;
    Reference<IUnknown> wanted;
    if (const HRESULT result = object_->QueryInterface(iid, wanted.Fill_Any()); result < 0)
        return (void)wanted.Give(), result;
    Reference<IPSFactoryBuffer> factory;
    if (const HRESULT result = Find_Proxy_Factory(iid, factory); result < 0) return result;
    Reference<IRpcStubBuffer> stub;
    const HRESULT result = factory->CreateStub(iid, object_.Get(), stub.Fill());
    if (result < 0) return (void)stub.Give(), result;
    if (!stub) return E_UNEXPECTED;
    stubs_.emplace(iid, std::move(stub));
    return S_OK;
}

HRESULT ServedObject::Invoke(const FrameHeader &call, std::string &arguments, std::string &results) {
    const auto stub = stubs_.find(call.iid);
    if (stub == stubs_.end()) return RPC_E_INVALID_DATA;
    AnswerChannel channel;
    RPCOLEMESSAGE message = {};
    message.Buffer = arguments.data();
    message.cbBuffer = static_cast<ULONG>(arguments.size());
    message.iMethod = call.method;
    const HRESULT result = stub->second->Invoke(&message, &channel);
    if (result >= 0) channel.Take_Results(message, results);
    return result;
}
