#pragma once
// A telephone number as the library takes it apart, and why it does not.

#include <string>

namespace tools {

struct CanonicalNumber {
    bool is_canonical = false;
    std::string country, area, exchange, line; // of one that is not canonical, those in front of the gap
    std::string rest;                          // behind the line number, which is ignored
    std::string reason;                        // why it is not canonical
};

CanonicalNumber Parse_Number(const std::string &text);

} // namespace tools
