#pragma once
// Inside the library: arithmetic on coordinates, which come from outside and so wrap at 32 bits.

#include <platform/types.h>

constexpr long Sum(long a, long b) {
    return static_cast<long>(static_cast<unsigned long>(a) + static_cast<unsigned long>(b));
}

constexpr long Difference(long a, long b) {
    return static_cast<long>(static_cast<unsigned long>(a) - static_cast<unsigned long>(b));
}

constexpr long Width_Of(const RECT &rectangle) {
    return Difference(rectangle.right, rectangle.left);
}

constexpr long Height_Of(const RECT &rectangle) {
    return Difference(rectangle.bottom, rectangle.top);
}

constexpr bool Are_Same(const RECT &a, const RECT &b) {
    return a.left == b.left && a.top == b.top && a.right == b.right && a.bottom == b.bottom;
}
