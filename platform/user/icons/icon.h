#pragma once
// What stands behind an icon's handle. All under ObjectLock.

#include <platform/gdi/bitmap.h>
#include <platform/icons.h>

class Picture;

struct Icon {
    bool is_cursor = false;
    POINT hot_spot = {};
    std::unique_ptr<Bitmap> mask;    // 1 bit, of the size of the colours
    std::unique_ptr<Bitmap> colours; // null: the mask's lower half is the picture

    SIZE Size() const { return {mask->width, colours ? mask->height : mask->height / 2}; }
};

/// May throw std::bad_alloc.
HICON Enter_Icon(std::unique_ptr<Icon> icon);
/// Null for what is none.
const Icon *Find_Icon(HICON handle);
/// Null, with the last error, for a mask that does not fit; may throw std::bad_alloc.
std::unique_ptr<Icon> Icon_Of(const Bitmap &mask, const Bitmap *colours, SIZE size);

/// Its middle; transparent pixels stay as they are.
void Draw_Icon(Picture &picture, POINT middle, const Icon &icon);
