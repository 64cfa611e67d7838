// Rows in forms that no device decides.

#include <platform/gdi/bitmap.h>

#include <platform/kernel.h>
#include <platform/kernel/outcome.h>

#include <algorithm>
#include <cstring>

namespace {

constexpr DWORD Least_Header = sizeof(BITMAPINFOHEADER), Largest_Header = 124;

struct Dib {
    LONG width = 0, height = 0;
    bool bottom_up = false;
    WORD bits = 0;
    std::size_t pitch = 0;
    std::vector<RGBQUAD> colours;

    PixelForm Form() const { return {bits, colours.data()}; }
    /// Of `bitmap`, from the top; row 0 is the form's first.
    LONG Row_In(const Bitmap &bitmap, UINT row) const {
        return bottom_up ? bitmap.height - 1 - static_cast<LONG>(row) : static_cast<LONG>(row);
    }
    UINT Rows_From(UINT start, UINT lines, const Bitmap &bitmap) const {
        const auto all = static_cast<UINT>(std::min(height, bitmap.height));
        return start < all ? std::min(lines, all - start) : 0;
    }
};

bool Is_Header(const BITMAPINFO *information) {
    return information && information->bmiHeader.biSize >= Least_Header &&
           information->bmiHeader.biSize <= Largest_Header;
}

template <class Information>
auto Colours_Behind(Information *information) {
    using Byte = std::conditional_t<std::is_const_v<Information>, const BYTE, BYTE>;
    return reinterpret_cast<Byte *>(information) + information->bmiHeader.biSize;
}

long Read_Form(const BITMAPINFO *information, UINT usage, Dib &dib) {
    if (!Is_Header(information) || usage != DIB_RGB_COLORS) return ERROR_INVALID_PARAMETER;
    const BITMAPINFOHEADER &header = information->bmiHeader;
    const bool usable = header.biPlanes == 1 && Is_Depth(header.biBitCount) &&
                        header.biCompression == BI_RGB && header.biWidth > 0 && header.biHeight != 0 &&
                        header.biHeight >= -0x7FFFFFFF;
    if (!usable) return ERROR_INVALID_PARAMETER;
    dib.width = header.biWidth;
    dib.bottom_up = header.biHeight > 0;
    dib.height = dib.bottom_up ? header.biHeight : -header.biHeight;
    dib.bits = header.biBitCount;
    dib.pitch = Row_Size(dib.width, dib.bits, 32);
    const std::uint64_t size = std::uint64_t(dib.pitch) * static_cast<DWORD>(dib.height);
    return dib.pitch == 0 || size > Most_Bitmap_Bytes ? ERROR_NOT_ENOUGH_MEMORY : NO_ERROR;
}

long Read_Form_And_Colours(const BITMAPINFO *information, UINT usage, Dib &dib) {
    if (const long error = Read_Form(information, usage, dib); error != NO_ERROR || dib.bits > 8)
        return error;
    const std::size_t all = std::size_t{1} << dib.bits, used = information->bmiHeader.biClrUsed;
    const std::size_t stored = used == 0 ? all : std::min(used, all);
    dib.colours.resize(all);
    std::memcpy(dib.colours.data(), Colours_Behind(information), stored * sizeof(RGBQUAD));
    return NO_ERROR;
}

long Set_Rows(HBITMAP handle, UINT start, UINT lines, const void *bits, const BITMAPINFO *information,
              UINT usage, UINT &done) {
    Dib dib;
    const Bitmap *const bitmap = Find_Bitmap_Or_Tell(handle);
    if (!bitmap) return ERROR_INVALID_HANDLE;
    if (const long error = Read_Form_And_Colours(information, usage, dib); error != NO_ERROR) return error;
    const UINT rows = dib.Rows_From(start, lines, *bitmap);
    if (rows == 0) return ERROR_INVALID_PARAMETER;
    if (IsBadReadPtr(bits, static_cast<UINT>(rows * dib.pitch))) return ERROR_NOACCESS;
    const LONG width = std::min(dib.width, bitmap->width);
    for (UINT i = 0; i < rows; ++i)
        Convert_Row(static_cast<const BYTE *>(bits) + i * dib.pitch, dib.Form(), width,
                    bitmap->Row(dib.Row_In(*bitmap, start + i)), bitmap->Form(), width);
    done = rows;
    return NO_ERROR;
}

void Describe(const Bitmap &bitmap, BITMAPINFOHEADER &header) {
    const DWORD size = header.biSize;
    header = {};
    header.biSize = size;
    header.biWidth = bitmap.width;
    header.biHeight = bitmap.height;
    header.biPlanes = 1;
    header.biBitCount = bitmap.bits;
    header.biSizeImage = static_cast<DWORD>(bitmap.Pitch() * static_cast<std::size_t>(bitmap.height));
}

void Give_Row(const Bitmap &bitmap, LONG y, const Dib &dib, BYTE *to) {
    const LONG width = std::min(dib.width, bitmap.width);
    std::memset(to, 0, dib.pitch);
    Convert_Row(bitmap.Row(y), bitmap.Form(), width, to, dib.Form(), width);
}

long Get_Rows(HBITMAP handle, UINT start, UINT lines, void *bits, BITMAPINFO *information, UINT usage,
              UINT &done) {
    const Bitmap *const bitmap = Find_Bitmap_Or_Tell(handle);
    if (!bitmap) return ERROR_INVALID_HANDLE;
    if (!bits && Is_Header(information) && information->bmiHeader.biBitCount == 0) {
        Describe(*bitmap, information->bmiHeader);
        done = static_cast<UINT>(bitmap->height);
        return NO_ERROR;
    }
    Dib dib;
    if (const long error = Read_Form(information, usage, dib); error != NO_ERROR) return error;
    dib.colours = dib.bits == bitmap->bits ? bitmap->colours : Usual_Colours(dib.bits);
    done = bits ? dib.Rows_From(start, lines, *bitmap) : static_cast<UINT>(bitmap->height);
    if (done == 0) return ERROR_INVALID_PARAMETER;
    information->bmiHeader.biSizeImage = static_cast<DWORD>(dib.pitch * static_cast<std::size_t>(dib.height));
    if (!dib.colours.empty())
        std::memcpy(Colours_Behind(information), dib.colours.data(), dib.colours.size() * sizeof(RGBQUAD));
    for (UINT i = 0; bits && i < done; ++i)
        Give_Row(*bitmap, dib.Row_In(*bitmap, start + i), dib, static_cast<BYTE *>(bits) + i * dib.pitch);
    return NO_ERROR;
}

std::unique_ptr<Bitmap> Section(const Dib &dib) {
    auto made = New_Bitmap(dib.width, dib.height, dib.bits);
    if (!made) return made;
    made->is_section = true;
    made->bottom_up = dib.bottom_up;
    made->colours = dib.colours;
    return made;
}

} // namespace

