#pragma once
// The machine's one face: how wide its characters are, and how high its lines.

#include <platform/gdi.h>

/// What is kept of a font.
struct Font {
    LONG cell_height = 13; // pixels of a line
    LONG weight = FW_NORMAL;
    BYTE italic = 0, underlined = 0, struck_out = 0;
};

Font Font_Of(const LOGFONTA &wanted);
/// SYSTEM_FONT's for null and for what is no font.
Font Font_Of_Handle(HFONT handle);
LONG Width_Of(const Font &font, const char *text, int length);
TEXTMETRICA Metrics_Of(const Font &font);
