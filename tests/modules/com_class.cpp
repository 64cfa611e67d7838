// A module with one class, as a component is built.

#include <tests/modules/com_class.h>

#include <atomic>
#include <thread>

namespace {

constinit long living = 0;

template <class Interface>
class Object : public Interface {
  public:
    Object() { ++living; }
    virtual ~Object() { --living; }
    HRESULT QueryInterface(REFIID iid, void **out) override {
        const bool known = IsEqualGUID(iid, IID_IUnknown) || IsEqualGUID(iid, Own_Identifier());
        *out = known ? this : nullptr;
        if (known) AddRef();
        return known ? S_OK : E_NOINTERFACE;
    }
    ULONG AddRef() override { return ++count_; }
    ULONG Release() override {
        const ULONG left = --count_;
        if (left == 0) delete this;
        return left;
    }

  protected:
    virtual REFIID Own_Identifier() = 0;

  private:
    ULONG count_ = 1;
};

class Counter final : public Object<ITestCounter> {
  public:
    long Next() override { return ++number_; }

  private:
    REFIID Own_Identifier() override { return IID_ITestCounter; }
    long number_ = 0;
};

class Factory final : public Object<IClassFactory> {
  public:
    HRESULT CreateInstance(IUnknown *outer, REFIID iid, void **out) override {
        if (outer) return CLASS_E_NOAGGREGATION;
        auto *const counter = new Counter;
        const HRESULT result = counter->QueryInterface(iid, out);
        counter->Release();
        return result;
    }
    HRESULT LockServer(BOOL) override { return E_NOTIMPL; }

  private:
    REFIID Own_Identifier() override { return IID_IClassFactory; }
};

} // namespace

#define EXPORT extern "C" __attribute__((visibility("default")))

EXPORT HRESULT DllGetClassObject(REFCLSID clsid, REFIID iid, void **out) {
    if (!IsEqualGUID(clsid, CLSID_TestCounter)) return CLASS_E_CLASSNOTAVAILABLE;
    auto *const factory = new Factory;
    const HRESULT result = factory->QueryInterface(iid, out);
    factory->Release();
    return result;
}

// Every second answer is a slow one.
EXPORT HRESULT DllCanUnloadNow() {
    static std::atomic<unsigned> asked = 0;
    if (asked++ % 2) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    return living == 0 ? S_OK : S_FALSE;
}
