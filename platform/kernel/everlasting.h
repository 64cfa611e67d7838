#pragma once
// An object that is made at first need and stays to the end of the process, in place: neither making it nor
// the end takes memory that could lack.

#include <new>

template <class Object>
class Everlasting {
  public:
    template <class... Arguments>
    explicit Everlasting(Arguments... arguments) : object_(new (place_) Object(arguments...)) {}
    Everlasting(const Everlasting &) = delete;
    Everlasting &operator=(const Everlasting &) = delete;

    Object &operator*() { return *object_; }

  private:
    alignas(Object) unsigned char place_[sizeof(Object)];
    Object *object_;
};
