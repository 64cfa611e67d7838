#pragma once
// How an interface reaches an object in another process: what the machine and a proxy module ask of each
// other.
//
// The machine carries bytes and knows no interface. HKEY_CLASSES_ROOT\Interface\{iid}\ProxyStubClsid32 names,
// as its default value, the class of a factory, whose InProcServer32 is the proxy module of both sides. On
// the client's side the module's proxy puts a call's arguments into a message, has the channel send it, and
// takes the results out of the answer; on the server's side its stub takes the arguments out, calls the
// object and puts the results in. Pointers to interfaces do not cross: QueryInterface on a proxy and
// CreateInstance are the machine's own affair.
//
// A call waits until the server's thread has looked for messages and answered. It never outlives the server:
// HRESULT_CALL_FAILED when the server ends in the call, HRESULT_SERVER_UNAVAILABLE for each later one. Calls
// on one object from several threads follow one another. A server's thread that waits for a call of its own
// answers its clients meanwhile; what such a client's call brings it to call on the same object as the call
// that waits is refused with RPC_E_CALL_REJECTED.

#include <platform/com.h>

/// A message holds at most so many bytes: GetBuffer answers E_INVALIDARG for more.
inline constexpr ULONG Largest_Message = 1 << 20;

/// A call on its way. `iMethod` counts the slots of the interface, IUnknown's three among them, so that 3 is
/// its first own.
struct RPCOLEMESSAGE {
    void *reserved1;
    ULONG dataRepresentation;
    void *Buffer;
    ULONG cbBuffer;
    ULONG iMethod;
    void *reserved2[5];
    ULONG rpcFlags;
};
static_assert(sizeof(RPCOLEMESSAGE) == 44 && offsetof(RPCOLEMESSAGE, iMethod) == 16);

inline constexpr GUID IID_IRpcChannelBuffer = {
    0xD5F56B60, 0x593B, 0x101A, {0xB5, 0x69, 0x08, 0x00, 0x2B, 0x2D, 0xBF, 0x7A}};
inline constexpr GUID IID_IRpcProxyBuffer = {
    0xD5F56A34, 0x593B, 0x101A, {0xB5, 0x69, 0x08, 0x00, 0x2B, 0x2D, 0xBF, 0x7A}};
inline constexpr GUID IID_IRpcStubBuffer = {
    0xD5F56AFC, 0x593B, 0x101A, {0xB5, 0x69, 0x08, 0x00, 0x2B, 0x2D, 0xBF, 0x7A}};
inline constexpr GUID IID_IPSFactoryBuffer = {
    0xD5F569D0, 0x593B, 0x101A, {0xB5, 0x69, 0x08, 0x00, 0x2B, 0x2D, 0xBF, 0x7A}};

/// The machine's. A proxy keeps the one it was connected with; a stub has one for the length of a call.
class IRpcChannelBuffer : public IUnknown {
  public:
    /// Memory of `cbBuffer` bytes, zeroed, to `Buffer`: on a proxy's side for the arguments, on a stub's for
    /// the results, in place of the arguments, which stay readable until the call ends.
    virtual HRESULT GetBuffer(RPCOLEMESSAGE *message, REFIID iid) = 0;
    /// For proxies. The arguments' memory is given back; on success `Buffer` and `cbBuffer` are the answer,
    /// for FreeBuffer, on failure null and 0. `status` may be null, and gets the result.
    virtual HRESULT SendReceive(RPCOLEMESSAGE *message, ULONG *status) = 0;
    virtual HRESULT FreeBuffer(RPCOLEMESSAGE *message) = 0;
    virtual HRESULT GetDestCtx(DWORD *context, void **reserved) = 0;
    /// S_FALSE when the server is known to have ended.
    virtual HRESULT IsConnected() = 0;

  protected:
    ~IRpcChannelBuffer() = default;
};

/// The hold on a proxy, with a count of its own.
class IRpcProxyBuffer : public IUnknown {
  public:
    virtual HRESULT Connect(IRpcChannelBuffer *channel) = 0;
    /// Lets the channel go; calls fail from then on.
    virtual void Disconnect() = 0;

  protected:
    ~IRpcProxyBuffer() = default;
};

class IRpcStubBuffer : public IUnknown {
  public:
    /// Asks the object for the stub's interface and keeps it until Disconnect.
    virtual HRESULT Connect(IUnknown *server) = 0;
    virtual void Disconnect() = 0;
    /// Makes the call. A message that makes no sense is RPC_E_INVALID_DATA, a slot that there is not
    /// RPC_E_INVALIDMETHOD; what the object answers is part of the message.
    virtual HRESULT Invoke(RPCOLEMESSAGE *message, IRpcChannelBuffer *channel) = 0;
    virtual IRpcStubBuffer *IsIIDSupported(REFIID iid) = 0;
    virtual ULONG CountRefs() = 0;
    virtual HRESULT DebugServerQueryInterface(void **out) = 0;
    virtual void DebugServerRelease(void *object) = 0;

  protected:
    ~IRpcStubBuffer() = default;
};

class IPSFactoryBuffer : public IUnknown {
  public:
    /// A proxy that is part of `outer`: `*object` is the interface, whose QueryInterface, AddRef and Release
    /// are `outer`'s, with a reference counted there; the proxy itself holds none on `outer`.
    virtual HRESULT CreateProxy(IUnknown *outer, REFIID iid, IRpcProxyBuffer **proxy, void **object) = 0;
    /// A stub, connected to `server` unless that is null.
    virtual HRESULT CreateStub(REFIID iid, IUnknown *server, IRpcStubBuffer **stub) = 0;

  protected:
    ~IPSFactoryBuffer() = default;
};
