#include <kelmara/connectivity/connection_kind.h>

#include <tests/connectivity/components_test.h>

#include <platform/machine.h>

namespace {

class StaticConnection : public ComponentsTest {
  protected:
    void SetUp() override {
        ComponentsTest::SetUp();
        fakes->dialup = false;
        Set_Option("scfg", "Cable"), Set_Option("CMTH", "lan");
    }
};

TEST_F(StaticConnection, IsMadeForAConfigurationThatNeedsNoDialling) {
    const std::string read = "Create server, Read scfg 255, Create configuration, Open_By_Name Cable, "
                             "Read CMTH 255, Create connection, Use_Method lan, Is_Dialup";
    const std::string end = ", end of connection, end of configuration, end of server";
    for (const char *failing : {"none", "Update", "Connect", "Use_Method", "Read"}) {
        fakes->answers = {{failing, 5}};
        const bool written = strcmp(failing, "Update") == 0;
        EXPECT_EQ(Verify_Static_Connection(), 0u);
        EXPECT_EQ(Take_Calls(), read + ", Update svac Cable 6" + (written ? ", Write svac Cable 6" : "") +
                                    ", Connect null|1" + end)
            << failing;
    }
    for (const long told : {-1L, 257L, 0x7FFFFFFFL}) {
        fakes->setting_size = told;
        EXPECT_EQ(Verify_Static_Connection(), 0u);
        EXPECT_NE(Take_Calls().find("Update svac Cable 6,"), std::string::npos) << told;
    }
    fakes->dialup = true;
    EXPECT_EQ(Verify_Static_Connection(), 0u);
    EXPECT_EQ(Take_Calls(), read + end);
}

std::string debugged;

void Keep_Debugged(const char *text, void *) {
    if (std::string(text).find("Can't") == 0 || std::string(text).find("Checking") == 0) debugged += text;
}

TEST_F(StaticConnection, TellsWhatFails) {
    const TestKey suite("Software\\Dunmerit Software\\KelMara", HKEY_LOCAL_MACHINE);
    suite.Set("Log", "z:" + Test_Module("log_companion_whole"));
    suite.Set("Root", "c:\\");
    machine.Write("drive_c/logVars.txt", "");
    Set_Debug_Output_Sink(Keep_Debugged, nullptr);
    const std::string checking = "Checking to see if we need to run update for Cable.\n",
                      no_access = "Can't get a configuration simple access interface for ",
                      no_connection = "Can't get a IID_ConnectionInterface. Result: 80004001\n";
    const struct {
        const char *failing;
        unsigned result;
        std::string text;
    } steps[] = {{"Create server", 0x80004001, no_access + ".\n"},
                 {"Query Settings", 0x80004001, no_access + ".\n"},
                 {"Create configuration", 0x80004001, checking + no_access + "Cable.\n"},
                 {"Query Access", 0x80004001, checking + no_access + "Cable.\n"},
                 {"Open_By_Name", 0x80004001, checking + no_access + "Cable. It doesn't seem to exist\n"},
                 {"Create connection", 0x8000FFFF, checking + no_connection},
                 {"Query Connection", 0x8000FFFF, checking + no_connection}};
    for (const auto &[failing, result, text] : steps) {
        fakes->answers = {{failing, E_NOTIMPL}};
        debugged.clear();
        EXPECT_EQ(Verify_Static_Connection(), result) << failing;
        EXPECT_EQ(debugged, text) << failing;
        EXPECT_EQ(fakes->living, 0) << failing;
    }
    Set_Debug_Output_Sink(nullptr, nullptr);
    for (const char *throwing : {"Create server", "Create", "Read", "Open_By_Name", "Use_Method", "Is_Dialup",
                                 "Update", "Connect"}) {
        fakes->answers.clear();
        fakes->throwing = throwing;
        EXPECT_EQ(Verify_Static_Connection(), 0u) << throwing;
        EXPECT_EQ(fakes->living, 0) << throwing;
    }
}

} // namespace
