#pragma once
// Inside the library: a reference to a component's interface that is released at the end of its scope, unless
// it is handed over before. What a failing call leaves in its output counts as nothing.

#include <platform/com.h>

template <class Interface>
class OwnedInterface {
  public:
    OwnedInterface() = default;
    /// Takes over a reference, or none.
    explicit OwnedInterface(Interface *reference) : m_Reference(reference) {}
    ~OwnedInterface() { Release(); }
    OwnedInterface(const OwnedInterface &) = delete;
    OwnedInterface &operator=(const OwnedInterface &) = delete;

    /// 0, or what the machine or the component answers. A success without an object is E_NOINTERFACE.
    long Create(REFCLSID clsid, REFIID iid) {
        return Take(
            [&](void **out) { return CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, iid, out); });
    }
    long Query(IUnknown *object, REFIID iid) {
        return Take([&](void **out) { return object->QueryInterface(iid, out); });
    }
    /// By `call(void **out)`, which gives its code.
    template <class Call>
    long Take(Call call) {
        Release();
        void *out = nullptr;
        const long result = call(&out);
        if (result >= 0) m_Reference = static_cast<Interface *>(out);
        if (result > 0) Release(); // none of the codes that callers know
        return result == 0 && !out ? E_NOINTERFACE : result;
    }

    Interface *operator->() const { return m_Reference; }
    Interface *Get() const { return m_Reference; }
    explicit operator bool() const { return m_Reference; }
    /// The reference, which is the caller's from then on.
    Interface *Hand_Over() {
        Interface *const reference = m_Reference;
        m_Reference = nullptr;
        return reference;
    }

  private:
    void Release() {
        if (Interface *const reference = Hand_Over()) reference->Release();
    }

    Interface *m_Reference = nullptr;
};
