#include <platform/user/snapshot/picture.h>

#include <platform/gdi/fonts.h>
#include <platform/kernel/code_page.h>
#include <platform/user.h>

#include <algorithm>
#include <cstdio>

namespace {

// As text in XML; what cannot stand there is a blank.
std::string Escaped(std::string_view ansi) {
    std::string out;
    for (const char each : Utf8_Of_Ansi(ansi)) {
        const auto byte = static_cast<unsigned char>(each);
        if (each == '<')
            out += "&lt;";
        else if (each == '>')
            out += "&gt;";
        else if (each == '&')
            out += "&amp;";
        else
            out += byte < 32 || byte == 127 ? ' ' : each;
    }
    return out;
}

// Control characters of the upper half are none of a picture's either.
std::string Plain(std::string_view text) {
    std::string out(text);
    for (char &each : out) {
        const auto wide = Wide_Of_Ansi(static_cast<unsigned char>(each));
        if (wide < 32 || (wide >= 127 && wide < 160)) each = ' ';
    }
    return out;
}

// Held by the point that its place is measured from, so that a viewer that has other widths keeps it there.
std::string Anchor(LONG left, LONG width, Across across) {
    if (across == Across::Left) return "x=\"" + std::to_string(left) + "\"";
    if (across == Across::Right) return "x=\"" + std::to_string(left + width) + "\" text-anchor=\"end\"";
    return "x=\"" + std::to_string(left + width / 2) + (width % 2 ? ".5" : "") + "\" text-anchor=\"middle\"";
}

LONG Width(const Font &font, std::string_view text) {
    return Width_Of(font, text.data(), static_cast<int>(text.size()));
}

// Of what is seen of it.
LONG Width(const Font &font, std::string_view text, const TextLook &look) {
    std::size_t ignored;
    return look.prefix ? Width(font, Without_Prefix(text, ignored)) : Width(font, text);
}

// The length of the piece that fits, at least a character; words stay whole where they can.
std::size_t Fitting(const Font &font, std::string_view text, LONG width, const TextLook &look) {
    std::size_t fits = 0, blank = 0;
    while (fits < text.size() && Width(font, text.substr(0, fits + 1), look) <= width) {
        ++fits;
        if (fits < text.size() && text[fits] == ' ') blank = fits;
    }
    if (fits == text.size()) return fits;
    return blank ? blank : std::max<std::size_t>(fits, 1);
}

std::vector<std::string_view> Lines_Of(const Font &font, std::string_view text, LONG width,
                                       const TextLook &look) {
    std::vector<std::string_view> lines;
    for (;;) {
        const std::size_t end = look.wraps ? text.find('\n') : std::string_view::npos;
        std::string_view line = text.substr(0, end);
        if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
        do {
            const std::size_t length = look.wraps ? Fitting(font, line, width, look) : line.size();
            lines.push_back(line.substr(0, length));
            line.remove_prefix(length);
            while (!line.empty() && line.front() == ' ') line.remove_prefix(1);
        } while (!line.empty());
        if (end == std::string_view::npos) return lines;
        text.remove_prefix(end + 1);
    }
}

} // namespace

std::vector<std::string_view> Lines_Of_Text(std::string_view text, LONG width, const TextLook &look) {
    return Lines_Of(Font_Of_Handle(look.font), text, width, look);
}

LONG Shift_In(LONG place_width, LONG text_width, Across across) {
    const LONG room = place_width - text_width;
    return across == Across::Right ? room : across == Across::Centre ? room / 2 : 0;
}

LONG Text_Width(HFONT font, std::string_view text) {
    return Width(Font_Of_Handle(font), text);
}

std::string Text_Of_Window(HWND window) {
    constexpr int Longest = 0x3FFFFFFF; // which a string may hold; a subclass answers what it likes
    const int room = std::clamp(GetWindowTextLengthA(window), 0, Longest) + 1;
    std::string text(static_cast<std::size_t>(room), 0);
    const int given = GetWindowTextA(window, text.data(), room);
    text.resize(static_cast<std::size_t>(std::clamp(given, 0, room - 1)));
    return text;
}

std::string Without_Prefix(std::string_view text, std::size_t &mnemonic) {
    std::string out;
    mnemonic = std::string::npos;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '&' && i + 1 < text.size()) {
            ++i;
            if (text[i] != '&') mnemonic = out.size();
        } else if (text[i] == '&') {
            break;
        }
        out += text[i];
    }
    return out;
}

void Picture::One_Line(POINT at, std::string_view text, const TextLook &look, const char *colour) {
    std::size_t mnemonic = std::string::npos;
    const std::string shown = Plain(look.prefix ? Without_Prefix(text, mnemonic) : std::string(text));
    if (shown.empty()) return;
    const Font font = Font_Of_Handle(look.font);
    const TEXTMETRICA metrics = Metrics_Of(font);
    const LONG baseline = at.y + metrics.tmAscent, width = Width(font, shown);
    char start[300];
    std::snprintf(start, sizeof start,
                  "<text %s y=\"%ld\" font-size=\"%ld\"%s%s fill=\"%s\" textLength=\"%ld\" "
                  "lengthAdjust=\"spacingAndGlyphs\" xml:space=\"preserve\">",
                  Anchor(at.x, width, look.across).c_str(), baseline,
                  metrics.tmHeight - metrics.tmInternalLeading,
                  font.weight >= FW_BOLD ? " font-weight=\"bold\"" : "",
                  font.italic ? " font-style=\"italic\"" : "", colour, width);
    svg_ += start + Escaped(shown) + "</text>\n";
    if (mnemonic >= shown.size()) return;
    const LONG left = at.x + Width(font, std::string_view(shown).substr(0, mnemonic));
    const LONG right = left + Width(font, std::string_view(shown).substr(mnemonic, 1));
    Fill({left, baseline + 1, right, baseline + 2}, colour);
}

void Picture::Text(const RECT &place, std::string_view text, const TextLook &look) {
    const Font font = Font_Of_Handle(look.font);
    const auto lines = Lines_Of(font, text, place.right - place.left, look);
    const auto height = font.cell_height * static_cast<LONG>(lines.size());
    LONG y = look.down == Down::Centre ? place.top + (place.bottom - place.top - height) / 2 : place.top;
    for (const std::string_view line : lines) {
        if (y >= place.bottom) return;
        const LONG shift = Shift_In(place.right - place.left, Width(font, line, look), look.across);
        const POINT at = {place.left + shift, y};
        if (!look.enabled) One_Line({at.x + 1, at.y + 1}, line, look, Colour_White);
        One_Line(at, line, look, look.enabled ? look.colour : Colour_Shadow);
        y += font.cell_height;
    }
}
