#include <tools/content/text_lines.h>

#include <algorithm>
#include <cstdio>

namespace tools {

bool TextLines::Next(std::string_view &line) {
    if (behind_ >= text_.size()) return false;
    const std::size_t start = behind_;
    const std::size_t end = std::min(text_.find_first_of("\r\n", start), text_.size());
    line = text_.substr(start, end - start);
    behind_ = text_.substr(end, 2) == "\r\n" ? end + 2 : std::min(end + 1, text_.size());
    ++number_;
    return true;
}

unsigned long Count_Text_Lines(std::string_view text) {
    TextLines lines(text);
    for (std::string_view line; lines.Next(line);) {
    }
    return lines.Number();
}

unsigned long Line_Of(std::string_view text, std::size_t place) {
    unsigned long line = 1;
    for (std::size_t at = 0; at < std::min(place, text.size()); ++at)
        if (text[at] == '\n' || (text[at] == '\r' && text.substr(at + 1, 1) != "\n")) ++line;
    return line;
}

std::string On_One_Line(std::string_view text) {
    std::string shown;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= 0x20 && byte != 0x7F) {
            shown += c;
            continue;
        }
        char escape[8];
        std::snprintf(escape, sizeof escape, "\\x%02X", byte);
        shown += c == '\r' ? "\\r" : c == '\n' ? "\\n" : c == '\t' ? "\\t" : escape;
    }
    return shown;
}

std::string In_Capitals(std::string text) {
    for (char &c : text)
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    return text;
}

std::string Column(const std::string &text, std::size_t width) {
    return text + std::string(text.size() < width ? width - text.size() : 0, ' ') + ' ';
}

std::string Number_Column(unsigned long number, std::size_t width) {
    const std::string text = std::to_string(number);
    return std::string(text.size() < width ? width - text.size() : 0, ' ') + text + ' ';
}

} // namespace tools
