#include <tools/ltx/format_places.h>

#include <algorithm>
#include <string_view>

namespace tools::ltx {

namespace {

using Places = std::vector<std::string>;

/// Behind a width or a precision. An asterisk is a place.
std::size_t Behind_Number(const std::string &text, std::size_t at, Places &places) {
    if (at < text.size() && text[at] == '*') {
        places.push_back("*");
        return at + 1;
    }
    return std::min(text.find_first_not_of("0123456789", at), text.size());
}

bool Is_Known(const std::string &size, char letter) {
    if (std::string_view("diouxX").find(letter) != std::string_view::npos)
        return size.empty() || size == "l" || size == "ll" || size == "h" || size == "hh";
    if (std::string_view("csp%").find(letter) != std::string_view::npos) return size.empty();
    return std::string_view("eEfFgG").find(letter) != std::string_view::npos && (size.empty() || size == "l");
}

/// Behind the conversion that begins behind a percent sign at `at`; npos for one that is not known.
std::size_t Behind_Conversion(const std::string &text, std::size_t at, Places &places) {
    Places asterisks;
    at = std::min(text.find_first_not_of("-+#0", at), text.size());
    at = Behind_Number(text, at, asterisks);
    if (at < text.size() && text[at] == '.') at = Behind_Number(text, at + 1, asterisks);
    const std::size_t letter = std::min(text.find_first_not_of("hl", at), text.size());
    const std::string size = text.substr(at, letter - at);
    if (letter == text.size() || !Is_Known(size, text[letter])) return std::string::npos;
    places.insert(places.end(), asterisks.begin(), asterisks.end());
    if (text[letter] != '%') places.push_back("%" + size + (text[letter] == 'i' ? 'd' : text[letter]));
    return letter + 1;
}

/// Those of `from` that `others` does not have as often.
std::string Not_Among(const Places &from, Places others) {
    std::string all;
    for (const std::string &place : from) {
        const auto same = std::find(others.begin(), others.end(), place);
        if (same != others.end())
            others.erase(same);
        else
            all += " " + place;
    }
    return all;
}

std::string Listed(const Places &places) {
    return Not_Among(places, {});
}

} // namespace

std::vector<std::string> Format_Places(const std::string &text) {
    Places places;
    for (std::size_t at = text.find('%'); at != std::string::npos; at = text.find('%', at)) {
        if (++at < text.size() && text[at] == ' ') continue;
        at = Behind_Conversion(text, at, places);
        if (at == std::string::npos) break;
    }
    return places;
}

std::string Difference_In_Places(const std::string &source, const std::string &translation) {
    const Places wanted = Format_Places(source), there = Format_Places(translation);
    if (wanted == there) return {};
    const std::string missing = Not_Among(wanted, there), extra = Not_Among(there, wanted);
    if (missing.empty() && extra.empty())
        return "format places" + Listed(there) + " stand in another order than the source's" + Listed(wanted);
    std::string difference;
    if (!missing.empty()) difference = "missing format places" + missing;
    if (!extra.empty()) difference += (missing.empty() ? "" : ", ") + ("extra format places" + extra);
    return difference;
}

} // namespace tools::ltx
