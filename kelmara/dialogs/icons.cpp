#include <kelmara/dialogs/icons.h>

#include <kelmara/dialogs/bitmap_rows.h>
#include <kelmara/dialogs/graphics_owners.h>
#include <kelmara/foundation/owned_block.h>
#include <kelmara/suite/folders.h>
#include <kelmara/system/file.h>

#include <cstdio>

namespace {

constexpr int Content_Folder = 4;
constexpr int Path_Size = 256;
constexpr unsigned Palette_Size = 256;
constexpr WORD Palette_Version = 0x300;
constexpr long Palette_Block_Size = 1032;
static_assert(Palette_Block_Size == sizeof(LOGPALETTE) + Palette_Size * sizeof(PALETTEENTRY));

// Of a header with its colours.
long Info_Size(unsigned depth) {
    if (depth == 24) return sizeof(BITMAPINFOHEADER);
    if (depth == 32) return sizeof(BITMAPINFO);
    return static_cast<long>(sizeof(BITMAPINFOHEADER) + (sizeof(RGBQUAD) << depth));
}

// A row is counted in 16 bits, whatever its width.
DWORD Image_Size(const BITMAP &bitmap, unsigned depth) {
    const DWORD row = (depth * static_cast<DWORD>(bitmap.bmWidth) + 31) / 32 & 0xFFFF;
    return row * 4 * static_cast<DWORD>(bitmap.bmHeight);
}

void Fill_Header(BITMAPINFOHEADER &header, const BITMAP &bitmap, unsigned depth) {
    header.biSize = sizeof header;
    header.biWidth = bitmap.bmWidth;
    header.biHeight = bitmap.bmHeight;
    header.biPlanes = bitmap.bmPlanes;
    header.biBitCount = bitmap.bmBitsPixel;
    header.biCompression = BI_RGB;
    header.biSizeImage = Image_Size(bitmap, depth);
    header.biClrUsed = depth < 16 ? 1u << depth : 0;
    header.biClrImportant = 0;
}

// The path that a file below the "Content" folder has; false when there is no room for it.
bool Form_Content_Path(const char *file, char (&path)[Path_Size]) {
    char folder[MAX_PATH] = {};
    GetKelMaraFolderPath(Content_Folder, folder);
    const int length = std::snprintf(path, sizeof path, "%s%s", folder, file);
    return length >= 0 && length < Path_Size;
}

HICON Extract(const char *path, int pixels) {
    HICON icon = nullptr;
    HICON *const large = pixels == 32 ? &icon : nullptr, *const small = pixels == 16 ? &icon : nullptr;
    ExtractIconExA(path, 0, large, small, 1);
    return icon;
}

HPALETTE Palette_Of_Screen() {
    const ScreenOwner screen(GetDC(nullptr));
    const OwnedBlock block(ds_malloc(Palette_Block_Size));
    if (!screen.Get() || !block.Get()) return nullptr;
    PALETTEENTRY entries[Palette_Size] = {};
    GetSystemPaletteEntries(screen.Get(), 0, Palette_Size, entries);
    auto *const palette = reinterpret_cast<LOGPALETTE *>(block.Get());
    palette->palVersion = Palette_Version;
    palette->palNumEntries = Palette_Size;
    for (unsigned i = 0; i < Palette_Size; ++i)
        palette->palPalEntry[i] = {entries[i].peRed, entries[i].peGreen, entries[i].peBlue, 0};
    return CreatePalette(palette);
}

} // namespace

BITMAPINFO *CreateBitmapInfoStruct(HBITMAP bitmap) try {
    BITMAP described = {};
    if (GetObjectA(bitmap, sizeof described, &described) != static_cast<int>(sizeof described))
        return nullptr;
    const auto bits = static_cast<WORD>(described.bmPlanes * described.bmBitsPixel);
    const unsigned depth = Normalised_Depth(bits);
    auto *const information = static_cast<BITMAPINFO *>(ds_malloc_clear(Info_Size(depth)));
    if (information) Fill_Header(information->bmiHeader, described, depth);
    return information;
} catch (...) { // a host's memory routines
    return nullptr;
}

HICON Load_Icon_From_File(HINSTANCE, const char *file, int pixels) {
    if (!file) return nullptr;
    CKMFile opened;
    if (opened.Open(file, false, false) == 0) {
        opened.Close();
        return Extract(file, pixels);
    }
    char path[Path_Size];
    if (!Form_Content_Path(file, path)) return nullptr;
    if (opened.Open(path, false, false) == CKMFile::File_Not_Found) return nullptr;
    return Extract(path, pixels);
}

HPALETTE GetFullSystemPalette() try {
    const HPALETTE palette = Palette_Of_Screen();
    return palette ? palette : reinterpret_cast<HPALETTE>(-1);
} catch (...) { // a host's memory routines
    return reinterpret_cast<HPALETTE>(-1);
}
