#include <tests/faults/operations/fake_suite.h>
#include <tests/faults/operations/operation.h>
#include <tests/support/plain_dialog.h>
#include <tests/support/registry_verbs.h>

#include <kelmara/connectivity/connection_kind.h>
#include <kelmara/connectivity/connection_utility.h>
#include <kelmara/connectivity/dial_location.h>
#include <kelmara/connectivity/phone_numbers.h>
#include <kelmara/connectivity/tapi.h>

namespace {

#define LOCATIONS "Software\\Microsoft\\Windows\\CurrentVersion\\Telephony\\Locations"

/// Telephony is set up, and a place for texts.
struct Service : FakeSuite {
    Service() { Setup_TAPI(nullptr); }
    std::string State() const { return first + std::string("|") + second + "|"; }
    char first[256] = "before", second[256] = "before";
};

/// What a location needs of the registry stays.
struct Location : Service {
    Location() {
        const TestKey current(LOCATIONS, HKEY_LOCAL_MACHINE);
        const DWORD one = 1;
        if (current.Get("CurrentID") != Missing) return;
        const std::string bytes(reinterpret_cast<const char *>(&one), sizeof one);
        current.Set("CurrentID", bytes, REG_DWORD);
        const TestKey only(LOCATIONS "\\Location1", HKEY_LOCAL_MACHINE);
        only.Set("ID", bytes, REG_DWORD);
        only.Set("Name", "Home");
        TestKey("SOFTWARE\\Dunmerit Software\\KelMara\\Country List\\Home", HKEY_LOCAL_MACHINE)
            .Set("CountryCode", bytes, REG_DWORD);
    }
    std::string State() const { return Service::State() + std::to_string(component.references); }
    CDialLocHelper location;
};

struct Selected : Location {
    Selected() { location.Select_Dial_Location("Home", false); }
};

struct Utility : Service {
    std::string State() const {
        return component.stored + std::string("|") + std::to_string(component.references);
    }
    CConnectionUtility utility;
    ConnectParams params = {};
};

struct Opened : Utility {
    Opened() { utility.Set_Config("Home"); }
    PlainDialog window;
};

struct Static : Utility {
    Static() { component.is_dialup = false; }
    std::string State() const { return Utility::State() + std::to_string(component.connected); }
};

constexpr unsigned long Nothing_Found = 0xFFFFFFFF;
const std::vector<Outcome> No_Location = {Gives(static_cast<long>(Nothing_Found))};

} // namespace

Operations Connectivity_Operations() {
    return {
        Row<Service>("Setup_TAPI", 0, {}, [](auto &) { return Setup_TAPI(nullptr); }),
        Row<Service>("Set_Current_Dial_Location", 0, No_Location,
                     [](auto &) { return Set_Current_Dial_Location("Home"); }),
        Row<Service>("Get_Current_Device_ID", 0, No_Location, [](auto &) { return Get_Current_Device_ID(); }),
        // "becomes empty when the translation fails"
        Row<Service>("Create_Dial_Number", '5', {Nothing}, Or(Before, {""}),
                     [](auto &of) {
                         Create_Dial_Number("+1 (206) 555-1212", "Home", of.first, of.second);
                         return of.first[0];
                     }),
        Row<Service>("Modem_Is_DSL", 1, {Nothing},
                     [](auto &of) { return Modem_Is_DSL("Adapter", of.first); }),
        Row<Location>("Get_Current_Dial_Location", 1, {Nothing},
                      [](auto &of) { return Get_Current_Dial_Location(of.first, 255); }),
        Row<Location>("Select_Dial_Location", 0, {No_Memory},
                      [](auto &of) { return of.location.Select_Dial_Location("Home", false); }),
        Row<Selected>("TDD_Available_For_Selected_Country", 1, {Nothing},
                      [](auto &of) { return of.location.TDD_Available_For_Selected_Country(); }),
        // "each is empty until it is known"
        Row<Selected>("Get_Number_Information", 0, {No_Memory}, Or(Before, {""}),
                      [](auto &of) {
                          char text[8];
                          return of.location.Get_Number_Information(&of.component, of.first, of.second, text);
                      }),
        Row<Utility>("Set_Config", 0, {No_Memory}, [](auto &of) { return of.utility.Set_Config("Home"); }),
        // "everything of the former one is let go first"
        Row<Opened>("Set_Config to another", 0, {No_Memory}, Or(Before, {"0"}),
                    [](auto &of) { return of.utility.Set_Config("Office"); }),
        Row<Opened>("Modem_Is_DSL of one", 0, {}, [](auto &of) { return of.utility.Modem_Is_DSL(); }),
        Row<Opened>("Set_Default_Mobile_Location", 0, {},
                    [](auto &of) { return of.utility.Set_Default_Mobile_Location("Car"); }),
        Row<Opened>(
            "Get_Formated_Dialed_Number", '5', {Nothing},
            [](auto &of) { return of.utility.Get_Formated_Dialed_Number(true, of.first), *of.first; }),
        Row<Opened>("Verify_Phone_Number", 1, {Nothing},
                    [](auto &of) { return of.utility.Verify_Phone_Number(true); }),
        Row<Opened>("Verify_Location", 1, {Nothing}, [](auto &of) { return of.utility.Verify_Location(); }),
        Row<Opened>("Initialize_Connect_Params", 1, {Nothing},
                    [](auto &of) {
                        of.utility.Initialize_Connect_Params(&of.params);
                        return *of.params.first_dial_string && *of.params.second_dial_string;
                    }),
        // "Where ... the machine no thread, the monitor stays stopped"
        Row<Opened>("Monitor_Connections", 0, {},
                    [](auto &of) {
                        of.utility.Monitor_Connections(of.window);
                        of.utility.Stop_Connection_Monitor();
                    }),
        Row<Opened>("Monitor_Disconnections", 0, {},
                    [](auto &of) {
                        of.utility.Monitor_Disconnections(of.window);
                        of.utility.Stop_Disconnection_Monitor();
                    }),
        Row<Static>("Verify_Static_Connection", 0, {No_Memory, Gives(E_UNEXPECTED)}, Either,
                    [](auto &) { return Verify_Static_Connection(); }),
    };
}
