#include <kelmara/dialogs/icons.h>

#include <kelmara/dialogs/bitmap_rows.h>
#include <kelmara/dialogs/graphics_owners.h>
#include <kelmara/foundation/owned_block.h>

#include <platform/errors.h>

#include <algorithm>
#include <climits>
#include <cstring>

namespace {

constexpr LONG Most_Mask_Bytes = 65536; // that are read of a mask

bool Tells_All_Rows(const BITMAPINFOHEADER &header) {
    return Bytes_Of_Rows(header.biWidth, header.biHeight, header.biBitCount, Dib_Rows) <= header.biSizeImage;
}

bool Read_Mask(HBITMAP mask, const BITMAPINFOHEADER &header, char *bits) {
    const LONG size = std::min(static_cast<LONG>(header.biSizeImage), Most_Mask_Bytes);
    return GetBitmapBits(mask, size, bits) > 0;
}

bool Read_Colours(HBITMAP colours, BITMAPINFO *information, char *bits, bool recent) {
    const BITMAPINFOHEADER &header = information->bmiHeader;
    if (!recent || header.biBitCount == 8)
        return GetBitmapBits(colours, static_cast<LONG>(header.biSizeImage), bits) > 0;
    const MemoryContextOwner context(CreateCompatibleDC(nullptr));
    return GetDIBits(context.Get(), colours, 0, static_cast<UINT>(header.biHeight), bits, information,
                     DIB_RGB_COLORS) > 0;
}

// Cleared, so that no more is handed on than is meant to be. Null without memory.
void *New_Bits(const BITMAPINFOHEADER &header) {
    return header.biSizeImage <= LONG_MAX ? ds_malloc_clear(static_cast<long>(header.biSizeImage)) : nullptr;
}

PackedIconHeader Packed_Header(const ICONINFO &icon, const BITMAPINFOHEADER &mask,
                               const BITMAPINFOHEADER &colours) {
    return {sizeof(PackedIconHeader), mask.biWidth,       mask.biHeight,    mask.biPlanes,
            mask.biBitCount,          colours.biWidth,    colours.biHeight, colours.biPlanes,
            colours.biBitCount,       icon.fIcon,         icon.xHotspot,    icon.yHotspot,
            mask.biSizeImage,         colours.biSizeImage};
}

/// What stands in a block; the arrays are as long as the header says.
long Make_Block(const PackedIconHeader &header, const char *mask_bits, const char *colour_bits, void *&block,
                long &size) {
    const std::uint64_t whole = std::uint64_t{sizeof header} + header.mask_size + header.colour_size;
    if (whole > LONG_MAX) return E_OUTOFMEMORY;
    auto *const made = static_cast<char *>(ds_malloc(static_cast<long>(whole)));
    if (!made) return E_OUTOFMEMORY;
    std::memcpy(made, &header, sizeof header);
    std::memcpy(made + sizeof header, mask_bits, header.mask_size);
    std::memcpy(made + sizeof header + header.mask_size, colour_bits, header.colour_size);
    block = made;
    size = static_cast<long>(whole);
    return 0;
}

BITMAPINFO *Information_In(const OwnedBlock &block) {
    return reinterpret_cast<BITMAPINFO *>(block.Get());
}

long Pack(HICON icon, void *&block, long &size) {
    const bool recent = Is_Recent_Windows();
    ICONINFO icon_info = {};
    GetIconInfo(icon, &icon_info);
    const BitmapOwner mask(icon_info.hbmMask), colours(icon_info.hbmColor);
    const OwnedBlock mask_info(CreateBitmapInfoStruct(mask.Get()));
    const OwnedBlock colour_info(CreateBitmapInfoStruct(colours.Get()));
    if (!mask_info.Get() || !colour_info.Get()) return E_OUTOFMEMORY;

    const BITMAPINFOHEADER &mask_header = Information_In(mask_info)->bmiHeader;
    const BITMAPINFOHEADER &colour_header = Information_In(colour_info)->bmiHeader;
    if (!Tells_All_Rows(mask_header) || !Tells_All_Rows(colour_header)) return E_UNEXPECTED;
    const OwnedBlock mask_bits(New_Bits(mask_header)), colour_bits(New_Bits(colour_header));
    if (!mask_bits.Get() || !colour_bits.Get()) return E_OUTOFMEMORY;
    if (!Read_Mask(mask.Get(), mask_header, mask_bits.Get())) return E_UNEXPECTED;
    if (!Read_Colours(colours.Get(), Information_In(colour_info), colour_bits.Get(), recent))
        return E_UNEXPECTED;
    return Make_Block(Packed_Header(icon_info, mask_header, colour_header), mask_bits.Get(),
                      colour_bits.Get(), block, size);
}

} // namespace

long Pack_Icon(HICON icon, void **block, long *size) {
    if (!block || !size) return E_UNEXPECTED;
    *size = 0;
    *block = nullptr;
    try {
        return Pack(icon, *block, *size);
    } catch (const long &code) { // a host's memory routines
        return code != 0 ? code : E_UNEXPECTED;
    } catch (...) {
        return E_UNEXPECTED;
    }
}
