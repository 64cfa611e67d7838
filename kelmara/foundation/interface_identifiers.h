#pragma once
// Inside the library: the identifier that every COM-style interface answers to, and how two are compared.

#include <platform/types.h>

#include <cstring>

inline constexpr GUID IID_IUnknown = {0, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};

inline bool Is_Same_Identifier(GUID const &one, GUID const &other) {
    return std::memcmp(&one, &other, sizeof one) == 0;
}
