#include <kelmara/dialogs/icons.h>

#include <kelmara/dialogs/bitmap_rows.h>
#include <kelmara/dialogs/graphics_owners.h>

#include <platform/errors.h>
#include <platform/kernel.h>

#include <cstring>

namespace {

/// A block of anybody's, its header copied so that it stays as it was looked at.
struct PackedIcon {
    PackedIconHeader header;
    const char *block;
};

bool Read_Header(const void *block, PackedIcon &packed) {
    if (IsBadReadPtr(block, sizeof packed.header)) return false;
    std::memcpy(&packed.header, block, sizeof packed.header);
    packed.block = static_cast<const char *>(block);
    return true;
}

struct StoredBitmap {
    long width, height;
    unsigned long planes, bits_per_pixel;
    const char *block;
    std::uint64_t offset; // of its array
    unsigned long size;
};

// Null unless the first `needed` bytes are in the array, and all of the block up to them can be read.
const void *Readable(const StoredBitmap &stored, std::uint64_t needed) {
    const std::uint64_t end = stored.offset + needed;
    if (needed > stored.size || end >= Beyond_Memory) return nullptr;
    if (IsBadReadPtr(stored.block, static_cast<UINT>(end))) return nullptr;
    return stored.block + static_cast<std::size_t>(stored.offset);
}

StoredBitmap Mask_Of(const PackedIcon &packed) {
    const PackedIconHeader &header = packed.header;
    return {header.mask_width, header.mask_height, header.mask_planes, header.mask_bits_per_pixel,
            packed.block,      header.header_size, header.mask_size};
}

StoredBitmap Colours_Of(const PackedIcon &packed) {
    const PackedIconHeader &header = packed.header;
    const std::uint64_t offset = std::uint64_t{header.header_size} + header.mask_size;
    return {header.colour_width,  header.colour_height,
            header.colour_planes, header.colour_bits_per_pixel,
            packed.block,         offset,
            header.colour_size};
}

HBITMAP As_Stored(const StoredBitmap &stored) {
    const std::uint64_t bits = std::uint64_t{stored.planes} * stored.bits_per_pixel;
    if (bits > 32 || stored.height < 0) return nullptr;
    const unsigned depth = Normalised_Depth(static_cast<unsigned>(bits));
    const void *const rows = Readable(stored, Bytes_Of_Rows(stored.width, stored.height, depth, Even_Rows));
    if (!rows) return nullptr;
    return CreateBitmap(static_cast<int>(stored.width), static_cast<int>(stored.height),
                        static_cast<UINT>(stored.planes), static_cast<UINT>(stored.bits_per_pixel), rows);
}

/// The header of 44 bytes that rows are handed over with, and the colours that are looked for behind it.
struct DibInformation {
    BITMAPINFO header;
    RGBQUAD colours[256];
};
static_assert(offsetof(DibInformation, colours) == 44);

RGBQUAD Colour_Of(const PALETTEENTRY &entry) {
    return {entry.peBlue, entry.peGreen, entry.peRed, 0};
}

// The fixed colours of the display stand at both ends of a table.
void Fill_Usual_Colours(RGBQUAD *colours, unsigned count) {
    PALETTEENTRY fixed[20] = {};
    constexpr unsigned Last = 19;
    GetPaletteEntries(static_cast<HPALETTE>(GetStockObject(DEFAULT_PALETTE)), 0, Last + 1, fixed);
    for (unsigned i = 0; i <= Last / 2 && i < count / 2; ++i) {
        colours[i] = Colour_Of(fixed[i]);
        colours[count - 1 - i] = Colour_Of(fixed[Last - i]);
    }
}

DibInformation Dib_Information(const StoredBitmap &stored) {
    DibInformation information = {};
    BITMAPINFOHEADER &header = information.header.bmiHeader;
    header.biSize = sizeof information.header;
    header.biWidth = stored.width;
    header.biHeight = stored.height;
    header.biPlanes = static_cast<WORD>(stored.planes);
    header.biBitCount = static_cast<WORD>(stored.bits_per_pixel);
    header.biCompression = BI_RGB;
    header.biSizeImage = stored.size;
    if (header.biBitCount <= 8) Fill_Usual_Colours(information.colours, 1u << header.biBitCount);
    return information;
}

HBITMAP For_Display(HDC dc, const StoredBitmap &stored, const BITMAPINFO &information, const void *rows) {
    BitmapOwner made(
        CreateCompatibleBitmap(dc, static_cast<int>(stored.width), static_cast<int>(stored.height)));
    if (!made.Get()) return nullptr;
    const int lines =
        SetDIBits(dc, made.Get(), 0, static_cast<UINT>(stored.height), rows, &information, DIB_RGB_COLORS);
    return lines > 0 ? made.Hand_Over() : nullptr;
}

HBITMAP As_Section(HDC dc, const BITMAPINFO &information, const void *rows, std::size_t size) {
    void *bits = nullptr;
    const HBITMAP made = CreateDIBSection(dc, &information, DIB_RGB_COLORS, &bits, nullptr, 0);
    if (made) std::memcpy(bits, rows, size);
    return made;
}

HBITMAP Colour_Bitmap(const StoredBitmap &stored, HDC dc, bool recent) {
    const bool as_display = stored.bits_per_pixel == static_cast<unsigned long>(GetDeviceCaps(dc, BITSPIXEL));
    if (!recent || (as_display && stored.bits_per_pixel == 8)) return As_Stored(stored);
    const DibInformation information = Dib_Information(stored);
    const std::uint64_t needed =
        Bytes_Of_Rows(stored.width, stored.height, information.header.bmiHeader.biBitCount, Dib_Rows);
    const void *const rows = Readable(stored, needed);
    if (!rows) return nullptr;
    return as_display ? For_Display(dc, stored, information.header, rows)
                      : As_Section(dc, information.header, rows, static_cast<std::size_t>(needed));
}

long Unpack(HICON *icon, const void *block, HDC dc) {
    const bool recent = Is_Recent_Windows();
    PackedIcon packed;
    if (!icon || !Read_Header(block, packed)) return E_UNEXPECTED;
    const BitmapOwner mask(As_Stored(Mask_Of(packed)));
    if (!mask.Get()) return E_UNEXPECTED;
    const BitmapOwner colours(Colour_Bitmap(Colours_Of(packed), dc, recent));
    if (!colours.Get()) return E_UNEXPECTED;
    const ICONINFO icon_info = {static_cast<BOOL>(packed.header.is_icon), packed.header.hot_spot_x,
                                packed.header.hot_spot_y, mask.Get(), colours.Get()};
    *icon = CreateIconIndirect(&icon_info);
    return 0;
}

} // namespace

long Unpack_Icon(HICON *icon, void *block, long, HDC dc) {
    return Unpack(icon, block, dc);
}
