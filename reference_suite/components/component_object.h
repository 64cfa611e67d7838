#pragma once
// What the suite's in-process components are built on: objects that count their references and themselves,
// the factory of a class, and the class as a module offers it.
//
//     class Clock final : public ComponentObject<Offer<IClock, IID_IClock>> { ... };
//     constinit ComponentFactory<Clock> factory;
//     constinit const ComponentClass component_class = {CLSID_Clock, factory, "Clock", "Clock", "Clock.1"};
//
// component_exports.cpp makes the module's exports of it. Objects come from the library's memory services,
// and are used by one thread at a time, like all of its lists; the counts may be changed by any.

#include <kelmara/foundation/new_delete.h>

#include <platform/com.h>

#include <atomic>

/// Of this module: objects alive, references to its factory, and locks of it.
inline constinit std::atomic<long> living_objects{0};

struct ComponentClass {
    GUID const &clsid;
    IClassFactory &factory;
    const char *friendly_name, *version_independent_id, *program_id;
    void (*tidy)() = nullptr; // called before the module says whether it can go; any thread, more than one
};
/// Each module defines its own.
extern const ComponentClass component_class;

/// An interface of an object, and its identifier.
template <class Interface, GUID const &Identifier>
struct Offer {
    using Type = Interface;
    static bool Has(REFIID iid) { return IsEqualGUID(iid, Identifier); }
};
/// One that nobody can ask for.
template <class Interface>
struct OfferUnnamed {
    using Type = Interface;
    static bool Has(REFIID) { return false; }
};

/// Made with one reference, destroyed with the last. IUnknown is the first offer's.
template <class First, class... Others>
class ComponentObject : public First::Type, public Others::Type... {
  public:
    KELMARA_CLASS_ALLOCATION

    ComponentObject(const ComponentObject &) = delete;
    ComponentObject &operator=(const ComponentObject &) = delete;

    HRESULT QueryInterface(REFIID iid, void **out) final {
        if (!out) return E_POINTER;
        *out = nullptr;
        if (IsEqualGUID(iid, IID_IUnknown)) *out = static_cast<typename First::Type *>(this);
        Find<First>(iid, out);
        (Find<Others>(iid, out), ...);
        if (*out) AddRef();
        return *out ? S_OK : E_NOINTERFACE;
    }
    ULONG AddRef() final { return ++m_References; }
    ULONG Release() final {
        const ULONG left = --m_References;
        if (left == 0) delete this;
        return left;
    }

  protected:
    ComponentObject() { ++living_objects; }
    virtual ~ComponentObject() { --living_objects; }

  private:
    template <class Offered>
    void Find(REFIID iid, void **out) {
        if (Offered::Has(iid)) *out = static_cast<typename Offered::Type *>(this);
    }

    std::atomic<ULONG> m_References{1};
};

/// A step that may find no memory; then E_OUTOFMEMORY, whatever is thrown for it.
template <class Step>
long Within_Memory_Of_Suite(Step step) try {
    return step();
} catch (...) {
    return E_OUTOFMEMORY;
}

/// Lasts as long as the module, which stays while the factory is held.
template <class Object>
class ComponentFactory final : public IClassFactory {
  public:
    HRESULT QueryInterface(REFIID iid, void **out) override {
        if (!out) return E_POINTER;
        const bool known = IsEqualGUID(iid, IID_IUnknown) || IsEqualGUID(iid, IID_IClassFactory);
        *out = known ? this : nullptr;
        if (known) AddRef();
        return known ? S_OK : E_NOINTERFACE;
    }
    ULONG AddRef() override { return static_cast<ULONG>(++living_objects); }
    ULONG Release() override { return static_cast<ULONG>(--living_objects); }
    HRESULT LockServer(BOOL lock) override {
        living_objects += lock ? 1 : -1;
        return S_OK;
    }
    HRESULT CreateInstance(IUnknown *outer, REFIID iid, void **out) override {
        if (!out) return E_POINTER;
        *out = nullptr;
        if (outer) return CLASS_E_NOAGGREGATION;
        return Within_Memory_Of_Suite([&]() -> long {
            Object *const object = new Object;
            if (!object) return E_OUTOFMEMORY;
            const HRESULT result = object->QueryInterface(iid, out);
            object->Release();
            return result;
        });
    }
};
