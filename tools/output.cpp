#include <tools/failure.h>
#include <tools/files.h>
#include <tools/interruption.h>
#include <tools/json.h>
#include <tools/output.h>
#include <tools/progress.h>

#include <algorithm>
#include <array>
#include <unistd.h>

namespace tools {

namespace {

constexpr std::size_t Enough_To_Write = 65536;
std::string waiting;

// What 0x80 to 0x9F stand for; the rest of the code page is Unicode's own numbers.
constexpr std::array<unsigned short, 32> Upper_Controls = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

unsigned Character_Of(unsigned char byte) {
    return byte >= 0x80 && byte < 0xA0 ? Upper_Controls[byte - 0x80] : byte;
}

int Byte_Of(unsigned character) {
    if (character < 0x80 || (character >= 0xA0 && character < 0x100)) return static_cast<int>(character);
    const auto place = std::find(Upper_Controls.begin(), Upper_Controls.end(), character);
    return place == Upper_Controls.end() ? -1 : static_cast<int>(0x80 + (place - Upper_Controls.begin()));
}

/// The character at `place`, moved behind it. Characters beyond three bytes, and what is no UTF-8 (longer
/// than it needs to be, too), give 0xFFFFFFFF.
unsigned Next_Character(const std::string &utf8, std::size_t &place) {
    const auto byte = [&](std::size_t at) {
        return at < utf8.size() ? static_cast<unsigned char>(utf8[at]) : 0u;
    };
    const auto follows = [&](std::size_t at) { return (byte(at) & 0xC0) == 0x80; };
    const unsigned first = byte(place);
    if (first < 0x80) return place += 1, first;
    const unsigned of_two = (first & 0x1F) << 6 | (byte(place + 1) & 0x3F);
    if ((first & 0xE0) == 0xC0 && follows(place + 1) && of_two >= 0x80) return place += 2, of_two;
    const unsigned of_three = (first & 0x0F) << 12 | (byte(place + 1) & 0x3F) << 6 | (byte(place + 2) & 0x3F);
    if ((first & 0xF0) == 0xE0 && follows(place + 1) && follows(place + 2) && of_three >= 0x800)
        return place += 3, of_three;
    return place += 1, 0xFFFFFFFF;
}

} // namespace

void Print(const std::string &text) {
    waiting += text;
    if (waiting.size() < Enough_To_Write) return;
    End_If_Interrupted();
    Flush_Output();
}

void Print_Line(const std::string &text) {
    waiting += text;
    Print("\n");
}

void Print_Json(const Json &value) {
    Print_Line(value.dump(2, ' ', false, Json::error_handler_t::replace)); // names of the host have any bytes
}

void Flush_Output() {
    std::string now;
    now.swap(waiting);
    if (!now.empty() && isatty(STDOUT_FILENO) == 1) Make_Room_On_Terminal(!now.ends_with('\n'));
    Replace_File("-", now);
}

std::string Utf8_Of(const std::string &text) {
    std::string utf8;
    for (const char c : text) {
        const unsigned character = Character_Of(static_cast<unsigned char>(c));
        if (character < 0x80) {
            utf8 += static_cast<char>(character);
            continue;
        }
        if (character >= 0x800) utf8 += static_cast<char>(0xE0 | character >> 12);
        utf8 +=
            static_cast<char>(character >= 0x800 ? 0x80 | (character >> 6 & 0x3F) : 0xC0 | character >> 6);
        utf8 += static_cast<char>(0x80 | (character & 0x3F));
    }
    return utf8;
}

std::string Machine_Text_Of(const std::string &utf8) {
    std::string text;
    for (std::size_t place = 0; place < utf8.size();) {
        const int byte = Byte_Of(Next_Character(utf8, place));
        if (byte < 0)
            throw Failure(Exit_Unusable, "the machine's code page does not have a character of this text");
        text += static_cast<char>(byte);
    }
    return text;
}

} // namespace tools
