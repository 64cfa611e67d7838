#include <tests/connectivity/components_test.h>

#include <cstring>

namespace {

const std::string Long_Text(300, 't');

class Configured : public ComponentsTest {
  protected:
    long Set(const char *name) { return utility->Set_Config(name); }
    void SetUp() override {
        ComponentsTest::SetUp();
        utility = new OpenedUtility;
    }
    void TearDown() override {
        delete utility;
        ComponentsTest::TearDown();
    }
    void Configure() {
        EXPECT_EQ(Set("Home"), 0);
        Take_Calls();
    }
    OpenedUtility *utility = nullptr;
};

const char Opened_Anew[] =
    "Create configuration, Open Home 0, Get CMTH 255, Create connection, Use_Method ppp";

TEST_F(Configured, ReusesTheObjectsOfOneNameAndLetsGoOfAnothers) {
    Set_Option("CMTH", "ppp");
    EXPECT_EQ(utility->Get_Connection(), nullptr);
    EXPECT_EQ(Set("Home"), 0);
    EXPECT_EQ(Take_Calls(), Opened_Anew);
    EXPECT_EQ(Set("Home"), 0);
    EXPECT_EQ(Take_Calls(), "Open Home 0, Get CMTH 255, Use_Method ppp");
    EXPECT_EQ(Set("home"), 0);
    EXPECT_EQ(Take_Calls(), "end of connection, end of configuration, Create configuration, Open home 0, "
                            "Get CMTH 255, Create connection, Use_Method ppp");
    const std::string longest(129, 'n');
    EXPECT_EQ(Set(longest.c_str()), 0);
    EXPECT_EQ(Set((longest + "n").c_str()), E_INVALIDARG);
    EXPECT_EQ(fakes->living, 0);
    const std::string cut = Long_Text.substr(0, 255);
    EXPECT_EQ(Set(Long_Text.c_str()), E_INVALIDARG);
    EXPECT_STREQ(reinterpret_cast<char *>(utility) + 4, cut.c_str());
    EXPECT_EQ(Set(nullptr), 0) << "an empty name, which the fake takes";
}

TEST_F(Configured, LetsGoOfWhatAFailingStepHasComeTo) {
    Set_Option("CMTH", "ppp");
    const struct {
        const char *failing, *again; // what a configuration that was there does when it fails
        int left_again;              // objects
    } steps[] = {
        {"Create configuration", "", 2},
        {"Query Storage", "", 2},
        {"Query Values", "Open Home 0, Get CMTH 255, Use_Method ppp", 2},
        {"Open", "Open Home 0, end of configuration", 1},
        {"Create connection", "", 2},
        {"Query Connection", "", 2},
        {"Use_Method", "Open Home 0, Get CMTH 255, Use_Method ppp, end of connection, end of configuration",
         0},
    };
    for (const auto &[failing, again, left_again] : steps) {
        for (const long code : {1168L, E_NOINTERFACE}) {
            OpenedUtility each;
            Forget();
            Set_Option("CMTH", "ppp");
            fakes->answers = {{failing, code}};
            EXPECT_EQ(each.Set_Config("Home"), code) << failing;
            EXPECT_EQ(fakes->living, 0) << failing;
            EXPECT_EQ(each.Get_Connection(), nullptr) << failing;
            fakes->answers.clear();
            Take_Calls();
            EXPECT_EQ(each.Set_Config("Home"), 0) << failing;
            EXPECT_EQ(Take_Calls(), Opened_Anew) << "clean after " << failing;
            fakes->answers = {{failing, code}};
            each.Set_Config("Home");
            const std::string calls = Take_Calls();
            EXPECT_EQ(*again ? calls : again, again) << failing;
            EXPECT_EQ(fakes->living, left_again) << failing;
            fakes->answers.clear();
            EXPECT_EQ(each.Set_Config("Home"), 0) << failing;
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
    } states[] = {{true, "", "", false, true},          {true, "Home", "Home", true, false},
                  {true, "home", "home", false, false}, {true, "Work", "Work", false, false},
                  {false, "Work", "Home", true, false}, {false, "", "Home", true, true}};
    for (const auto &[dialup, active, out, connected, can_connect] : states) {
        fakes->dialup = dialup, fakes->active = active;
        EXPECT_EQ(utility->Is_Connected(name), connected) << active;
        EXPECT_STREQ(name, out);
        EXPECT_EQ(utility->Is_Connected(nullptr), connected);
        EXPECT_EQ(utility->Can_Connect(), can_connect) << active;
        EXPECT_EQ(utility->Is_Lan_Config(), !dialup);
    }
    utility->Get_Connected_Status_String(name);
    EXPECT_STREQ(name, "at 56000");
}

TEST_F(Configured, ReadsOptionsWhateverTheComponentWrites) {
    using Read = void (CConnectionUtility::*)(char *);
    const struct {
        const char (&code)[5];
        Read read;
        long size, room;
    } options[] = {{"USID", &CConnectionUtility::Get_Account_ID, 255, 256},
                   {"PAS*", &CConnectionUtility::Get_Password, 255, 256},
                   {"DDLC", &CConnectionUtility::Get_Default_Location, 255, 256},
                   {"DMLC", &CConnectionUtility::Get_Default_Mobile_Location, 64, 64},
                   {"DMLD", &CConnectionUtility::Get_Last_Mobile_Number, 64, 64}};
    for (const bool configured : {false, true}) {
        if (configured) Configure();
        for (const auto &[code, read, size, room] : options) {
            for (const std::string &text : {std::string("short"), Long_Text, std::string()}) {
                std::string buffer(static_cast<std::size_t>(room), '!');
                Set_Option(code, text);
                (utility->*read)(buffer.data());
                const std::string told = configured ? text.substr(0, static_cast<std::size_t>(room - 1)) : "";
                EXPECT_EQ(std::string(buffer.c_str()), told) << code;
                EXPECT_EQ(Take_Calls(),
                          configured ? std::string("Get ") + code + " " + std::to_string(size) : "");
            }
        }
    }
    fakes->silent = true;
    char first[256] = "before", second[256] = "before";
    utility->Get_Dialup_Numbers(first, second);
    EXPECT_EQ(Take_Calls(), "Get DDUN 255, Get DDUR 255");
    EXPECT_EQ(std::string(first) + second, "") << "nothing was written";
    fakes->silent = false;
    for (const char *text : {"FALSE", "false", "TRUE", "", "FALSE "}) {
        Set_Option("DFP!", text);
        bool flag = false;
        utility->Get_Phonebook_Info(first, &flag);
        EXPECT_EQ(flag, strcmp(text, "FALSE") == 0) << text;
    }
}

TEST_F(Configured, StoresUnderTheEditLock) {
    EXPECT_EQ(utility->Set_Last_Mobile_Number("1"), E_UNEXPECTED);
    Configure();
    const struct {
        const char *failing, *calls;
    } steps[] = {{"", "Lock, Set DMLC Home 5, Commit, Unlock"},
                 {"Query Storage", ""},
                 {"Lock", "Lock"},
                 {"Set", "Lock, Set DMLC Home 5, Commit, Unlock"},
                 {"Commit", "Lock, Set DMLC Home 5, Commit, Unlock"},
                 {"Unlock", "Lock, Set DMLC Home 5, Commit, Unlock"}};
    for (const auto &[failing, calls] : steps) {
        fakes->answers = {{failing, -8306}};
        const bool ignored = !*failing || strcmp(failing, "Set") == 0 || strcmp(failing, "Unlock") == 0;
        EXPECT_EQ(utility->Set_Default_Mobile_Location("Home"), ignored ? 0 : -8306) << failing;
        EXPECT_EQ(Take_Calls(), calls);
    }
    EXPECT_EQ(utility->Set_Last_Mobile_Number(nullptr), 0);
    EXPECT_EQ(Take_Calls(), "Lock, Set DMLD  1, Commit, Unlock");
}

TEST_F(Configured, VerifiesNumbersAndLocation) {
    Be_DSL(false);
    Set_Option("DDLC", "Office"), Set_Option("DFPB", "Cities");
    Configure();
    const char asked[] = "Get MODD 255, Get DDUN 255, Create phone book, Get DFPB 255, Run 8372 Cities ";
    const std::string end = ", end of phone book";
    EXPECT_TRUE(utility->Verify_Phone_Number(true));
    EXPECT_EQ(Take_Calls(), asked + end) << "an empty first number is asked for";
    EXPECT_TRUE(utility->Verify_Phone_Number(false));
    EXPECT_EQ(Take_Calls(), "Get MODD 255, Get DDUR 255");
    Set_Option("DDUR", "+1 (2) 3");
    EXPECT_TRUE(utility->Verify_Phone_Number(false));
    Take_Calls();
    for (const char *failing : {"Create phone book", "Query Phonebook", "Query Storage", "Run"}) {
        fakes->answers = {{failing, 1}};
        EXPECT_FALSE(utility->Verify_Phone_Number(false)) << failing;
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
    EXPECT_TRUE(utility->Verify_Location() && utility->Verify_Phone_Number(true) && utility->Modem_Is_DSL());
    EXPECT_EQ(Take_Calls(), "Get MODD 255, Get MODD 255, Get MODD 255");
    EXPECT_EQ(utility->Check_Dialup_Numbers(nullptr, nullptr, nullptr, nullptr, 0), E_NOTIMPL);
}

ConnectParams Untouched() {
    ConnectParams params;
    memset(&params, '~', sizeof params);
    return params;
}

TEST_F(Configured, FillsARecordSecondNumberFirst) {
    Be_DSL(false);
    services.locations = {"Office"}, services.dialable = "T9,5551212", services.displayable = "9-555-1212";
    Set_Option("USID", Long_Text), Set_Option("PAS*", Long_Text);
    Set_Option("DDLC", "Office"), Set_Option("DURT", " -12x"), Set_Option("DUWT", "none");
    Set_Option("DDUN", "no number"), Set_Option("DDUR", "+1 (425) 666-1");
    Set_Option("RD1?", "TRUE"), Set_Option("DAC?", "TRUE"), Set_Option("RAC?", "true");
    const std::string name(100, 'n');
    EXPECT_EQ(Set(name.c_str()), 0);
    Take_Calls();
    ConnectParams params = Untouched();
    utility->Initialize_Connect_Params(&params);
    EXPECT_EQ(Take_Calls(),
              "Is_Dialup, Get USID 63, Get PAS* 63, Get MODD 255, Get DDLC 64, Create location, "
              "Open Office 2, Get DDUR 255, Get RD1? 10, Get RAC? 10, Apply 10 425666, "
              "Get DDUN 255, Get DL1? 10, Get DAC? 10, Apply 01 425666, end of location, "
              "Get DURT 255, Get DUWT 255");
    EXPECT_EQ(params.configuration_name, name.substr(0, 67));
    EXPECT_EQ(std::string(params.account_id) + params.password, Long_Text.substr(0, 126));
    EXPECT_EQ(std::string(params.first_dial_string) + params.second_dial_string, "T9,5551212T9,5551212");
    EXPECT_TRUE(params.number_behind_DURT == -12 && params.number_behind_DUWT == 0);
    EXPECT_EQ(std::string(params.unset_0, 4) + std::string(params.of_the_component, 272),
              std::string(276, '~'));

    Set_Option("DDUR", ""), params = Untouched(), Take_Calls(), services.selected.clear();
    fakes->answers = {{"Create location", 5}};
    utility->Initialize_Connect_Params(&params);
    EXPECT_EQ(std::string(params.first_dial_string) + params.second_dial_string, "T9,5551212");
    EXPECT_EQ(services.selected.size(), 1u) << "for the first number alone";

    char number[256] = "before";
    utility->Get_Formated_Dialed_Number(true, number);
    EXPECT_STREQ(number, "9-555-1212");
    OpenedUtility().Get_Formated_Dialed_Number(true, strcpy(number, "before"));
    EXPECT_STREQ(number, "before");
}

TEST_F(Configured, FillsLittleOfARecordWhereNoNumberIsDialled) {
    Be_DSL(true);
    Set_Option("USID", "me"), Set_Option("DURT", "7"), Set_Option("DDUR", "+1 (425) 666-1");
    Configure();
    ConnectParams params = Untouched();
    utility->Initialize_Connect_Params(&params);
    EXPECT_STREQ(params.first_dial_string, "1.1.1.1");
    EXPECT_EQ(params.second_dial_string[0], '~');
    EXPECT_STREQ(params.account_id, "me");
    EXPECT_EQ(params.number_behind_DURT, 7);
    EXPECT_EQ(Take_Calls().find("location"), std::string::npos);
    fakes->dialup = false;
    ConnectParams lan = Untouched();
    utility->Initialize_Connect_Params(&lan);
    const ConnectParams untouched = Untouched();
    EXPECT_EQ(memcmp(&lan, &untouched, sizeof lan), 0);
}

TEST_F(Configured, ConnectsByTheRecord) {
    ConnectParams params = {};
    memset(params.first_dial_string, '1', 256);
    EXPECT_EQ(utility->Connect(&params, true, true), E_UNEXPECTED);
    Configure();
    fakes->answers = {{"Connect", 676}};
    strcpy(params.first_dial_string, "T5"), strcpy(params.second_dial_string, "T6");
    EXPECT_EQ(utility->Connect(&params, true, false), 676);
    EXPECT_EQ(utility->Connect(&params, false, true), 676);
    EXPECT_EQ(Take_Calls(), "Connect T5|T6|0, Connect T5||1");
    EXPECT_STREQ(utility->m_Last_Dialled_Number, "T5");
    EXPECT_EQ(utility->Connect(nullptr, true, true), E_INVALIDARG);
    utility->Close(), utility->Add_Status_Handler(nullptr), utility->Remove_Status_Handler(nullptr);
    EXPECT_EQ(Take_Calls(), "Close, Add_Status_Handler, Remove_Status_Handler");
}

} // namespace
