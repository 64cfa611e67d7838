#pragma once
// What the proxies of all interfaces have in common. The interface's own class derives from ProxyFace and
// turns each call into Call; Proxy holds it.
//
//     class ThingFace final : public ProxyFace<IThing> {
//         long Weigh() override { ... Call(3, arguments, [&](MessageReader &results) { ... }); }
//     };

#include <reference_suite/components/marshalling/counted.h>
#include <reference_suite/components/marshalling/messages.h>

#include <new>

/// The interface as a client has it: part of `outer`, which counts its references.
template <class Served>
class ProxyFace : public Served {
  public:
    using Interface = Served;

    HRESULT QueryInterface(REFIID iid, void **out) override { return outer_->QueryInterface(iid, out); }
    ULONG AddRef() override { return outer_->AddRef(); }
    ULONG Release() override { return outer_->Release(); }

    void Become_Part_Of(IUnknown *outer) { outer_ = outer; }
    void Connect(IRpcChannelBuffer *channel) {
        if (channel) channel->AddRef();
        if (channel_) channel_->Release();
        channel_ = channel;
    }
    ProxyFace() = default;
    ProxyFace(const ProxyFace &) = delete;
    ProxyFace &operator=(const ProxyFace &) = delete;

  protected:
    ~ProxyFace() { Connect(nullptr); }

    /// Has the server make the call in this slot, the first own one being 3, and lets `take` read the answer.
    /// A failure of the channel is the result, and nothing was read; RPC_E_INVALID_DATA for an answer that is
    /// not as `take` reads it.
    template <class Take>
    HRESULT Call(ULONG slot, const MessageWriter &arguments, Take take) {
        if (!channel_) return HRESULT_SERVER_UNAVAILABLE;
        if (!arguments.Is_Whole()) return E_OUTOFMEMORY;
        // What is served meanwhile may let the last reference go.
        const Held<IUnknown> outer(outer_);
        const Held<IRpcChannelBuffer> channel(channel_);
        RPCOLEMESSAGE message = {};
        message.iMethod = slot;
        message.cbBuffer = static_cast<ULONG>(arguments.Bytes().size());
        if (const HRESULT result = channel->GetBuffer(&message, GUID{}); result < 0) return result;
        std::memcpy(message.Buffer, arguments.Bytes().data(), arguments.Bytes().size());
        if (const HRESULT result = channel->SendReceive(&message, nullptr); result < 0) return result;
        MessageReader results({static_cast<const char *>(message.Buffer), message.cbBuffer});
        take(results);
        const bool whole = results.Is_Whole();
        channel->FreeBuffer(&message);
        return whole ? S_OK : RPC_E_INVALID_DATA;
    }

  private:
    template <class Counted>
    struct Held {
        explicit Held(Counted *object) : object_(object) { object_->AddRef(); }
        ~Held() { object_->Release(); }
        Held(const Held &) = delete;
        Held &operator=(const Held &) = delete;
        Counted *operator->() const { return object_; }

      private:
        Counted *const object_;
    };

    IUnknown *outer_ = nullptr; // whose part this is
    IRpcChannelBuffer *channel_ = nullptr;
};

template <class Face>
class Proxy final : public Counted<IRpcProxyBuffer, IID_IRpcProxyBuffer> {
  public:
    /// `*object` is the interface, with a reference counted at `outer`.
    static HRESULT Make(IUnknown *outer, IRpcProxyBuffer **proxy, void **object) {
        auto *const made = new (std::nothrow) Proxy;
        if (!made) return E_OUTOFMEMORY;
        made->face_.Become_Part_Of(outer);
        outer->AddRef();
        *proxy = made;
        *object = static_cast<typename Face::Interface *>(&made->face_);
        return S_OK;
    }

    HRESULT Connect(IRpcChannelBuffer *channel) override {
        face_.Connect(channel);
        return S_OK;
    }
    void Disconnect() override { face_.Connect(nullptr); }

  private:
    ~Proxy() override = default;

    Face face_;
};