extern "C" {

HBITMAP CreateDIBSection(HDC dc, const BITMAPINFO *information, UINT usage, void **bits, HANDLE section,
                         DWORD) {
    HBITMAP result = nullptr;
    const long error = Code_Of([&]() -> long {
        if (bits) *bits = nullptr;
        const ObjectLock lock;
        Dib dib;
        if (dc && !Find_Or_Tell<DeviceContext>(dc)) return ERROR_INVALID_HANDLE;
        if (section) return ERROR_INVALID_PARAMETER;
        if (const long read = Read_Form_And_Colours(information, usage, dib); read != NO_ERROR) return read;
        auto made = Section(dib);
        BYTE *const pixels = made->pixels.get();
        result = Enter_Bitmap(std::move(made));
        if (bits) *bits = pixels;
        return NO_ERROR;
    });
    Succeed_Or_Tell(error);
    return result;
}

int SetDIBits(HDC, HBITMAP bitmap, UINT start, UINT lines, const void *bits, const BITMAPINFO *information,
              UINT usage) {
    UINT done = 0;
    const ObjectLock lock;
    const long error =
        Code_Of([&] { return Set_Rows(bitmap, start, lines, bits, information, usage, done); });
    return Succeed_Or_Tell(error) ? static_cast<int>(done) : 0;
}

int GetDIBits(HDC dc, HBITMAP bitmap, UINT start, UINT lines, void *bits, BITMAPINFO *information,
              UINT usage) {
    UINT done = 0;
    const ObjectLock lock;
    if (!Find_Or_Tell<DeviceContext>(dc)) return 0;
    const long error =
        Code_Of([&] { return Get_Rows(bitmap, start, lines, bits, information, usage, done); });
    return Succeed_Or_Tell(error) ? static_cast<int>(done) : 0;
}
}
