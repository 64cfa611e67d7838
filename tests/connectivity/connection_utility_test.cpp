#include <tests/connectivity/components_test.h>

#include <cstring>

namespace {

const std::string Long_Text(300, 't');

class Configured : public ComponentsTest {
  protected:
    void SetUp() override {
        ComponentsTest::SetUp();
        Set_Option("CMTH", "ppp"), Be_DSL(false);
    }
    void Configure(const char *name = "Home") {
        EXPECT_EQ(utility->Set_Config(name), 0);
        Take_Calls();
    }
};

const char Opened_Anew[] =
    "Create configuration, Open Home 0, Get CMTH 255, Create connection, Use_Method ppp";

TEST_F(Configured, ReusesTheObjectsOfOneNameAndLetsGoOfAnothers) {
    const std::string longest(129, 'n');
    Configure(longest.c_str());
    EXPECT_EQ(utility->Set_Config("Home"), 0);
    EXPECT_EQ(Take_Calls(), std::string("end of connection, end of configuration, ") + Opened_Anew);
    EXPECT_EQ(utility->Set_Config("Home"), 0);
    EXPECT_EQ(Take_Calls(), "Open Home 0, Get CMTH 255, Use_Method ppp");
    EXPECT_EQ(utility->Set_Config((longest + "n").c_str()), E_INVALIDARG);
    EXPECT_EQ(utility->Set_Config(Long_Text.c_str()), E_INVALIDARG);
    EXPECT_EQ(fakes->living, 0);
    EXPECT_EQ(reinterpret_cast<char *>(utility) + 4, Long_Text.substr(0, 255));
    Configure(nullptr);
}

TEST_F(Configured, LetsGoOfWhatAFailingStepHasComeTo) {
    const struct {
        const char *failing, *again; // what is done of what was there
        int left_again;              // objects
    } steps[] = {
        {"Create configuration", "Open Home 0, Get CMTH 255, Use_Method ppp", 2},
        {"Query Storage", "", 2},
        {"Query Values", "Open Home 0, Get CMTH 255, Use_Method ppp", 2},
        {"Open", "Open Home 0, end of configuration", 1},
        {"Create connection", "Open Home 0, Get CMTH 255, Use_Method ppp", 2},
        {"Query Connection", "Open Home 0, Get CMTH 255, Use_Method ppp", 2},
        {"Use_Method", "Open Home 0, Get CMTH 255, Use_Method ppp, end of connection, end of configuration",
         0},
    };
    for (const auto &[failing, again, left_again] : steps) {
        OpenedUtility each;
        fakes->answers = {{failing, -8314}};
        EXPECT_EQ(each.Set_Config("Home"), -8314) << failing;
        EXPECT_TRUE(fakes->living == 0 && !each.Get_Connection()) << failing;
        for (int i = 0; i < 2; ++i) {
            fakes->answers.clear(), Take_Calls();
            EXPECT_EQ(each.Set_Config("Home"), 0) << "after " << failing;
            EXPECT_EQ(Take_Calls().ends_with("Use_Method ppp") + fakes->living, 3) << "after " << failing;
            fakes->answers = {{failing, -8314}};
            each.Set_Config("Home");
            EXPECT_EQ(Take_Calls(), again) << failing;
            EXPECT_EQ(fakes->living, left_again) << failing;
        }
    }
}

TEST_F(Configured, TellsWhatIsConnected) {
    char name[256] = "before";
    EXPECT_FALSE(utility->Is_Connected(name) || utility->Can_Connect() || utility->Is_Lan_Config());
    EXPECT_STREQ(name, "before");
    Configure();
    const struct {
        bool dialup;
        const char *active, *out;
        bool connected, can_connect;
    } states[] = {{true, "", "", false, true},
                  {true, "Home", "Home", true, false},
                  {true, "home", "home", false, false},
                  {false, "Work", "Home", true, false}};
    for (const auto &[dialup, active, out, connected, can_connect] : states) {
        fakes->dialup = dialup, fakes->active = active;
        EXPECT_EQ(utility->Is_Connected(name), connected) << active;
        EXPECT_STREQ(name, out);
        EXPECT_EQ(utility->Can_Connect(), can_connect) << active;
        EXPECT_EQ(utility->Is_Lan_Config(), !dialup);
    }
}

TEST_F(Configured, ReadsOptionsWhateverTheComponentWrites) {
    const struct {
        const char (&code)[5];
        void (CConnectionUtility::*read)(char *);
        std::size_t size, room;
    } options[] = {{"USID", &CConnectionUtility::Get_Account_ID, 255, 256},
                   {"PAS*", &CConnectionUtility::Get_Password, 255, 256},
                   {"DDLC", &CConnectionUtility::Get_Default_Location, 255, 256},
                   {"DMLC", &CConnectionUtility::Get_Default_Mobile_Location, 64, 64},
                   {"DMLD", &CConnectionUtility::Get_Last_Mobile_Number, 64, 64}};
    char first[256], second[256] = "before";
    utility->Get_Account_ID(second);
    EXPECT_STREQ(second, "") << "without a configuration";
    Configure();
    CConnectionUtility &asked = *utility;
    for (const auto &[code, read, size, room] : options) {
        for (const std::string &text : {std::string("short"), Long_Text}) {
            std::string buffer(room, '!');
            Set_Option(code, text);
            (asked.*read)(buffer.data());
            EXPECT_EQ(buffer.c_str(), text.substr(0, room - 1)) << code;
            EXPECT_EQ(Take_Calls(), std::string("Get ") + code + " " + std::to_string(size));
        }
    }
    for (const char *text : {"FALSE", "false", ""}) {
        Set_Option("DFP!", text);
        bool flag = *text == 'f';
        utility->Get_Phonebook_Info(first, &flag);
        EXPECT_EQ(flag, *text == 'F') << text;
    }
    fakes->silent = true, Take_Calls();
    utility->Get_Dialup_Numbers(std::strcpy(first, "before"), std::strcpy(second, "before"));
    EXPECT_EQ(Take_Calls() + first + second, "Get DDUN 255, Get DDUR 255");
}

TEST_F(Configured, StoresUnderTheEditLock) {
    EXPECT_EQ(utility->Set_Last_Mobile_Number("1"), E_UNEXPECTED);
    Configure();
    const std::string all = "Lock, Set DMLC Home 5, Commit, Unlock";
    for (const std::string failing : {"", "Query Storage", "Lock", "Set", "Commit", "Unlock"}) {
        fakes->answers = {{failing, -8306}};
        const bool ignored = failing.empty() || failing == "Set" || failing == "Unlock";
        EXPECT_EQ(utility->Set_Default_Mobile_Location("Home"), ignored ? 0 : -8306) << failing;
        EXPECT_EQ(Take_Calls(), failing == "Lock" ? "Lock" : failing[0] == 'Q' ? "" : all) << failing;
    }
    EXPECT_EQ(utility->Set_Last_Mobile_Number(nullptr), 0);
    EXPECT_EQ(Take_Calls(), "Lock, Set DMLD  1, Commit, Unlock");
}

TEST_F(Configured, VerifiesNumbersAndLocation) {
    Set_Option("DDLC", "Office"), Set_Option("DFPB", "Cities");
    Configure();
    EXPECT_TRUE(utility->Verify_Phone_Number(true) && utility->Verify_Phone_Number(false));
    EXPECT_EQ(Take_Calls(), "Get MODD 255, Get DDUN 255, Create phone book, Get DFPB 255, Run 8372 Cities , "
                            "end of phone book, Get MODD 255, Get DDUR 255");
    for (const char *failing : {"Create phone book", "Query Phonebook", "Query Storage", "Run"}) {
        fakes->answers = {{failing, 1}};
        EXPECT_FALSE(utility->Verify_Phone_Number(true)) << failing;
    }
    fakes->answers.clear(), Take_Calls();
    EXPECT_FALSE(utility->Verify_Location()) << "it is not present";
    EXPECT_EQ(Take_Calls(), "Get MODD 255, Create server, Get DDLC 255, Find 2 Office, end of server");
    fakes->found.present = 1;
    EXPECT_TRUE(utility->Verify_Location());
    for (const char *failing : {"Create server", "Query Server", "Find"}) {
        fakes->answers = {{failing, 1}};
        EXPECT_FALSE(utility->Verify_Location()) << failing;
    }
    Be_DSL(true), Take_Calls();
    EXPECT_TRUE(utility->Verify_Location() && utility->Verify_Phone_Number(true));
    EXPECT_EQ(Take_Calls(), "Get MODD 255, Get MODD 255");
}

ConnectParams Untouched() {
    ConnectParams params;
    std::memset(&params, '~', sizeof params);
    return params;
}

TEST_F(Configured, FillsARecordSecondNumberFirst) {
    services.locations = {"Office"}, services.dialable = "T9,5551212", services.displayable = "9-555-1212";
    Set_Option("USID", Long_Text), Set_Option("PAS*", Long_Text);
    Set_Option("DDLC", "Office"), Set_Option("DURT", " -12x"), Set_Option("DUWT", "none");
    Set_Option("DDUN", "no number"), Set_Option("DDUR", "+1 (425) 666-1");
    Set_Option("RD1?", "TRUE"), Set_Option("DAC?", "TRUE"), Set_Option("RAC?", "true");
    const std::string name(67, 'n');
    Configure(name.c_str());
    ConnectParams params = Untouched();
    utility->Initialize_Connect_Params(&params);
    EXPECT_EQ(Take_Calls(),
              "Is_Dialup, Get USID 63, Get PAS* 63, Get MODD 255, Get DDLC 64, Create location, "
              "Open Office 2, Get DDUR 255, Get RD1? 10, Get RAC? 10, Apply 10 425666, Get DDUN 255, "
              "Get DL1? 10, Get DAC? 10, Apply 01 425666, end of location, Get DURT 255, Get DUWT 255");
    EXPECT_EQ(params.configuration_name, name);
    EXPECT_EQ(std::string(params.account_id) + params.password, Long_Text.substr(0, 126));
    EXPECT_EQ(std::string(params.first_dial_string) + params.second_dial_string, "T9,5551212T9,5551212");
    EXPECT_TRUE(params.number_behind_DURT == -12 && params.number_behind_DUWT == 0);
    EXPECT_TRUE(params.unset_0[3] == '~' && params.of_the_component[0] == '~');

    Set_Option("DDUR", ""), params = Untouched(), services.selected.clear();
    fakes->answers = {{"Create location", 5}};
    Configure((name + "n").c_str());
    utility->Initialize_Connect_Params(&params);
    EXPECT_STREQ(params.configuration_name, "") << "cut, it would be another's";
    EXPECT_EQ(std::string(params.first_dial_string) + params.second_dial_string, "T9,5551212");
    EXPECT_EQ(services.selected.size(), 1u) << "for the first number alone";
    char number[256];
    utility->Get_Formated_Dialed_Number(true, number);
    OpenedUtility().Get_Formated_Dialed_Number(true, number);
    EXPECT_STREQ(number, "9-555-1212");
}

TEST_F(Configured, FillsLittleOfARecordWhereNoNumberIsDialled) {
    Be_DSL(true);
    Set_Option("USID", "me"), Set_Option("DURT", "7"), Set_Option("DDUR", "+1 (425) 666-1");
    Configure();
    ConnectParams params = Untouched(), lan = params;
    utility->Initialize_Connect_Params(&params);
    EXPECT_STREQ(params.first_dial_string, "1.1.1.1");
    EXPECT_EQ(params.account_id + std::string(1, params.second_dial_string[0]), "me~");
    EXPECT_EQ(params.number_behind_DURT, 7);
    EXPECT_EQ(Take_Calls().find("location"), std::string::npos);
    fakes->dialup = false, params = Untouched();
    utility->Initialize_Connect_Params(&lan);
    EXPECT_EQ(std::memcmp(&lan, &params, sizeof lan), 0);
}

TEST_F(Configured, ConnectsByTheRecord) {
    ConnectParams params = Untouched();
    EXPECT_EQ(utility->Connect(&params, true, true), E_UNEXPECTED);
    Configure();
    fakes->answers = {{"Connect", 676}};
    std::strcpy(params.first_dial_string, "T5"), std::strcpy(params.second_dial_string, "T6");
    EXPECT_EQ(utility->Connect(&params, true, false) + utility->Connect(&params, false, true), 2 * 676);
    EXPECT_EQ(Take_Calls(), "Connect T5|T6|0, Connect T5||1");
    EXPECT_STREQ(utility->m_Last_Dialled_Number, "T5");
    EXPECT_EQ(utility->Connect(nullptr, true, true), E_INVALIDARG);
}

} // namespace
