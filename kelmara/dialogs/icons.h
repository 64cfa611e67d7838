#pragma once
// Icons as data: packed into one block that can be stored or handed to another process, and made from one;
// icons from files; a copy of the screen's palette.
//
// A block of the library's own comes from the memory services and is the caller's to free (ds_free). The
// functions keep nothing and may be called from any thread that may use the handles. Nothing is thrown.

#include <kelmara/api.h>

#include <platform/gdi.h>
#include <platform/icons.h>

/// What a packed icon begins with. The mask's bits stand `header_size` bytes from the block's start, the
/// colours' bits behind them. Frozen: little-endian, no magic, no version.
struct PackedIconHeader {
    unsigned long header_size; // offset 0: 56
    long mask_width;           // offset 4
    long mask_height;
    unsigned long mask_planes;
    unsigned long mask_bits_per_pixel;
    long colour_width; // offset 20
    long colour_height;
    unsigned long colour_planes;
    unsigned long colour_bits_per_pixel;
    long is_icon; // offset 36: 0 for a cursor
    unsigned long hot_spot_x;
    unsigned long hot_spot_y;
    unsigned long mask_size; // offset 48: bytes of the mask's bits, in rows of GetBitmapBits' form
    unsigned long colour_size;
};
static_assert(sizeof(PackedIconHeader) == 56 && offsetof(PackedIconHeader, colour_width) == 20);
static_assert(offsetof(PackedIconHeader, is_icon) == 36 && offsetof(PackedIconHeader, mask_size) == 48);

/// A header that describes a bitmap, with room for its colours behind it, all 0. Each row counts as a
/// multiple of 4 bytes in `biSizeImage`. For the caller to free; null for what is no bitmap, and without
/// memory.
KELMARA_API BITMAPINFO *CreateBitmapInfoStruct(HBITMAP bitmap);

/// The icon as one block: `*block`, for the caller to free, and its length. 0; E_OUTOFMEMORY without memory,
/// and for an icon of two colours or none at all; E_UNEXPECTED when its bits cannot be read, its bitmaps are
/// wider than a header can tell, and for null outputs. On failure both outputs are 0. Of a mask above 65,536
/// bytes that many are kept; what of a bit array no bits are given for is 0.
KELMARA_API long Pack_Icon(HICON icon, void **block, long *size);

/// An icon for the display of `dc` from a packed one. `size` is not looked at: what can be read of the block
/// counts. 0, also when no icon could be made of the bitmaps, and `*icon` is null then. E_UNEXPECTED, and
/// `*icon` stays, when a bitmap cannot be made of what the block says or filled with it, when one of its
/// arrays is shorter than that bitmap or ends beyond what can be read, and for a null `icon`. The block keeps
/// no colour tables: pixels of 8 bits and less that the display does not have stand for the usual colours. A
/// block that was packed before version 5.1 or on a display of 8 bits has its rows in another order and
/// length than a display of another depth takes them in: the icon stands upside down there.
KELMARA_API long Unpack_Icon(HICON *icon, void *block, long size, HDC dc);

/// An icon of 32 or 16 pixels from a file: at `file` itself, or below the suite's "Content" folder. For the
/// caller to destroy. Null when it is in neither place, is no icon file, for any other number of pixels, and
/// when the path below the folder takes more than 255 characters. `instance` is not used.
KELMARA_API HICON Load_Icon_From_File(HINSTANCE instance, const char *file, int pixels);

/// A palette of 256 entries as the screen's are at present, black where the screen has none; for the caller
/// to delete. -1 on failure.
KELMARA_API HPALETTE GetFullSystemPalette();
