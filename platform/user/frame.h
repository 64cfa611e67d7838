#pragma once
// What a window's style takes of its rectangle: pure arithmetic.

#include <platform/user/window.h>

inline constexpr LONG Border_Size = 1, Dialog_Frame_Size = 3, Sizing_Frame_Size = 4, Edge_Size = 2;
inline constexpr LONG Caption_Height = 19, Menu_Height = 19, Scroll_Bar_Size = 16;
inline constexpr LONG Iconic_Width = 160, Iconic_Height = 24, Iconic_Place = -32000;

/// No coordinate and no size goes beyond this, so that sums of them fit a LONG.
inline constexpr LONG Farthest = 32767;
LONG Within_Reach(LONG coordinate);
/// All four sides, and right and bottom no farther from left and top.
RECT Within_Reach(const RECT &rectangle);

/// Pixels that the frame takes on each of the four sides, without caption, menu and scroll bars.
LONG Frame_Size(DWORD style, DWORD extended_style);

/// The client area of a rectangle of that size, in coordinates of the window's own corner. Never negative.
RECT Client_Area(SIZE size, DWORD style, DWORD extended_style, LONG menu_height);
/// Of an iconic window: empty.
RECT Client_Area(const Window &window);
/// The same in the parent's client coordinates, or the screen's.
RECT Client_In_Parent(const Window &window);
