#pragma once
// An object that a client in another process uses: the object, and a stub for each of its interfaces that the
// client has asked for. All on the object's thread.

#include <platform/com/reference.h>
#include <platform/com/wire.h>

#include <map>
#include <memory>

class ServedObject {
  public:
    /// By the class's factory, which answers for what cannot be made, and with a stub for that interface. May
    /// throw std::bad_alloc, and what the factory throws.
    static HRESULT Make(IUnknown *factory, REFIID iid, std::shared_ptr<ServedObject> &made);
    ~ServedObject();
    ServedObject(const ServedObject &) = delete;
    ServedObject &operator=(const ServedObject &) = delete;

    /// Sees to a stub for the interface; E_NOINTERFACE when the object or the registry has none.
    HRESULT Query(REFIID iid);
    /// A call; `results` is what the stub put in. May throw what the object throws.
    HRESULT Invoke(const FrameHeader &call, std::string &arguments, std::string &results);

  private:
    explicit ServedObject(Reference<IUnknown> object) : object_(std::move(object)) {}

    struct LessGuid {
        bool operator()(GUID const &one, GUID const &other) const {
            return std::memcmp(&one, &other, sizeof one) < 0;
        }
    };
    const Reference<IUnknown> object_;
    std::map<GUID, Reference<IRpcStubBuffer>, LessGuid> stubs_;
};
