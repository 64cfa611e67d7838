#include <reference_suite/programs/road/the_call.h>

#include <reference_suite/components/connection/connection_fate.h>
#include <reference_suite/programs/road/call_window.h>
#include <reference_suite/programs/road/dial_strings.h>
#include <reference_suite/programs/road/narrator.h>

#include <kelmara/connectivity/owned_interface.h>
#include <kelmara/kelmara.h>

#include <cstring>
#include <string>

namespace {

constexpr long Dial_Time = 700, Lost_After = 1000; // milliseconds

std::string Quoted(const std::string &text) {
    return "\"" + text + "\"";
}

// String tables have one byte for a character.
std::string For_The_Terminal(const std::string &text) {
    std::string utf8;
    for (const char character : text) {
        const auto code = static_cast<unsigned char>(character);
        if (code >= 0x80) utf8 += static_cast<char>(0xC0 | code >> 6);
        utf8 += static_cast<char>(code < 0x80 ? code : 0x80 | (code & 0x3F));
    }
    return utf8;
}

// Has the configuration dial from there from now on.
void Store_Location(const RoadOptions &options) {
    OwnedInterface<IComponentStorageInterface> storage;
    OwnedInterface<IComponentValuesInterface> values;
    ComponentLocator locator = {};
    locator.kind = Component_Configuration;
    options.configuration.copy(locator.name, sizeof locator.name - 1);
    std::string location = options.location;
    Require_Success(storage.Create(CLSID_ConfigurationComponent, IID_IComponentStorageInterface),
                    "there is a configuration component");
    Require_Success(storage->Open_Component(&locator, 0), "the configuration can be changed");
    Require_Success(values.Query(storage.Get(), IID_IComponentValuesInterface),
                    "the configuration has options");
    Require_Success(storage->Set_Edit_Lock(1, 0), "nobody else changes the configuration");
    Require_Success(
        values->Set_Value(Option_Location.code, location.data(), static_cast<long>(location.size()) + 1),
        "the location can be set");
    Require_Success(storage->Commit_Component(), "the location can be stored");
    Require_Success(storage->Set_Edit_Lock(0, 0), "the edit lock can be given back");
    Tell("The configuration %s dials from %s from now on.", Quoted(options.configuration).c_str(),
         location.c_str());
}

void Write_Fate(long dial_time, long lost_after) {
    CRegMaster key;
    Require(key.CreateKey(HKEY_LOCAL_MACHINE, Fate_Key) && key.SetRegEntry("Dial Time", dial_time),
            "the connection's fate can be written");
    if (lost_after != 0)
        Require(key.SetRegEntry("Lost After", lost_after), "the connection's end can be written");
    else
        key.DeleteRegEntry("Lost After");
}

class Call {
  public:
    explicit Call(const RoadOptions &options);

    void Tell_Of_The_Configuration();
    void Fill_In();
    void Watch();
    void Dial();
    void Lose();
    void Dial_Again_And_Close();

  private:
    std::string Component_Status();
    std::string Program_Status(const char *identifier, const std::string &value);
    void Tell_Status(const char *identifier, const std::string &value);
    void Hear_That_It_Is_Up();
    void Hear_That_It_Was_Lost();

