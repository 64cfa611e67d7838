#include <platform/user/icons/icon.h>

#include <platform/user/snapshot/picture.h>

#include <cstdio>

namespace {

bool Is_White(RGBQUAD colour) {
    return colour.rgbRed != 0;
}

// What is seen of a pixel, white or colour; false for one that is transparent.
bool Seen(const Icon &icon, LONG x, LONG y, RGBQUAD &colour) {
    const Bitmap &mask = *icon.mask;
    if (Is_White(Colour_At(mask.Row(y), x, mask.Form()))) return false;
    const Bitmap &shown = icon.colours ? *icon.colours : mask;
    const LONG row = icon.colours ? y : y + icon.Size().cy;
    colour = Colour_At(shown.Row(row), x, shown.Form());
    colour.rgbReserved = 0;
    return true;
}

bool Same(RGBQUAD a, RGBQUAD b) {
    return a.rgbBlue == b.rgbBlue && a.rgbGreen == b.rgbGreen && a.rgbRed == b.rgbRed;
}

LONG End_Of_Run(const Icon &icon, LONG x, LONG y, RGBQUAD colour) {
    RGBQUAD next;
    do {
        ++x;
    } while (x < icon.Size().cx && Seen(icon, x, y, next) && Same(next, colour));
    return x;
}

} // namespace

void Draw_Icon(Picture &picture, POINT middle, const Icon &icon) {
    const SIZE size = icon.Size();
    const POINT corner = {middle.x - size.cx / 2, middle.y - size.cy / 2};
    for (LONG y = 0; y < size.cy; ++y) {
        for (LONG x = 0; x < size.cx;) {
            RGBQUAD colour;
            const LONG from = x;
            if (!Seen(icon, x, y, colour)) {
                ++x;
                continue;
            }
            x = End_Of_Run(icon, x, y, colour);
            char text[8];
            std::snprintf(text, sizeof text, "#%02x%02x%02x", colour.rgbRed, colour.rgbGreen, colour.rgbBlue);
            picture.Fill({corner.x + from, corner.y + y, corner.x + x, corner.y + y + 1}, text);
        }
    }
}
