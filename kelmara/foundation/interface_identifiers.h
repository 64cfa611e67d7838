#pragma once
// Inside the library: how two interface identifiers are compared. Each is defined once, beside its interface.

#include <platform/com.h>

inline bool Is_Same_Identifier(GUID const &one, GUID const &other) {
    return IsEqualGUID(one, other);
}
