#pragma once
// What moves, sizes and restacks windows.

#include <platform/user/window.h>

/// What SetWindowPos tells procedures beyond the flags that it was given.
inline constexpr UINT SWP_NOCLIENTSIZE = 0x800, SWP_NOCLIENTMOVE = 0x1000, SWP_STATECHANGED = 0x8000;

/// Whether the state bits are new already, or SWP_SHOWWINDOW and SWP_HIDEWINDOW are yet to change them.
enum class StateBits { As_They_Are, Set_Already };

/// SetWindowPos of a window at hand. With SWP_STATECHANGED size and place are told in any case. With its bits
/// set already it is activated unless SWP_NOACTIVATE says otherwise.
void Reposition(const WindowPointer &window, WINDOWPOS wanted, StateBits bits = StateBits::As_They_Are);
