#include <platform/gdi/fonts.h>

#include <algorithm>

namespace {

constexpr LONG Base_Height = 13, Base_Ascent = 11, Base_Leading = 2;
constexpr LONG Most_Pixels = 10000; // a line of more is not wanted by anybody

// Pixels at the base height, from the blank to character 255 of code page 1252.
// clang-format off: 16 to a line
constexpr BYTE Widths[224] = {
    3,  3, 5, 7, 6, 9, 7,  3, 4, 4,  5, 7, 3,  4, 3, 4, 6, 6, 6, 6, 6, 6, 6, 6,  6, 6, 3, 3, 7, 7, 7, 5,
    10, 7, 6, 7, 7, 6, 6,  7, 7, 3,  5, 6, 5,  9, 7, 8, 6, 8, 7, 6, 7, 7, 7, 10, 6, 7, 6, 4, 4, 4, 7, 6,
    4,  5, 6, 5, 6, 6, 3,  6, 6, 2,  3, 5, 2,  8, 6, 6, 6, 6, 4, 5, 3, 6, 5, 8,  5, 5, 5, 4, 3, 4, 7, 7,
    6,  7, 3, 4, 5, 9, 6,  6, 4, 12, 6, 4, 10, 7, 6, 7, 7, 3, 3, 5, 5, 5, 6, 10, 4, 9, 5, 4, 9, 7, 5, 7,
    3,  3, 6, 6, 6, 7, 3,  6, 4, 9,  4, 6, 7,  4, 9, 6, 4, 7, 4, 4, 4, 6, 6, 3,  4, 3, 4, 6, 9, 9, 9, 5,
    7,  7, 7, 7, 7, 7, 10, 7, 6, 6,  6, 6, 3,  3, 3, 3, 7, 7, 8, 8, 8, 8, 8, 7,  8, 7, 7, 7, 7, 7, 6, 6,
    5,  5, 5, 5, 5, 5, 9,  5, 6, 6,  6, 6, 2,  2, 2, 2, 6, 6, 6, 6, 6, 6, 6, 7,  6, 6, 6, 6, 6, 5, 6, 5};
// clang-format on

LONG Scaled(LONG pixels, LONG height) {
    return (pixels * height + Base_Height / 2) / Base_Height;
}

LONG Character_Width(const Font &font, unsigned char character) {
    const BYTE base = character < 32 ? Widths[0] : Widths[character - 32];
    return std::max(Scaled(base, font.cell_height), 1L) + (font.weight >= FW_BOLD ? 1 : 0);
}

} // namespace

Font Font_Of(const LOGFONTA &wanted) {
    Font font;
    LONG height = std::clamp(wanted.lfHeight, -Most_Pixels, Most_Pixels);
    if (height < 0)
        height = (-height * Base_Height + (Base_Height - Base_Leading) / 2) / (Base_Height - Base_Leading);
    if (height > 0) font.cell_height = height;
    if (wanted.lfWeight > 0) font.weight = std::min(wanted.lfWeight, 1000L);
    font.italic = wanted.lfItalic;
    font.underlined = wanted.lfUnderline;
    font.struck_out = wanted.lfStrikeOut;
    return font;
}

LONG Width_Of(const Font &font, const char *text, int length) {
    LONG width = 0;
    for (int i = 0; i < length; ++i) {
        const LONG next = Character_Width(font, static_cast<unsigned char>(text[i]));
        if (__builtin_add_overflow(width, next, &width)) return 0x7FFFFFFF;
    }
    return width;
}

TEXTMETRICA Metrics_Of(const Font &font) {
    TEXTMETRICA metrics = {};
    const LONG height = font.cell_height;
    metrics.tmHeight = height;
    metrics.tmAscent = Scaled(Base_Ascent, height);
    metrics.tmDescent = height - metrics.tmAscent;
    metrics.tmInternalLeading = Scaled(Base_Leading, height);
    metrics.tmAveCharWidth = Character_Width(font, 'x');
    metrics.tmMaxCharWidth = Character_Width(font, 0x89);
    metrics.tmWeight = font.weight;
    metrics.tmDigitizedAspectX = metrics.tmDigitizedAspectY = 96;
    metrics.tmFirstChar = 30;
    metrics.tmLastChar = 255;
    metrics.tmDefaultChar = 31;
    metrics.tmBreakChar = 32;
    metrics.tmItalic = font.italic;
    metrics.tmUnderlined = font.underlined;
    metrics.tmStruckOut = font.struck_out;
    metrics.tmPitchAndFamily = 0x27; // of varying width, drawn by outlines, without serifs
    return metrics;
}
