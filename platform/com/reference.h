#pragma once
// One reference to an interface, given back at the end of its scope. A null one is none.

#include <platform/com.h>

#include <utility>

template <class Interface>
class Reference {
  public:
    Reference() = default;
    /// Takes over a reference that the caller owns.
    explicit Reference(Interface *owned) : held_(owned) {}
    Reference(Reference &&other) noexcept : held_(other.Give()) {}
    Reference &operator=(Reference &&other) noexcept {
        if (this != &other) Drop(), held_ = other.Give();
        return *this;
    }
    ~Reference() { Drop(); }

    static Reference Another(Interface *object) {
        object->AddRef();
        return Reference(object);
    }

    explicit operator bool() const { return held_ != nullptr; }
    Interface *operator->() const { return held_; }
    Interface *Get() const { return held_; }
    Interface *Give() { return std::exchange(held_, nullptr); }
    /// For a call that hands out a reference.
    Interface **Fill() {
        Drop();
        return &held_;
    }
    void **Fill_Any() { return reinterpret_cast<void **>(Fill()); }
    void Drop() {
        if (held_) std::exchange(held_, nullptr)->Release();
    }

  private:
    Interface *held_ = nullptr;
};
