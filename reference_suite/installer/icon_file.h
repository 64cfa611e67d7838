#pragma once
// Writes icon files: a directory of pictures, each a header, colours, rows of colours and rows of the mask.

#include <platform/gdi.h>

#include <string>
#include <vector>

/// The colour of a pixel; rgbReserved 0: transparent.
using IconPainter = RGBQUAD (*)(int side, int x, int y);

struct IconPicture {
    int side; // pixels, at most 256
    WORD bits;
};

namespace icon_file {

struct Rows {
    BITMAPINFOHEADER header = {};
    RGBQUAD colours[256] = {};
    std::string bits;
};

/// The picture in `bits` to a pixel, or the mask; empty where memory runs out.
inline Rows Painted(int side, WORD bits, IconPainter paint, bool mask) {
    BITMAPINFO whole = {};
    whole.bmiHeader = {sizeof whole.bmiHeader, side, -side, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    void *pixels = nullptr;
    const HBITMAP bitmap = CreateDIBSection(nullptr, &whole, DIB_RGB_COLORS, &pixels, nullptr, 0);
    const HDC dc = CreateCompatibleDC(nullptr);
    for (int at = 0; bitmap && at < side * side; ++at) {
        const RGBQUAD colour = paint(side, at % side, at / side);
        const BYTE masked = colour.rgbReserved == 0 ? 255 : 0;
        const RGBQUAD seen = masked ? RGBQUAD{} : colour;
        static_cast<RGBQUAD *>(pixels)[at] = mask ? RGBQUAD{masked, masked, masked, 0} : seen;
    }
    Rows rows;
    rows.header = {sizeof rows.header, side, side, 1, bits, BI_RGB, 0, 0, 0, 0, 0};
    rows.bits.resize(static_cast<std::size_t>((side * bits + 31) / 32 * 4 * side));
    if (!GetDIBits(dc, bitmap, 0, static_cast<UINT>(side), rows.bits.data(),
                   reinterpret_cast<BITMAPINFO *>(&rows), DIB_RGB_COLORS))
        rows.bits.clear();
    DeleteDC(dc);
    DeleteObject(bitmap);
    return rows;
}

template <class Record>
void Append(std::string &file, const Record &record, std::size_t size = sizeof(Record)) {
    file.append(reinterpret_cast<const char *>(&record), size);
}

inline std::string Image(const IconPicture &picture, IconPainter paint) {
    Rows colours = Painted(picture.side, picture.bits, paint, false);
    colours.header.biHeight *= 2; // the mask's rows count too
    std::string image;
    Append(image, colours.header);
    if (picture.bits <= 8) Append(image, colours.colours, sizeof(RGBQUAD) << picture.bits);
    return image + colours.bits + Painted(picture.side, 1, paint, true).bits;
}

} // namespace icon_file

inline std::string Icon_File(const std::vector<IconPicture> &pictures, IconPainter paint) {
    using icon_file::Append;
    std::string directory, images;
    for (const WORD word : {WORD{0}, WORD{1}, static_cast<WORD>(pictures.size())}) Append(directory, word);
    for (const IconPicture &picture : pictures) {
        const std::string image = icon_file::Image(picture, paint);
        const auto side = static_cast<BYTE>(picture.side); // 0 stands for 256
        for (const BYTE byte : {side, side, BYTE{0}, BYTE{0}}) Append(directory, byte);
        for (const WORD word : {WORD{1}, picture.bits}) Append(directory, word);
        Append(directory, static_cast<DWORD>(image.size()));
        Append(directory, static_cast<DWORD>(6 + 16 * pictures.size() + images.size()));
        images += image;
    }
    return directory + images;
}
