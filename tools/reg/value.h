#pragma once
// A value of the registry in memory: its type code and its bytes.

#include <cstddef>
#include <string>

namespace tools::reg {

/// What the machine takes.
inline constexpr std::size_t Longest_Key_Name = 255;
inline constexpr std::size_t Longest_Value_Name = 16383;
inline constexpr std::size_t Largest_Data = std::size_t{64} << 20;

struct Value {
    unsigned long type = 0; // REG_...
    std::string data;
    bool operator==(const Value &) const = default;
};

struct NamedValue {
    std::string name; // empty: the default value
    Value value;
};

} // namespace tools::reg
