#include <reference_suite/programs/road/dial_strings.h>

#include <reference_suite/programs/road/narrator.h>

#include <kelmara/kelmara.h>

#include <platform/kernel.h>

#include <string>

namespace {

constexpr char Number[] = "+1 (206) 555-0100";

constexpr struct {
    const char *location, *dialable, *displayable;
} From[] = {
    {"Home", "T*70,5550100", "*70, 555-0100"},
    {"Office", "T9,12065550100", "9, 1 (206) 555-0100"},
    {"Hotel", "P0,0012065550100", "0, 00 1 206 555-0100"},
};

void Take_Apart() {
    char country[255], area[255], exchange[255], line[255];
    Require_Success(Parse_Canonical_Number(Number, country, area, exchange, line),
                    "a canonical number can be taken apart");
    const std::string fields = std::string(country) + "|" + area + "|" + exchange + "|" + line;
    Require(fields == "1|206|555|0100", "a number's fields are its own");
    Tell("%s has the country %s, the area %s, the exchange %s and the line %s.", Number, country, area,
         exchange, line);
}

} // namespace

void Dial_From_Everywhere() {
    Require_Success(static_cast<long>(Setup_TAPI(GetModuleHandleA(nullptr))),
                    "the telephony service can be set up");
    Require_Success(static_cast<long>(Get_Current_Device_ID()), "there is a line device");
    Take_Apart();
    for (const auto &[location, dialable, displayable] : From) {
        char dialled[256], displayed[256], current[256];
        Create_Dial_Number(Number, location, dialled, displayed);
        Require(Get_Current_Dial_Location(current, 255) && std::string(current) == location,
                "the location that was dialled from is the current one");
        Require(std::string(dialled) == dialable && std::string(displayed) == displayable,
                "a number is dialled as the location wants it");
        Tell("  from %-8s %-18s shown as %s", location, dialled, displayed);
    }
}
