#include <reference_suite/services/telephony/translation.h>

#include <reference_suite/services/telephony/address.h>
#include <reference_suite/services/telephony/countries.h>

namespace {

constexpr std::string_view Dialable = "0123456789ABCD*#!,W@$?TP";
constexpr std::string_view In_Dialable_Addresses = "0123456789ABCDabcd*#!,Ww@$?TtPp .-()+";

std::string Only_Dialable(std::string_view text) {
    std::string kept;
    for (char c : text) {
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
        if (Dialable.find(c) != std::string_view::npos) kept += c;
    }
    return kept;
}

char Tone_Or_Pulse(const Location &location) {
    return location.flags & Location_Dials_Tones ? 'T' : 'P';
}

std::string_view Without_Trunk(std::string_view area, const Country *country) {
    const std::string_view trunk = country ? country->trunk : "";
    if (!trunk.empty() && area.starts_with(trunk)) area.remove_prefix(trunk.size());
    return area;
}

// The road that a call takes, by which the rule and the prefix are chosen.
DWORD Road_Of_Call(const CanonicalAddress &address, const Location &location, const Country &here,
                   DWORD options) {
    if (address.country != here.code) return LINETRANSLATERESULT_INTERNATIONAL;
    if (options & LINETRANSLATEOPTION_FORCELOCAL) return LINETRANSLATERESULT_LOCAL;
    const std::string_view area = Without_Trunk(address.area, &here);
    const bool same =
        address.area.empty() ||
        (!area.empty() && Only_Dialable(area) == Only_Dialable(Without_Trunk(location.area_code, &here)));
    return same && !(options & LINETRANSLATEOPTION_FORCELD) ? LINETRANSLATERESULT_LOCAL
                                                            : LINETRANSLATERESULT_LONGDISTANCE;
}

const char *Rule_For(DWORD road, const Country &country) {
    if (road == LINETRANSLATERESULT_LOCAL) return country.same_area;
    return road == LINETRANSLATERESULT_LONGDISTANCE ? country.long_distance : country.international;
}

std::string Apply_Rule(std::string_view rule, const CanonicalAddress &address, std::string_view area) {
    std::string text;
    for (const char step : rule) {
        if (step == 'E')
            text += std::to_string(address.country);
        else if (step == 'F')
            text += area;
        else if (step == 'G')
            text += address.number;
        else if (step != ' ' || (!text.empty() && !text.ends_with(' '))) // an area that is not there has none
            text += step;
    }
    return text;
}

// Each part as it is dialled and, with a blank in front of the next, as it is shown.
void Add(Translation &translation, std::string_view part) {
    if (part.empty()) return;
    translation.dialable += Only_Dialable(part);
    if (!translation.displayable.empty()) translation.displayable += ' ';
    translation.displayable += part;
}

LONG Dial_As_It_Is(const Location &location, std::string_view address, Translation &translation) {
    if (address.empty() || address.find_first_not_of(In_Dialable_Addresses) != std::string_view::npos)
        return LINEERR_INVALADDRESS;
    const bool chosen = std::string_view("TtPp").find(address.front()) != std::string_view::npos;
    translation.dialable = chosen ? static_cast<char>(address.front() & ~0x20) : Tone_Or_Pulse(location);
    translation.dialable += Only_Dialable(address.substr(chosen));
    translation.displayable = address;
    translation.results = LINETRANSLATERESULT_NOTRANSLATION;
    return 0;
}

} // namespace

LONG Translate_Address(const Location &location, std::string_view address, DWORD options,
                       Translation &translation) {
    const Country *const here = Country_By_Id(location.country);
    translation = {};
    translation.current_country = translation.destination_country = here ? here->code : 0;
    const std::string_view dialled = Dialled_Part(address);
    if (!dialled.starts_with('+')) return Dial_As_It_Is(location, dialled, translation);
    if (!here) return LINEERR_INVALCOUNTRYCODE;
    const std::optional<CanonicalAddress> to = Parse_Address(address);
    if (!to) return LINEERR_INVALADDRESS;

    const DWORD road = Road_Of_Call(*to, location, *here, options);
    const std::string_view area = Without_Trunk(to->area, Country_By_Code(to->country));
    translation.destination_country = to->country;
    translation.results = LINETRANSLATERESULT_CANONICAL | road;
    translation.dialable = Tone_Or_Pulse(location);
    if (options & LINETRANSLATEOPTION_CANCELCALLWAITING) Add(translation, location.disable_call_waiting);
    Add(translation,
        road == LINETRANSLATERESULT_LOCAL ? location.outside_access : location.long_distance_access);
    Add(translation, Apply_Rule(Rule_For(road, *here), *to, area));
    return 0;
}
