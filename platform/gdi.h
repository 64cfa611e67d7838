#pragma once
// Device contexts, text and its measures, and with bitmaps.h all calls of GDI32.
//
// Nothing is drawn here: a device context knows which font is selected, and text is measured by fixed tables
// of the machine's one proportional face at 96 dots to the inch, in code page 1252; the host's fonts do not
// come into it. Objects belong to the process and may be used from any thread; none is ever refused for
// being one too many. A handle that is none: the call fails with ERROR_INVALID_HANDLE. Where memory runs out:
// ERROR_NOT_ENOUGH_MEMORY.

#include <platform/bitmaps.h>
#include <platform/errors.h>
#include <platform/types.h>

inline constexpr int SYSTEM_FONT = 13;
inline constexpr int ANSI_VAR_FONT = 12;
inline constexpr int DEFAULT_PALETTE = 15;
inline constexpr int DEFAULT_GUI_FONT = 17;

inline constexpr int HORZRES = 8; // pixels of the screen
inline constexpr int VERTRES = 10;
inline constexpr int BITSPIXEL = 12;
inline constexpr int PLANES = 14;     // 1
inline constexpr int NUMCOLORS = 24;  // that are fixed: 2, 16, 20, and -1 above 8 bits
inline constexpr int RASTERCAPS = 38; // RC_PALETTE
inline constexpr int LOGPIXELSX = 88; // 96
inline constexpr int LOGPIXELSY = 90;
inline constexpr int SIZEPALETTE = 104; // 256 at 8 bits, otherwise 0
inline constexpr int NUMRESERVED = 106; // 20, likewise
inline constexpr int RC_PALETTE = 0x100;

inline constexpr LONG FW_NORMAL = 400;
inline constexpr LONG FW_BOLD = 700;

struct TEXTMETRICA {
    LONG tmHeight;
    LONG tmAscent;
    LONG tmDescent;
    LONG tmInternalLeading;
    LONG tmExternalLeading;
    LONG tmAveCharWidth;
    LONG tmMaxCharWidth;
    LONG tmWeight;
    LONG tmOverhang;
    LONG tmDigitizedAspectX;
    LONG tmDigitizedAspectY;
    BYTE tmFirstChar;
    BYTE tmLastChar;
    BYTE tmDefaultChar;
    BYTE tmBreakChar;
    BYTE tmItalic;
    BYTE tmUnderlined;
    BYTE tmStruckOut;
    BYTE tmPitchAndFamily;
    BYTE tmCharSet;
};
static_assert(sizeof(TEXTMETRICA) == 56 && offsetof(TEXTMETRICA, tmOverhang) == 32 &&
              offsetof(TEXTMETRICA, tmCharSet) == 52);

struct LOGFONTA {
    LONG lfHeight;
    LONG lfWidth;
    LONG lfEscapement;
    LONG lfOrientation;
    LONG lfWeight;
    BYTE lfItalic;
    BYTE lfUnderline;
    BYTE lfStrikeOut;
    BYTE lfCharSet;
    BYTE lfOutPrecision;
    BYTE lfClipPrecision;
    BYTE lfQuality;
    BYTE lfPitchAndFamily;
    char lfFaceName[32];
};
static_assert(sizeof(LOGFONTA) == 60 && offsetof(LOGFONTA, lfFaceName) == 28);

extern "C" {

/// A device context of a window; null is the screen. Its font is SYSTEM_FONT at first. ReleaseDC gives it
/// back. Null on failure: ERROR_INVALID_WINDOW_HANDLE, ERROR_NOT_ENOUGH_MEMORY.
PLATFORM_API HDC GetDC(HWND window);
/// 1, or 0 for what is no device context of that window.
PLATFORM_API int ReleaseDC(HWND window, HDC dc);
/// One in memory, of a screen like that of `dc` or null; what is made compatible with it has one bit to a
/// pixel. DeleteDC gives it back. Null on failure.
PLATFORM_API HDC CreateCompatibleDC(HDC dc);
/// FALSE for what is none of CreateCompatibleDC.
PLATFORM_API BOOL DeleteDC(HDC dc);
/// One of the measures above of the machine's screen; 0 for others. The setting "screen_depth" tells the bits
/// of a pixel, 1, 4, 8, 16, 24 or 32, which also stands for any other text and for none.
PLATFORM_API int GetDeviceCaps(HDC dc, int index);

/// Selects a font; the one before is the result, null for what is no font. Nothing else can be selected.
PLATFORM_API HGDIOBJ SelectObject(HDC dc, HGDIOBJ object);
/// One of the three fonts and the palette above, never to be deleted; null for other numbers.
PLATFORM_API HGDIOBJ GetStockObject(int object);

/// A font of the machine's face, whatever face is asked for. A negative `lfHeight` is that of the characters,
/// a positive one that of the cell, 0 the default; weight and slant are kept. Null on failure.
PLATFORM_API HFONT CreateFontIndirectA(const LOGFONTA *font);
/// Fonts, bitmaps and palettes. TRUE for a stock object too, which stays. FALSE, and it stays, for a font
/// that is selected into a device context.
PLATFORM_API BOOL DeleteObject(HGDIOBJ object);

/// `length` bytes of text on one line. FALSE, `size` untouched, for a length below 0 or no text.
PLATFORM_API BOOL GetTextExtentPoint32A(HDC dc, LPCSTR text, int length, SIZE *size);
PLATFORM_API BOOL GetTextMetricsA(HDC dc, TEXTMETRICA *metrics);
}
