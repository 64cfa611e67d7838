#include <reference_suite/services/telephony/address.h>

#include <algorithm>

namespace {

constexpr std::string_view Digits = "0123456789";
constexpr std::string_view In_Numbers = "0123456789 .-";
constexpr std::size_t Most_Digits_Of_Country = 4;

std::string_view Trimmed(std::string_view text) {
    const std::size_t start = text.find_first_not_of(' ');
    if (start == std::string_view::npos) return {};
    return text.substr(start, text.find_last_not_of(' ') - start + 1);
}

bool Is_Number(std::string_view text) {
    return text.find_first_of(Digits) != std::string_view::npos &&
           text.find_first_not_of(In_Numbers) == std::string_view::npos;
}

// Takes the country code off; 0 when there is none.
DWORD Take_Country(std::string_view &rest) {
    const std::size_t length = std::min(rest.find_first_not_of(Digits), rest.size());
    if (length > Most_Digits_Of_Country) return 0;
    DWORD code = 0;
    for (const char digit : rest.substr(0, length)) code = code * 10 + static_cast<DWORD>(digit - '0');
    rest.remove_prefix(length);
    return code;
}

// Takes an area in brackets off. False for brackets that do not hold one.
bool Take_Area(std::string_view &rest, std::string_view &area) {
    if (!rest.starts_with('(')) return true;
    const std::size_t end = rest.find(')');
    if (end == std::string_view::npos) return false;
    area = Trimmed(rest.substr(1, end - 1));
    rest = Trimmed(rest.substr(end + 1));
    return Is_Number(area);
}

} // namespace

std::string_view Dialled_Part(std::string_view address) {
    return Trimmed(address.substr(0, address.find_first_of("|^\r\n")));
}

std::optional<CanonicalAddress> Parse_Address(std::string_view address) {
    std::string_view rest = Dialled_Part(address);
    if (!rest.starts_with('+')) return std::nullopt;
    rest.remove_prefix(1);
    CanonicalAddress parts{};
    parts.country = Take_Country(rest);
    rest = Trimmed(rest);
    if (parts.country == 0 || !Take_Area(rest, parts.area) || !Is_Number(rest)) return std::nullopt;
    parts.number = rest;
    return parts;
}
