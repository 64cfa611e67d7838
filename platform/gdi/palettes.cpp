#include <platform/gdi/palettes.h>

#include <platform/gdi/bitmap.h>
#include <platform/kernel.h>
#include <platform/kernel/outcome.h>

#include <algorithm>

namespace {

constexpr WORD Known_Version = 0x300, Most_Entries = 1024;

constexpr PALETTEENTRY Fixed_Colours[Fixed_Colour_Count] = {
    {0, 0, 0, 0},       {128, 0, 0, 0},     {0, 128, 0, 0},     {128, 128, 0, 0},   {0, 0, 128, 0},
    {128, 0, 128, 0},   {0, 128, 128, 0},   {192, 192, 192, 0}, {192, 220, 192, 0}, {166, 202, 240, 0},
    {255, 251, 240, 0}, {160, 160, 164, 0}, {128, 128, 128, 0}, {255, 0, 0, 0},     {0, 255, 0, 0},
    {255, 255, 0, 0},   {0, 0, 255, 0},     {255, 0, 255, 0},   {0, 255, 255, 0},   {255, 255, 255, 0}};

UINT Give(const PALETTEENTRY *from, UINT all, UINT start, UINT count, PALETTEENTRY *entries) {
    if (!entries) return all;
    if (start >= all) return 0;
    const UINT given = std::min(count, all - start);
    std::copy(from + start, from + start + given, entries);
    return given;
}

} // namespace

RGBQUAD Fixed_Colour(std::size_t index) {
    const PALETTEENTRY &entry = Fixed_Colours[index];
    return {entry.peBlue, entry.peGreen, entry.peRed, 0};
}

extern "C" {

HPALETTE CreatePalette(const LOGPALETTE *palette) {
    const bool usable = palette && palette->palVersion == Known_Version && palette->palNumEntries > 0 &&
                        palette->palNumEntries <= Most_Entries;
    if (!usable) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    return Within_Memory(HPALETTE(nullptr), [palette] {
        const ObjectLock lock;
        auto made = std::make_unique<Palette>();
        made->entries.assign(palette->palPalEntry, palette->palPalEntry + palette->palNumEntries);
        return static_cast<HPALETTE>(Enter_Object(std::move(made)));
    });
}

UINT GetPaletteEntries(HPALETTE handle, UINT start, UINT count, PALETTEENTRY *entries) {
    if (handle == GetStockObject(DEFAULT_PALETTE))
        return Give(Fixed_Colours, Fixed_Colour_Count, start, count, entries);
    const ObjectLock lock;
    const auto *const palette = Find_Or_Tell<Palette>(handle);
    if (!palette) return 0;
    return Give(palette->entries.data(), static_cast<UINT>(palette->entries.size()), start, count, entries);
}

UINT GetSystemPaletteEntries(HDC dc, UINT start, UINT count, PALETTEENTRY *entries) {
    return Within_Memory(0u, [&] {
        if (GetDeviceCaps(dc, SIZEPALETTE) == 0) return 0u;
        std::vector<PALETTEENTRY> all;
        for (const RGBQUAD &colour : Usual_Colours(8))
            all.push_back({colour.rgbRed, colour.rgbGreen, colour.rgbBlue, 0});
        return Give(all.data(), static_cast<UINT>(all.size()), start, count, entries);
    });
}
}
