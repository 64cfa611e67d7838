#pragma once
// What the stubs of all interfaces have in common: Dispatch of each makes the call.

#include <reference_suite/components/marshalling/counted.h>
#include <reference_suite/components/marshalling/messages.h>

#include <new>

template <class Interface>
class Stub : public Counted<IRpcStubBuffer, IID_IRpcStubBuffer> {
  public:
    HRESULT Connect(IUnknown *server) override {
        Disconnect();
        void *object = nullptr;
        const HRESULT result = server->QueryInterface(iid_, &object);
        if (result >= 0) object_ = static_cast<Interface *>(object);
        return result;
    }
    void Disconnect() override {
        if (object_) object_->Release();
        object_ = nullptr;
    }
    HRESULT Invoke(RPCOLEMESSAGE *message, IRpcChannelBuffer *channel) override {
        if (!object_) return RPC_E_DISCONNECTED;
        MessageReader arguments({static_cast<const char *>(message->Buffer), message->cbBuffer});
        MessageWriter results;
        const HRESULT result = Dispatch(*object_, message->iMethod, arguments, results);
        if (result < 0) return result;
        if (!results.Is_Whole()) return E_OUTOFMEMORY;
        message->cbBuffer = static_cast<ULONG>(results.Bytes().size());
        if (const HRESULT given = channel->GetBuffer(message, iid_); given < 0) return given;
        std::memcpy(message->Buffer, results.Bytes().data(), results.Bytes().size());
        return S_OK;
    }
    IRpcStubBuffer *IsIIDSupported(REFIID iid) override { return IsEqualGUID(iid, iid_) ? this : nullptr; }
    ULONG CountRefs() override { return object_ ? 1 : 0; }
    HRESULT DebugServerQueryInterface(void **out) override {
        *out = object_;
        return object_ ? S_OK : E_UNEXPECTED;
    }
    void DebugServerRelease(void *) override {}

  protected:
    explicit Stub(REFIID iid) : iid_(iid) {}
    ~Stub() override { Stub::Disconnect(); }

    /// Makes the call in this slot, the first own one being 3. RPC_E_INVALIDMETHOD for a slot that there is
    /// not, RPC_E_INVALID_DATA, and no call made, for arguments that are not its own.
    virtual HRESULT Dispatch(Interface &object, ULONG slot, MessageReader &arguments,
                             MessageWriter &results) = 0;

  private:
    const GUID iid_;
    Interface *object_ = nullptr;
};

template <class AStub>
HRESULT Make_Stub(IUnknown *server, IRpcStubBuffer **stub) {
    auto *const made = new (std::nothrow) AStub;
    if (!made) return E_OUTOFMEMORY;
    const HRESULT result = server ? made->Connect(server) : S_OK;
    if (result < 0)
        made->Release();
    else
        *stub = made;
    return result;
}