    const std::string name_;
    CWorldBeat strings_;
    CallWindow window_;
    CConnectionUtility utility_;
    ConnectParams params_ = {};
};

Call::Call(const RoadOptions &options) : name_(options.configuration) {
    Require_Success(strings_.Load_Localization(options.string_table.c_str(), false),
                    "the status texts can be loaded");
    Require_Success(utility_.Set_Config(name_.c_str()),
                    ("the configuration " + Quoted(name_) + " can be opened").c_str());
}

void Call::Tell_Of_The_Configuration() {
    char account[256], first[256], second[256], phone_book[256], location[256], dialled[256], active[256];
    bool flag = true;
    utility_.Get_Account_ID(account);
    utility_.Get_Dialup_Numbers(first, second);
    utility_.Get_Phonebook_Info(phone_book, &flag);
    utility_.Get_Default_Location(location);
    Require(utility_.Can_Connect(), "nothing is connected yet");
    Require(utility_.Is_Connected(active) == utility_.Is_Lan_Config(),
            "a configuration is connected from the start when it is not dialled, and only then");
    Require(utility_.Verify_Location(), "the suite server knows the location");
    if (utility_.Is_Lan_Config()) {
        Tell("%s is a local network, at %s.", Quoted(name_).c_str(), location);
        return;
    }
    Require(utility_.Verify_Phone_Number(true) && utility_.Verify_Phone_Number(false),
            "the phone book knows the numbers");
    utility_.Get_Formated_Dialed_Number(true, dialled);
    Tell("%s: account %s, %s%s%s,", Quoted(name_).c_str(), account, first, *second ? " or " : "", second);
    Tell("known to the phone book %s; from %s the first is shown as %s.", Quoted(phone_book).c_str(),
         location, dialled);
}

void Call::Fill_In() {
    utility_.Initialize_Connect_Params(&params_);
    if (utility_.Is_Lan_Config()) { // nothing is filled in for it
        name_.copy(params_.configuration_name, sizeof params_.configuration_name - 1);
        Tell("Nothing is dialled for it: the record to connect with has its name alone.");
        return;
    }
    char number[256], location[256], expected[256] = "1.1.1.1";
    utility_.Get_Dialup_Numbers(number, nullptr);
    utility_.Get_Default_Location(location);
    if (utility_.Modem_Is_DSL())
        Tell("Its device dials no number, though.");
    else
        Create_Dial_Number(number, location, expected, nullptr);
    Require(name_ == params_.configuration_name && *params_.account_id && *params_.password,
            "the record has name, account and password");
    Require(*expected && std::strcmp(params_.first_dial_string, expected) == 0,
            "the record has what is dialled from the location");
    Tell("The record to connect with has %s%s%s.", params_.first_dial_string,
         *params_.second_dial_string ? " and " : "", params_.second_dial_string);
}

void Call::Watch() {
    utility_.Monitor_Connections(window_);
    utility_.Monitor_Disconnections(window_);
    Tell("A window has monitors of connections that come up and that are lost.");
}

std::string Call::Component_Status() {
    char text[256] = "";
    utility_.Get_Connected_Status_String(text);
    return text;
}

std::string Call::Program_Status(const char *identifier, const std::string &value) {
    char text[256];
    Require_Success(strings_.Get_String(identifier, text, sizeof text), "there is a status text");
    std::string filled = For_The_Terminal(text);
    Require(!filled.empty(), "the status text is in the language's table");
    if (const auto place = filled.find("%s"); place != std::string::npos) filled.replace(place, 2, value);
    return filled;
}

void Call::Tell_Status(const char *identifier, const std::string &value) {
    Tell("  %s; the component says: %s", Quoted(Program_Status(identifier, value)).c_str(),
         Component_Status().c_str());
}

void Call::Dial() {
    Write_Fate(Dial_Time, Lost_After);
    Require_Success(utility_.Connect(&params_, false, false), "the connection can be begun");
    if (utility_.Is_Lan_Config()) {
        Tell("Connect has it up at once:");
    } else {
        const std::string number = params_.first_dial_string;
        Require(Component_Status() == "Dialling " + number, "the number is being dialled");
        Tell("Connect begins to dial:");
        Tell_Status("KMSTR_STATUS_DIALING", number);
    }
    Hear_That_It_Is_Up();
    Tell_Status("KMSTR_STATUS_CONNECTED", name_);
}

void Call::Hear_That_It_Is_Up() {
    Require(window_.Hear_Of_A_Connection(), "the window is told that the connection is up");
    char active[256] = "";
    Require(utility_.Is_Connected(active) && name_ == active, "this configuration is connected");
    Require(!utility_.Can_Connect(), "there is no second connection beside it");
    Require(Component_Status().starts_with("Connected to " + name_ + " for "), "the status is connected");
    Tell("Message %X arrives with 1:", Connection_Message);
}

void Call::Lose() {
    Tell("Its fate is to be lost %ld milliseconds after.", Lost_After);
    Hear_That_It_Was_Lost();
    Tell_Status("KMSTR_STATUS_IDLE", "");
}

void Call::Hear_That_It_Was_Lost() {
    Require(!window_.Hear_Of_A_Connection(), "the window is told that the connection was lost");
    Require(utility_.Can_Connect(), "nothing is connected any more");
    Require(Component_Status() == "Not connected", "the status is not connected");
    Tell("Message %X arrives with 0:", Connection_Message);
}

void Call::Dial_Again_And_Close() {
    Write_Fate(0, 0);
    Tell("It connects once more, now for good,");
    Require_Success(utility_.Connect(&params_, false, true), "it can be connected again");
    Hear_That_It_Is_Up();
    Tell_Status("KMSTR_STATUS_CONNECTED", name_);
    Tell("and is closed by the program.");
    utility_.Close();
    Hear_That_It_Was_Lost();
    Tell_Status("KMSTR_STATUS_IDLE", "");
    utility_.Stop_Connection_Monitor();
    utility_.Stop_Disconnection_Monitor();
}

} // namespace

void Make_A_Call(const RoadOptions &options) {
    Begin_Chapter("The call");
    Dial_From_Everywhere();
    if (!options.location.empty()) Store_Location(options);
    Call call(options);
    call.Tell_Of_The_Configuration();
    call.Fill_In();
    call.Watch();
    call.Dial();
    call.Lose();
    call.Dial_Again_And_Close();
}
