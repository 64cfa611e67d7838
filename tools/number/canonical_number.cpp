#include <tools/number/canonical_number.h>

#include <kelmara/connectivity/phone_numbers.h>

#include <algorithm>

namespace tools {

namespace {

constexpr std::size_t Longest_Field = 254;
constexpr char Ends_Country[] = " \t(";

/// Behind the country code, of however many characters.
std::size_t Behind_Country(const std::string &text) {
    return std::min(text.find_first_of(Ends_Country, 1), text.size());
}

std::string Why_Not(const CanonicalNumber &number, const std::string &text) {
    if (!text.starts_with('+')) return "it does not begin with \"+\"";
    if (number.country.empty()) {
        if (text.size() == 1) return "nothing stands behind the \"+\"";
        return Behind_Country(text) == 1 ? "no country code stands right behind the \"+\""
                                         : "no blank and no \"(\" ends the country code";
    }
    if (number.area.empty())
        return text.find(')', Behind_Country(text)) == text.npos ? "no \")\" ends the area code"
                                                                 : "no area code stands in the brackets";
    if (number.exchange.empty()) return "no \"-\" and no blank ends the exchange";
    return "no line number stands behind the exchange";
}

std::string Rest_Of(const CanonicalNumber &number, const std::string &text) {
    std::size_t place = 1;
    for (const std::string *field : {&number.country, &number.area, &number.exchange, &number.line}) {
        if (field->size() >= Longest_Field) return ""; // it may have been cut: there is no telling where
        place = text.find(*field, place) + field->size();
    }
    const std::size_t start = text.find_first_not_of(" \t", place);
    return start == text.npos ? "" : text.substr(start);
}

} // namespace

CanonicalNumber Parse_Number(const std::string &text) {
    char country[256] = {}, area[256] = {}, exchange[256] = {}, line[256] = {};
    const long result = Parse_Canonical_Number(text.c_str(), country, area, exchange, line);
    CanonicalNumber number{result == 0, country, area, exchange, line, "", ""};
    if (number.is_canonical)
        number.rest = Rest_Of(number, text);
    else
        number.reason = Why_Not(number, text);
    return number;
}

} // namespace tools
