// Telephone numbers: why one is not canonical, and what is dialled from where without changing where one is.

#include <reference_suite/installer/install_suite.h>

#include <tests/support/built_modules.h>
#include <tests/support/registry_verbs.h>
#include <tests/tools/command_run.h>

#include <tools/json.h>
#include <tools/number/canonical_number.h>
#include <tools/output.h>

#include <filesystem>

namespace {

using namespace tools;

constexpr char Telephony[] = "Software\\Microsoft\\Windows\\CurrentVersion\\Telephony";

class NumberCommands : public MachineTest {
  protected:
    void SetUp() override {
        MachineTest::SetUp();
        ASSERT_EQ(Install_Suite(Suite_Module("")), "");
    }
    static std::string Locations_Now() {
        const TestKey key(std::string(Telephony) + "\\Locations", HKEY_LOCAL_MACHINE);
        return key.Get("CurrentID") + std::to_string(key.Subkeys().size());
    }
};

TEST_F(NumberCommands, NumbersAreCanonicalOrTellWhyNot) {
    const struct {
        std::string text, fields, reason;
    } rows[] = {
        {"+1 (206) 555-1212", "1|206|555|1212|", ""},
        {"+44(0171)555 1212 ext 4", "44|0171|555|1212|ext 4", ""},
        {"+1 (206) 555-", "1|206|555|-|", ""},
        {"", "||||", "it does not begin with \"+\""},
        {"+", "||||", "nothing stands behind the \"+\""},
        {"+(206) 555-1212", "||||", "no country code stands right behind the \"+\""},
        {"+1", "||||", "no blank and no \"(\" ends the country code"},
        {"+1) 206 555-1212", "1)||||", "no \")\" ends the area code"},
        {"+1 () 555-1212", "1||||", "no area code stands in the brackets"},
        {"+1 (206) 5551212", "1|206|||", "no \"-\" and no blank ends the exchange"},
        {"+1 (206) 555 ", "1|206|555||", "no line number stands behind the exchange"},
        {"+1 (" + std::string(300, '2') + ") 5-6 7", "1|" + std::string(254, '2') + "|5|6|", ""},
    };
    for (const auto &[text, fields, reason] : rows) {
        const CanonicalNumber number = Parse_Number(text);
        EXPECT_EQ(number.is_canonical, reason.empty()) << text;
        EXPECT_EQ(number.reason, reason) << text;
        EXPECT_EQ(number.country + "|" + number.area + "|" + number.exchange + "|" + number.line + "|" +
                      number.rest,
                  fields);
    }
    const CommandRun run({"number", "parse", "--json", "+1 (206) 555-1212", "[206,1]"});
    EXPECT_EQ(run.exit_code, 1);
    EXPECT_EQ(Json::parse(run.output)[0]["line"], "1212");
    EXPECT_FALSE(Json::parse(run.output)[1]["canonical"]);
    EXPECT_EQ(Json::parse(run.output)[1]["number"], "[206,1]");
}

TEST_F(NumberCommands, EveryPartOfWhatIsDialledHasItsRule) {
    const std::string before = Locations_Now();
    const struct {
        std::string from, number, dialable, call, parts;
    } rows[] = {
        {"Home", "+1 (206) 555-0100", "T*70,5550100", "local", "T|*70,|555-0100|"},
        {"Home", "+44 (0171) 555 0100", "T*70,011441715550100", "international",
         "T|*70,|011|44|171|555 0100|"},
        {"Office", "+1 (206) 555-0100", "T9,12065550100", "long distance", "T|9,|1|206|555-0100|"},
        {"Hotel", "+44 (0131) 555 0100", "P0,01315550100", "long distance", "P|0,|0131|555 0100|"},
        {"Hotel", "+44 (131) 555 0100", "P0,01315550100", "long distance", "P|0,|0|131|555 0100|"},
        {"Hotel", "+45 55501000", "P0,004555501000", "international", "P|0,|00|45|55501000|"},
        {"Office", "911", "T911", "as written", "T|911|"},
    };
    for (const auto &[from, number, dialable, call, parts] : rows) {
        const CommandRun run({"number", "dial", number, "--from", from, "--json"});
        ASSERT_EQ(run.exit_code, 0) << run.errors;
        const Json json = Json::parse(run.output);
        EXPECT_EQ(json["dialable"], dialable);
        EXPECT_EQ(json["from"], from);
        EXPECT_EQ(json["call"], call);
        std::string told;
        for (const Json &step : json["steps"]) told += step["part"].get<std::string>() + "|";
        EXPECT_EQ(told, parts) << run.output;
    }
    EXPECT_EQ(Locations_Now(), before);
    const CommandRun shown({"number", "dial", "+44 (0171) 555 0100", "--explain"});
    EXPECT_EQ(shown.output, "from   Home\n"
                            "dials  T*70,011441715550100\n"
                            "shows  *70, 011 44 171 555 0100\n"
                            "call   international\n"
                            "       T         tones, as the location dials\n"
                            "       *70,      the location's code that turns call waiting off\n"
                            "       011       the country's way out to other countries\n"
                            "       44        the code of the number's country\n"
                            "       171       the area code, without its \"0\"\n"
                            "       555 0100  the number as written\n")
        << shown.errors;
}

TEST_F(NumberCommands, WhatCannotBeDialledSaysWhy) {
    const auto expect = [](std::vector<std::string> arguments, const std::string &error) {
        arguments.insert(arguments.begin(), {"number", "dial"});
        const CommandRun run(arguments);
        EXPECT_EQ(run.exit_code, 1);
        EXPECT_EQ(run.errors, "kelmara: " + error + "\n");
        EXPECT_EQ(run.output, "");
    };
    expect({"+1 (206"}, "+1 (206: this is no number that can be dialled");
    const std::string longest = "+1 (206) " + std::string(200, '5');
    expect({longest}, longest + ": what is dialled is longer than the library takes");
    expect({"911", "--from", "office"}, "office: no such dialling location; there are Home, Office, Hotel");
    TestKey(std::string(Telephony) + "\\Locations", HKEY_LOCAL_MACHINE).Set("CurrentID", "7777", REG_DWORD);
    expect({"911"}, "no dialling location is the current one; there are Home, Office, Hotel");
    EXPECT_EQ(CommandRun({"number", "dial", "911", "--from", "Home"}).exit_code, 0);
    RegDeleteKeyA(HKEY_LOCAL_MACHINE, (std::string(Telephony) + "\\Lines\\Line0").c_str());
    RegDeleteKeyA(HKEY_LOCAL_MACHINE, (std::string(Telephony) + "\\Lines\\Line1").c_str());
    expect({"911", "--from", "Home"}, "no line device of this machine has a name: nothing can be dialled");
    const TestMachine bare;
    expect({"911"}, "there is no telephony service on this machine (TAPI32.DLL)");
}

} // namespace
