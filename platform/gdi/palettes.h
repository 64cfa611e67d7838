#pragma once
// The 20 colours that every palette of the machine's screen has.

#include <platform/gdi.h>

inline constexpr std::size_t Fixed_Colour_Count = 20;
RGBQUAD Fixed_Colour(std::size_t index);
