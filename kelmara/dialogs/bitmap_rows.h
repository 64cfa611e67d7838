#pragma once
// Inside the library: the forms that rows of pixels have, and how many bytes they take, for sizes that come
// from anywhere.

#include <platform/kernel.h>

#include <cstdint>

inline constexpr unsigned Even_Rows = 16, Dib_Rows = 32; // bits that a row is a multiple of

// From 5.1 on pixels go through forms that no device decides; what came after 5 has never counted.
inline bool Is_Recent_Windows() {
    OSVERSIONINFOA version = {};
    version.dwOSVersionInfoSize = sizeof version;
    return GetVersionExA(&version) && version.dwMajorVersion == 5 && version.dwMinorVersion >= 1;
}

/// The depth that a bitmap of so many bits to a pixel has: 1, 4, 8, 16, 24 or 32.
constexpr unsigned Normalised_Depth(unsigned bits) {
    constexpr unsigned Depths[] = {1, 4, 8, 16, 24};
    for (const unsigned depth : Depths) {
        if (bits <= depth) return bits == 0 ? 4 : depth; // a depth of none counts as up to 4
    }
    return 32;
}

inline constexpr std::uint64_t Beyond_Memory = std::uint64_t{1} << 32;

/// Bytes of rows that each are a multiple of `row_bits` bits; Beyond_Memory for 4 GB and more. 0 for a width
/// of 0 or below; a height below 0 counts as one above.
constexpr std::uint64_t Bytes_Of_Rows(long width, long height, unsigned depth, unsigned row_bits) {
    if (width <= 0) return 0;
    const std::uint64_t bits = static_cast<std::uint64_t>(width) * depth;
    const std::uint64_t row = (bits + row_bits - 1) / row_bits * (row_bits / 8);
    const std::int64_t rows = height < 0 ? -std::int64_t{height} : std::int64_t{height};
    if (row >= Beyond_Memory) return rows == 0 ? 0 : Beyond_Memory;
    const std::uint64_t bytes = row * static_cast<std::uint64_t>(rows);
    return bytes < Beyond_Memory ? bytes : Beyond_Memory;
}
