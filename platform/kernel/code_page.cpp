#include <platform/kernel/code_page.h>

#include <algorithm>

namespace {

constexpr unsigned char Replacement = '?';

// The bytes 0x80 to 0x9F; all others have the number of their character.
constexpr unsigned char First_Special = 0x80;
constexpr WCHAR Special[32] = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178,
};

bool Is_Special(unsigned value) {
    return value >= First_Special && value < First_Special + std::size(Special);
}

void Append_Utf8(std::string &text, WCHAR unit) {
    if (unit < 0x80) {
        text += static_cast<char>(unit);
    } else if (unit < 0x800) {
        text += static_cast<char>(0xC0 | unit >> 6);
        text += static_cast<char>(0x80 | (unit & 0x3F));
    } else {
        text += static_cast<char>(0xE0 | unit >> 12);
        text += static_cast<char>(0x80 | (unit >> 6 & 0x3F));
        text += static_cast<char>(0x80 | (unit & 0x3F));
    }
}

struct Character {
    unsigned code;      // beyond 0xFFFF for what is no UTF-8
    std::size_t length; // bytes that it takes
};

constexpr Character No_Utf8 = {0xFFFFFFFF, 1};

std::size_t Length_By_Lead(unsigned char lead) {
    if (lead < 0x80) return 1;
    if (lead >= 0xC2 && lead < 0xE0) return 2;
    if (lead >= 0xE0 && lead < 0xF0) return 3;
    return lead >= 0xF0 && lead < 0xF5 ? 4 : 0;
}

Character First_Character(std::string_view text) {
    constexpr unsigned Lowest[] = {0, 0, 0x80, 0x800, 0x10000};
    const auto lead = static_cast<unsigned char>(text[0]);
    const std::size_t length = Length_By_Lead(lead);
    if (length == 0 || length > text.size()) return No_Utf8;
    unsigned code = length == 1 ? lead : lead & (0x7F >> length);
    for (std::size_t i = 1; i < length; ++i) {
        const auto next = static_cast<unsigned char>(text[i]);
        if ((next & 0xC0) != 0x80) return No_Utf8;
        code = code << 6 | (next & 0x3F);
    }
    const bool surrogate = code >= 0xD800 && code < 0xE000;
    return code < Lowest[length] || surrogate ? No_Utf8 : Character{code, length};
}

} // namespace

WCHAR Wide_Of_Ansi(unsigned char byte) {
    return Is_Special(byte) ? Special[byte - First_Special] : byte;
}

unsigned char Ansi_Of_Wide(WCHAR unit, bool *replaced) {
    if (unit < 0x100 && !Is_Special(unit)) return static_cast<unsigned char>(unit);
    if (const WCHAR *found = std::find(std::begin(Special), std::end(Special), unit);
        found != std::end(Special)) {
        return static_cast<unsigned char>(First_Special + (found - Special));
    }
    if (replaced) *replaced = true;
    return Replacement;
}

std::string Utf8_Of_Ansi(std::string_view text) {
    std::string utf8;
    for (const char byte : text) Append_Utf8(utf8, Wide_Of_Ansi(static_cast<unsigned char>(byte)));
    return utf8;
}

std::string Ansi_Of_Utf8(std::string_view text) {
    std::string ansi;
    while (!text.empty()) {
        const Character character = First_Character(text);
        ansi += static_cast<char>(character.code > 0xFFFF ? Replacement
                                                          : Ansi_Of_Wide(static_cast<WCHAR>(character.code)));
        text.remove_prefix(character.length);
    }
    return ansi;
}

unsigned char Upper_Ansi(unsigned char byte) {
    if ((byte >= 'a' && byte <= 'z') || (byte >= 0xE0 && byte < 0xFF && byte != 0xF7)) {
        return static_cast<unsigned char>(byte - 0x20);
    }
    if (byte == 0x9A || byte == 0x9C || byte == 0x9E) return static_cast<unsigned char>(byte - 0x10);
    return byte == 0xFF ? 0x9F : byte;
}

unsigned char Lower_Ansi(unsigned char byte) {
    if ((byte >= 'A' && byte <= 'Z') || (byte >= 0xC0 && byte < 0xDF && byte != 0xD7)) {
        return static_cast<unsigned char>(byte + 0x20);
    }
    if (byte == 0x8A || byte == 0x8C || byte == 0x8E) return static_cast<unsigned char>(byte + 0x10);
    return byte == 0x9F ? 0xFF : byte;
}

bool Equal_Without_Case(std::string_view left, std::string_view right) {
    return std::equal(left.begin(), left.end(), right.begin(), right.end(), [](char a, char b) {
        return Upper_Ansi(static_cast<unsigned char>(a)) == Upper_Ansi(static_cast<unsigned char>(b));
    });
}
