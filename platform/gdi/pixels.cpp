// Rows of pixels from one form to another.

#include <platform/gdi/bitmap.h>

#include <algorithm>
#include <cstring>

namespace {

constexpr BYTE Whole(unsigned five_bits) {
    return static_cast<BYTE>(five_bits << 3 | five_bits >> 2);
}

bool Same(RGBQUAD a, RGBQUAD b) {
    return a.rgbBlue == b.rgbBlue && a.rgbGreen == b.rgbGreen && a.rgbRed == b.rgbRed;
}

bool Same(PixelForm a, PixelForm b) {
    if (a.bits != b.bits) return false;
    return a.bits > 8 || std::equal(a.colours, a.colours + (1 << a.bits), b.colours,
                                    [](RGBQUAD left, RGBQUAD right) { return Same(left, right); });
}

// Of 8 bits at most; the first pixel has the highest bits.
unsigned Number_At(const BYTE *row, std::size_t x, WORD bits) {
    const std::size_t bit = x * bits;
    return row[bit / 8] >> (8 - bits - bit % 8) & ((1u << bits) - 1);
}

void Put_Number(BYTE *row, std::size_t x, WORD bits, unsigned number) {
    const std::size_t bit = x * bits;
    const unsigned shift = 8 - bits - bit % 8, mask = ((1u << bits) - 1) << shift;
    row[bit / 8] = static_cast<BYTE>((row[bit / 8] & ~mask) | (number << shift & mask));
}

int Distance(RGBQUAD a, RGBQUAD b) {
    const int red = a.rgbRed - b.rgbRed, green = a.rgbGreen - b.rgbGreen, blue = a.rgbBlue - b.rgbBlue;
    return red * red + green * green + blue * blue;
}

unsigned Nearest(PixelForm form, RGBQUAD colour) {
    unsigned nearest = 0;
    for (unsigned i = 1; i < 1u << form.bits; ++i) {
        if (Distance(form.colours[i], colour) < Distance(form.colours[nearest], colour)) nearest = i;
    }
    return nearest;
}

void Put_Direct(BYTE *row, std::size_t x, WORD bits, RGBQUAD colour) {
    if (bits == 16) {
        const auto packed =
            static_cast<WORD>((colour.rgbRed >> 3) << 10 | (colour.rgbGreen >> 3) << 5 | colour.rgbBlue >> 3);
        std::memcpy(row + x * 2, &packed, 2);
    } else {
        std::memcpy(row + x * (bits / 8u), &colour, bits / 8u);
    }
}

// Rows mostly have many pixels of a colour side by side.
class ColourNumbers {
  public:
    explicit ColourNumbers(PixelForm form) : form_(form) {}
    unsigned Of(RGBQUAD colour) {
        if (!known_ || !Same(colour, last_)) number_ = Nearest(form_, colour);
        known_ = true;
        last_ = colour;
        return number_;
    }

  private:
    const PixelForm form_;
    bool known_ = false;
    RGBQUAD last_ = {};
    unsigned number_ = 0;
};

} // namespace

RGBQUAD Colour_At(const BYTE *row, LONG at, PixelForm form) {
    const auto x = static_cast<std::size_t>(at);
    if (form.bits <= 8) return form.colours[Number_At(row, x, form.bits)];
    RGBQUAD colour = {};
    if (form.bits == 16) {
        WORD packed;
        std::memcpy(&packed, row + x * 2, 2);
        return {Whole(packed & 31u), Whole(packed >> 5 & 31u), Whole(packed >> 10 & 31u), 0};
    }
    std::memcpy(&colour, row + x * (form.bits / 8u), form.bits / 8u);
    return colour;
}

void Convert_Row(const BYTE *from, PixelForm from_form, LONG from_width, BYTE *to, PixelForm to_form,
                 LONG to_width) {
    const bool alike = Same(from_form, to_form);
    LONG x = 0;
    if (alike && from_width == to_width) {
        const auto whole_bytes = static_cast<std::size_t>(std::uint64_t(to_width) * to_form.bits / 8);
        std::memcpy(to, from, whole_bytes);
        x = static_cast<LONG>(std::uint64_t(whole_bytes) * 8 / to_form.bits);
    }
    ColourNumbers numbers(to_form);
    for (; x < to_width; ++x) {
        const auto at = static_cast<LONG>(std::int64_t(x) * from_width / to_width);
        const auto target = static_cast<std::size_t>(x);
        if (alike && to_form.bits <= 8)
            Put_Number(to, target, to_form.bits, Number_At(from, static_cast<std::size_t>(at), to_form.bits));
        else if (to_form.bits <= 8)
            Put_Number(to, target, to_form.bits, numbers.Of(Colour_At(from, at, from_form)));
        else
            Put_Direct(to, target, to_form.bits, Colour_At(from, at, from_form));
    }
}
