#pragma once
// A canonical address in its parts.

#include <platform/types.h>

#include <optional>
#include <string_view>

struct CanonicalAddress {
    DWORD country;           // code
    std::string_view area;   // empty when there is none
    std::string_view number; // as it was written
};

/// None when it is not one.
std::optional<CanonicalAddress> Parse_Address(std::string_view address);

/// Up to what is no part of an address, without blanks around it.
std::string_view Dialled_Part(std::string_view address);
