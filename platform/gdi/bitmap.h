#pragma once
// A bitmap's pixels, and how rows of one form become rows of another. All under ObjectLock.

#include <platform/gdi/objects.h>

inline constexpr std::uint64_t Most_Bitmap_Bytes = 1u << 28;

struct PixelForm {
    WORD bits;              // 1, 4, 8, 16, 24 or 32
    const RGBQUAD *colours; // 2 to the power of `bits`, when that is up to 8
};

struct Bitmap : GdiObject {
    LONG width = 0, height = 0; // above 0
    WORD bits = 1;
    bool is_section = false;
    bool bottom_up = false;
    std::vector<RGBQUAD> colours;
    std::unique_ptr<BYTE[]> pixels;

    std::size_t Pitch() const;         // bytes from row to row: a multiple of 4
    std::size_t Even_Row_Size() const; // bytes of a row in GetBitmapBits' form
    BYTE *Row(LONG y) const;           // from the top
    PixelForm Form() const { return {bits, colours.data()}; }
};

/// 0 for a size that no bitmap has.
std::size_t Row_Size(LONG width, WORD bits, unsigned multiple_of_bits);
/// The least depth that holds so many bits, 1 to 32.
WORD Depth_For(UINT bits);
bool Is_Depth(UINT bits);
/// The colours that numbers stand for where nothing else is said; empty above 8 bits.
std::vector<RGBQUAD> Usual_Colours(WORD bits);

/// Black. Null, with the last error, for a size that cannot be; may throw std::bad_alloc, as all below.
std::unique_ptr<Bitmap> New_Bitmap(LONG width, LONG height, WORD bits);
/// The same picture in another size and depth.
std::unique_ptr<Bitmap> Converted(const Bitmap &from, LONG width, LONG height, WORD bits);
Bitmap *Find_Bitmap_Or_Tell(HBITMAP handle);
/// Null stays null.
HBITMAP Enter_Bitmap(std::unique_ptr<Bitmap> bitmap);

/// Widths in pixels. The first is stretched to the second.
void Convert_Row(const BYTE *from, PixelForm from_form, LONG from_width, BYTE *to, PixelForm to_form,
                 LONG to_width);
RGBQUAD Colour_At(const BYTE *row, LONG x, PixelForm form);
