// A telephone number is taken apart, and translated for where the machine is.
#include <kelmara/kelmara.h>

#include <cstdio>
#include <initializer_list>

int main() {
    const char number[] = "+1 (206) 555-1212";
    char country[255], area[255], exchange[255], line[255];
    if (Parse_Canonical_Number(number, country, area, exchange, line) != 0) return 1;
    std::printf("country %s, area %s, exchange %s, line %s\n", country, area, exchange, line);
    const bool refused = Parse_Canonical_Number("206-555-1212", country, area, exchange, line) != 0;
    std::printf("without its plus it is %s\n", refused ? "refused" : "taken");

    if (Setup_TAPI(nullptr) != 0) return 1; // once, before threads
    char dialled[256], shown[256];
    for (const char *location : {"Home", "Office", "Hotel"}) {
        Create_Dial_Number(number, location, dialled, shown);
        std::printf("%s: %s\n", location, dialled);
    }
    return 0;
}
