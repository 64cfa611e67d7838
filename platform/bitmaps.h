#pragma once
// Bitmaps and palettes: the calls of GDI32 that keep pixels.
//
// A bitmap has 1, 4, 8, 16, 24 or 32 bits to a pixel; at 16 bits these are 5 for each of red, green and blue,
// from bit 10 down. Up to 8 bits a pixel is the number of a colour: of black and white, of the 16 usual ones,
// of the screen's 256, or of a DIB section's own. Objects are counted by Gdi_Object_Count of machine.h until
// they are deleted; what gdi.h says of handles and threads holds here. One that would take more than 256
// megabytes is not made: ERROR_NOT_ENOUGH_MEMORY.

#include <platform/types.h>

inline constexpr UINT DIB_RGB_COLORS = 0;
inline constexpr DWORD BI_RGB = 0;

struct BITMAP {
    LONG bmType; // 0
    LONG bmWidth;
    LONG bmHeight;
    LONG bmWidthBytes; // of a row: even, and a multiple of 4 for a DIB section
    WORD bmPlanes;     // 1
    WORD bmBitsPixel;
    void *bmBits; // of a DIB section, otherwise null
};
static_assert(sizeof(BITMAP) == 24 && offsetof(BITMAP, bmPlanes) == 16);

struct RGBQUAD {
    BYTE rgbBlue;
    BYTE rgbGreen;
    BYTE rgbRed;
    BYTE rgbReserved;
};

struct BITMAPINFOHEADER {
    DWORD biSize; // 40 to 124; the colours stand behind that
    LONG biWidth;
    LONG biHeight; // below 0: the first row is the uppermost, otherwise the lowest
    WORD biPlanes; // 1
    WORD biBitCount;
    DWORD biCompression; // BI_RGB
    DWORD biSizeImage;
    LONG biXPelsPerMeter;
    LONG biYPelsPerMeter;
    DWORD biClrUsed; // colours in the table, 0 for all; there is none above 8 bits
    DWORD biClrImportant;
};
static_assert(sizeof(BITMAPINFOHEADER) == 40 && offsetof(BITMAPINFOHEADER, biCompression) == 16);

struct BITMAPINFO {
    BITMAPINFOHEADER bmiHeader;
    RGBQUAD bmiColors[1];
};
static_assert(sizeof(BITMAPINFO) == 44);

struct PALETTEENTRY {
    BYTE peRed;
    BYTE peGreen;
    BYTE peBlue;
    BYTE peFlags;
};

struct LOGPALETTE {
    WORD palVersion; // 0x300
    WORD palNumEntries;
    PALETTEENTRY palPalEntry[1];
};
static_assert(sizeof(LOGPALETTE) == 8);

extern "C" {

/// A bitmap of the least depth that has `planes` times `bits_per_pixel` bits. `bits` holds its rows from the
/// top, each of an even number of bytes; null leaves it 0. A width or height of 0 gives 1 pixel of 1 bit.
/// Null on failure: ERROR_INVALID_PARAMETER for a size below 0 and a depth of 0 or beyond 32, ERROR_NOACCESS
/// for `bits` that cannot be read.
PLATFORM_API HBITMAP CreateBitmap(int width, int height, UINT planes, UINT bits_per_pixel, const void *bits);

/// One of the screen's depth; of 1 bit for a device context in memory.
PLATFORM_API HBITMAP CreateCompatibleBitmap(HDC dc, int width, int height);

/// A bitmap whose pixels lie at `*bits`, in rows as `information` tells, until it is deleted. `section` is
/// null: they lie nowhere else. Null on failure, and `*bits` null: ERROR_INVALID_PARAMETER.
PLATFORM_API HBITMAP CreateDIBSection(HDC dc, const BITMAPINFO *information, UINT usage, void **bits,
                                      HANDLE section, DWORD offset);

/// What is at hand of a bitmap, a BITMAP, or of a palette, a WORD with the number of its entries. The bytes
/// stored, with a null `out` those that it takes; 0 and nothing stored when `size` is less.
PLATFORM_API int GetObjectA(HGDIOBJ object, int size, void *out);

/// The rows from the top, each of an even number of bytes, `size` bytes at most and never more than the
/// bitmap has: the number stored. With null `bits`, the number that there are.
PLATFORM_API LONG GetBitmapBits(HBITMAP bitmap, LONG size, void *bits);

/// Between a bitmap and rows of another form, each a multiple of 4 bytes, starting at row `start` of that
/// form counted from its first. A narrower one of the two leaves the other's pixels as they are (0 where they
/// are stored), colours become the nearest that there are. `usage` is DIB_RGB_COLORS. The number of rows, 0
/// on failure: ERROR_INVALID_HANDLE, ERROR_INVALID_PARAMETER for a form that is none, ERROR_NOACCESS.
PLATFORM_API int SetDIBits(HDC dc, HBITMAP bitmap, UINT start, UINT lines, const void *bits,
                           const BITMAPINFO *information, UINT usage);
/// `information` gets the colours behind its header, as many as its depth has, and `biSizeImage`. With null
/// `bits` that is all; and then a biBitCount of 0 asks for the header of the bitmap itself, without colours.
PLATFORM_API int GetDIBits(HDC dc, HBITMAP bitmap, UINT start, UINT lines, void *bits,
                           BITMAPINFO *information, UINT usage);

/// Null on failure: ERROR_INVALID_PARAMETER for another version, and for 0 or more than 1024 entries.
PLATFORM_API HPALETTE CreatePalette(const LOGPALETTE *palette);
/// The number of entries stored from `start` on; with null `entries`, the number that there are.
PLATFORM_API UINT GetPaletteEntries(HPALETTE palette, UINT start, UINT count, PALETTEENTRY *entries);
/// The same of the screen's 256: the 20 fixed ones at both ends, black between them. 0 unless the screen has
/// 8 bits to a pixel.
PLATFORM_API UINT GetSystemPaletteEntries(HDC dc, UINT start, UINT count, PALETTEENTRY *entries);
}
