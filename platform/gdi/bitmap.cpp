#include <platform/gdi/bitmap.h>

#include <platform/gdi/palettes.h>
#include <platform/kernel.h>
#include <platform/kernel/outcome.h>

#include <algorithm>
#include <cstring>

namespace {

constexpr WORD Depths[] = {1, 4, 8, 16, 24, 32};

std::unique_ptr<Bitmap> One_Or_More(LONG width, LONG height, WORD bits) {
    const bool nothing = width >= 0 && height >= 0 && (width == 0 || height == 0);
    return nothing ? New_Bitmap(1, 1, 1) : New_Bitmap(width, height, bits);
}

std::unique_ptr<Bitmap> Refused(long error) {
    Succeed_Or_Tell(error);
    return nullptr;
}

bool Take_Bits(Bitmap &bitmap, const void *bits) {
    const std::size_t row = bitmap.Even_Row_Size(), height = static_cast<std::size_t>(bitmap.height);
    if (IsBadReadPtr(bits, static_cast<UINT>(row * height))) return Succeed_Or_Tell(ERROR_NOACCESS);
    for (LONG y = 0; y < bitmap.height; ++y)
        std::memcpy(bitmap.Row(y), static_cast<const BYTE *>(bits) + static_cast<std::size_t>(y) * row, row);
    return true;
}

} // namespace

std::size_t Row_Size(LONG width, WORD bits, unsigned multiple_of_bits) {
    const std::uint64_t row_bits = std::uint64_t(static_cast<DWORD>(width)) * bits;
    const std::uint64_t size = (row_bits + multiple_of_bits - 1) / multiple_of_bits * (multiple_of_bits / 8);
    return width > 0 && size <= Most_Bitmap_Bytes ? static_cast<std::size_t>(size) : 0;
}

WORD Depth_For(UINT bits) {
    return *std::lower_bound(std::begin(Depths), std::end(Depths) - 1, bits);
}

bool Is_Depth(UINT bits) {
    return std::find(std::begin(Depths), std::end(Depths), bits) != std::end(Depths);
}

std::vector<RGBQUAD> Usual_Colours(WORD bits) {
    if (bits > 8) return {};
    const std::size_t count = std::size_t{1} << bits;
    std::vector<RGBQUAD> colours(count);
    for (std::size_t i = 0; i < std::min<std::size_t>(count / 2, Fixed_Colour_Count / 2); ++i) {
        colours[i] = Fixed_Colour(i);
        colours[count - 1 - i] = Fixed_Colour(Fixed_Colour_Count - 1 - i);
    }
    return colours;
}

std::size_t Bitmap::Pitch() const {
    return Row_Size(width, bits, 32);
}

std::size_t Bitmap::Even_Row_Size() const {
    return Row_Size(width, bits, 16);
}

BYTE *Bitmap::Row(LONG y) const {
    return &pixels[static_cast<std::size_t>(bottom_up ? height - 1 - y : y) * Pitch()];
}

std::unique_ptr<Bitmap> New_Bitmap(LONG width, LONG height, WORD bits) {
    if (width <= 0 || height <= 0) return Refused(ERROR_INVALID_PARAMETER);
    const std::size_t pitch = Row_Size(width, bits, 32);
    const std::uint64_t size = std::uint64_t(pitch) * static_cast<DWORD>(height);
    if (pitch == 0 || size > Most_Bitmap_Bytes) return Refused(ERROR_NOT_ENOUGH_MEMORY);
    auto made = std::make_unique<Bitmap>();
    made->width = width;
    made->height = height;
    made->bits = bits;
    made->colours = Usual_Colours(bits);
    made->pixels = std::make_unique<BYTE[]>(static_cast<std::size_t>(size));
    return made;
}

std::unique_ptr<Bitmap> Converted(const Bitmap &from, LONG width, LONG height, WORD bits) {
    auto made = New_Bitmap(width, height, bits);
    if (!made) return made;
    for (LONG y = 0; y < height; ++y) {
        const auto at = static_cast<LONG>(std::int64_t(y) * from.height / height);
        Convert_Row(from.Row(at), from.Form(), from.width, made->Row(y), made->Form(), width);
    }
    return made;
}

Bitmap *Find_Bitmap_Or_Tell(HBITMAP handle) {
    return Find_Or_Tell<Bitmap>(handle);
}

HBITMAP Enter_Bitmap(std::unique_ptr<Bitmap> bitmap) {
    return bitmap ? static_cast<HBITMAP>(Enter_Object(std::move(bitmap))) : nullptr;
}

extern "C" {

HBITMAP CreateBitmap(int width, int height, UINT planes, UINT bits_per_pixel, const void *bits) {
    const std::uint64_t depth = std::uint64_t{planes} * bits_per_pixel;
    return Within_Memory(HBITMAP(nullptr), [&]() -> HBITMAP {
        const ObjectLock lock;
        if (depth == 0 || depth > 32) return Enter_Bitmap(Refused(ERROR_INVALID_PARAMETER));
        auto made = One_Or_More(width, height, Depth_For(static_cast<UINT>(depth)));
        const bool has_bits = bits && width != 0 && height != 0;
        if (made && has_bits && !Take_Bits(*made, bits)) return nullptr;
        return Enter_Bitmap(std::move(made));
    });
}

HBITMAP CreateCompatibleBitmap(HDC dc, int width, int height) {
    return Within_Memory(HBITMAP(nullptr), [&]() -> HBITMAP {
        const ObjectLock lock;
        const auto *const context = Find_Or_Tell<DeviceContext>(dc);
        if (!context) return nullptr;
        return Enter_Bitmap(One_Or_More(width, height, context->in_memory ? WORD{1} : Screen_Depth()));
    });
}

LONG GetBitmapBits(HBITMAP handle, LONG size, void *bits) {
    const ObjectLock lock;
    const Bitmap *const bitmap = Find_Bitmap_Or_Tell(handle);
    if (!bitmap) return 0;
    const std::size_t row = bitmap->Even_Row_Size();
    const auto all = static_cast<LONG>(row * static_cast<std::size_t>(bitmap->height));
    if (!bits) return all;
    const LONG given = std::clamp(size, 0L, all);
    auto left = static_cast<std::size_t>(given);
    auto *to = static_cast<BYTE *>(bits);
    for (LONG y = 0; left > 0; ++y) {
        const std::size_t part = std::min(left, row);
        std::memcpy(to, bitmap->Row(y), part);
        to += part;
        left -= part;
    }
    return given;
}
}
