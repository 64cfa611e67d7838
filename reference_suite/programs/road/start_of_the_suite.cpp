#include <reference_suite/programs/road/start_of_the_suite.h>

#include <reference_suite/components/component_store.h>
#include <reference_suite/components/server/suite_server.h>
#include <reference_suite/programs/road/narrator.h>

#include <kelmara/connectivity/owned_interface.h>
#include <kelmara/kelmara.h>

#include <platform/kernel.h>

#include <cstdlib>
#include <string>

namespace {

constexpr DWORD Patience = 10000; // milliseconds
constexpr char Area_Code[] = "206", Exchange[] = "555";

using Server = OwnedInterface<IServerSimpleAccessInterface>;

bool Reach(Server &server) {
    return server.Take([](void **out) {
        return CoCreateInstance(CLSID_SuiteServer, nullptr, CLSCTX_LOCAL_SERVER,
                                IID_IServerSimpleAccessInterface, out);
    }) == 0;
}

// True when none runs any more; its mutex comes free with its end.
bool End_Server() {
    if (Server server; Reach(server)) server->Write_Setting(Setting_End_Server, nullptr, 0);
    const HANDLE mutex = CreateMutexA(nullptr, FALSE, Server_Mutex);
    const DWORD taken = WaitForSingleObject(mutex, Patience);
    CloseHandle(mutex);
    return taken == WAIT_OBJECT_0 || taken == WAIT_ABANDONED;
}

void Bring_The_Server_Up() {
    Server server;
    Require(!Reach(server), "no server runs on a new machine");
    setenv(Server_Owner_Variable, std::to_string(GetCurrentProcessId()).c_str(), 1); // also if this is killed
    const long verified = Verify_Kelmara();
    std::atexit([] { End_Server(); }); // also where the road ends before its end
    Require_Success(verified, "the library can start the server");
    Require(Reach(server), "the server can be reached");
    char current[256] = "";
    long size = sizeof current;
    Require_Success(server->Read_Setting(Setting_Current_Configuration.code, current, &size),
                    "the server tells its settings");
    Tell("There is room on drive C:, and no server runs. The library starts it by the registry's");
    Tell("command line; it answers that the current configuration is \"%s\".", current);
}

void Look_At_Names() {
    for (const char *const name : {"Home", "Caf\xE9 at the corner"})
        Require(Is_Valid_Component_Name(name), "a component may have a usual name");
    for (const char *const name : {"Home\\Office", "What?", "a.b", "\"Home\""})
        Require(!Is_Valid_Component_Name(name),
                "a component may not have a path's or a pattern's characters");
    Tell("\"Home\" may be a component's name; \"Home\\Office\", \"What?\" and \"a.b\" may not.");
}

// What the location's key says of numbers with ten digits.
std::string Ten_Digit_Answers(const std::string &location) {
    CRegMaster key;
    Require(key.OpenKey(HKEY_LOCAL_MACHINE, Component_Key(Component_Location, location).c_str()),
            "the location has a key");
    char lines[256] = "";
    key.GetRegEntry(Ten_Digit_Value, lines); // where there is none, nobody has answered yet
    return *lines ? lines : "none";
}

void Change_Dialling(const std::string &name) {
    CDialLocHelper location;
    Require_Success(location.Select_Dial_Location(name.c_str(), false),
                    ("the dialling location \"" + name + "\" can be opened").c_str());
    char area_code[256] = "";
    Require_Success(location.Get_Selected_Areacode(area_code, 255), "the location has an area code");
    Tell("The location \"%s\" has the area code %s, in a country %s ten-digit dialling.", name.c_str(),
         area_code, location.TDD_Available_For_Selected_Country() ? "with" : "without");

    const std::string before = Ten_Digit_Answers(name);
    Require_Success(location.Save_TDD_Undo_State(), "the options can be kept");
    Require_Success(location.Set_TDD_Options(true, false, Area_Code, Exchange), "the options can be changed");
    const std::string changed = Ten_Digit_Answers(name);
    Require(changed == "206,555=10", "the change is stored at once");
    Require_Success(location.Undo_TDD_Options_Change(), "the change can be undone");
    Require(Ten_Digit_Answers(name) == before, "the options are as they were");
    Tell("Its ten-digit options, %s, become %s and, undone, %s again.", before.c_str(), changed.c_str(),
         before.c_str());
}

} // namespace

void Start_The_Suite(const RoadOptions &options) {
    Begin_Chapter("Starting the suite");
    Require_Success(CoInitialize(nullptr), "COM can be initialised");
    Init_Kelmara();
    Bring_The_Server_Up();
    Look_At_Names();
    Change_Dialling(options.location.empty() ? "Home" : options.location);
}

void End_The_Suite() {
    Begin_Chapter("The end of the suite");
    Require(End_Server(), "the server ends when it is told to");
    Server server;
    Require(!Reach(server), "the server is not there any more");
    CoUninitialize();
    Tell("The server was told to end, by its setting, and has ended.");
}
