#pragma once
// Menus: the calls of USER32.
//
// A menu belongs to the process and may be used from any thread. It goes with DestroyMenu, with the menu that
// it is a submenu of, or with the window whose bar it is. Positions count from 0. A handle that is no menu:
// the call fails with ERROR_INVALID_MENU_HANDLE. Nothing opens a menu here; a bar stands in a window's
// picture and takes its height from the client area.

#include <platform/types.h>

inline constexpr UINT MF_BYCOMMAND = 0x0;
inline constexpr UINT MF_BYPOSITION = 0x400;
inline constexpr UINT MF_STRING = 0x0;
inline constexpr UINT MF_SEPARATOR = 0x800;
inline constexpr UINT MF_ENABLED = 0x0;
inline constexpr UINT MF_GRAYED = 0x1;
inline constexpr UINT MF_DISABLED = 0x2;
inline constexpr UINT MF_UNCHECKED = 0x0;
inline constexpr UINT MF_CHECKED = 0x8;
inline constexpr UINT MF_POPUP = 0x10;

extern "C" {

/// Null when the machine has 10,000 menus already, or without memory.
PLATFORM_API HMENU CreateMenu();
PLATFORM_API HMENU CreatePopupMenu();
/// Its submenus go too.
PLATFORM_API BOOL DestroyMenu(HMENU menu);

/// Puts an item at the end. With MF_POPUP `id` is the submenu, which belongs to this menu from then on and is
/// refused when it is the menu itself, or one that it stands in. Null text is empty.
PLATFORM_API BOOL AppendMenuA(HMENU menu, UINT flags, UINT id, LPCSTR text);
/// Puts an item before the one at `position`, which is an identifier without MF_BYPOSITION, also of an item
/// in a submenu; -1 or beyond the last by position: at the end. ERROR_MENU_ITEM_NOT_FOUND.
PLATFORM_API BOOL InsertMenuA(HMENU menu, UINT position, UINT flags, UINT id, LPCSTR text);
/// Replaces flags, identifier and text. An item that opened a submenu opens it no longer, and the submenu is
/// destroyed, unless it is given again with MF_POPUP, or `id` is the -1 that GetMenuItemID gives for it:
/// then only its text and state are new.
PLATFORM_API BOOL ModifyMenuA(HMENU menu, UINT position, UINT flags, UINT id, LPCSTR text);

/// -1 on failure.
PLATFORM_API int GetMenuItemCount(HMENU menu);
/// -1 for an item that opens a submenu, and for a position that is none.
PLATFORM_API UINT GetMenuItemID(HMENU menu, int position);
/// Null for an item that opens none.
PLATFORM_API HMENU GetSubMenu(HMENU menu, int position);
/// At most `size` bytes with the terminator; the length. With null `text` or `size` 0 the whole length.
PLATFORM_API int GetMenuStringA(HMENU menu, UINT item, LPSTR text, int size, UINT flags);

/// Null when there is none, and for a child window.
PLATFORM_API HMENU GetMenu(HWND window);
/// The window's bar; null takes it away. What was there before stays and is the caller's. FALSE for a child
/// window: ERROR_CHILD_WINDOW_MENU.
PLATFORM_API BOOL SetMenu(HWND window, HMENU menu);
}
