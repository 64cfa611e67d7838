#pragma once
// The base of the library's classes: a virtual destructor and nothing else, so that any of them can be
// deleted through it. Objects are made by the memory services (new_delete.h). It stands in the header whole,
// because some of the library's objects are made and dropped within nanoseconds.

#include <kelmara/foundation/new_delete.h>

class KELMARA_API CAutoDeleteableObject {
  public:
    KELMARA_CLASS_ALLOCATION

    virtual ~CAutoDeleteableObject();
};
static_assert(sizeof(CAutoDeleteableObject) == 4);

KELMARA_INLINE CAutoDeleteableObject::~CAutoDeleteableObject() = default;
