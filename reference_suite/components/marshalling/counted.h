#pragma once
// A counted object of one interface, which starts with one reference and goes with the last.

#include <platform/com.h>

#include <atomic>

template <class Interface, const GUID &iid>
class Counted : public Interface {
  public:
    HRESULT QueryInterface(REFIID wanted, void **out) final {
        const bool known = IsEqualGUID(wanted, IID_IUnknown) || IsEqualGUID(wanted, iid);
        *out = known ? this : nullptr;
        if (known) AddRef();
        return known ? S_OK : E_NOINTERFACE;
    }
    ULONG AddRef() final { return ++count_; }
    ULONG Release() final {
        const ULONG left = --count_;
        if (left == 0) delete this;
        return left;
    }

  protected:
    Counted() = default;
    virtual ~Counted() = default;

  private:
    std::atomic<ULONG> count_{1};
};
