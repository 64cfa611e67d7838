#pragma once
// Icons and cursors: pictures of a mask and, unless they are of two colours alone, a bitmap of the screen's
// depth.
//
// An icon belongs to the process and may be used from any thread. It keeps pictures of its own: bitmaps that
// are put in or taken out are the caller's to delete. What is no icon: ERROR_INVALID_CURSOR_HANDLE; without
// memory ERROR_NOT_ENOUGH_MEMORY. GetGuiResources of user.h counts icons.

#include <platform/bitmaps.h>
#include <platform/types.h>

struct ICONINFO {
    BOOL fIcon; // FALSE: a cursor
    DWORD xHotspot;
    DWORD yHotspot;
    HBITMAP hbmMask; // where it is white the picture is transparent; of two colours: above it the mask, below
                     // it the picture
    HBITMAP hbmColor;
};
static_assert(sizeof(ICONINFO) == 20);

extern "C" {

/// The colours are brought to the screen's depth, the mask to 1 bit and the size of the colours; without
/// colours the mask is of an even height. An icon's hot spot is its middle, whatever is asked for. Null on
/// failure: ERROR_INVALID_PARAMETER, ERROR_INVALID_HANDLE for a bitmap that is none.
PLATFORM_API HICON CreateIconIndirect(const ICONINFO *information);
/// The bitmaps are copies, for the caller to delete. FALSE on failure, and nothing is stored.
PLATFORM_API BOOL GetIconInfo(HICON icon, ICONINFO *information);
PLATFORM_API BOOL DestroyIcon(HICON icon);

/// From an icon file, whatever its name: of the pictures in it the one that is best for the icon's size, 32
/// pixels for `large` and 16 for `small`, and the screen's depth, stretched where it is of another size. Each
/// is an array of `count` icons or null; there is one icon in a file, `index` 0, and the rest becomes null.
/// The number of icons extracted, 0 for another index and for a file that is none or damaged. With an `index`
/// of -1 and null for both: how many icons there are. 0xFFFFFFFF for a file that cannot be read (files.h
/// tells the errors) and without memory. A picture that ends beyond its file is not there, one of more than
/// 256 pixels or packed otherwise than by plain rows neither; a file of more than 16 megabytes is none.
PLATFORM_API UINT ExtractIconExA(LPCSTR path, int index, HICON *large, HICON *small, UINT count);
}
