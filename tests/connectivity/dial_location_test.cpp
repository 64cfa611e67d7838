#include <kelmara/connectivity/dial_location.h>

#include <tests/connectivity/components_test.h>

#include <gmock/gmock.h>

#include <optional>

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Calls = std::vector<std::string>;

class DialLocation : public ComponentsTest {
  protected:
    void SetUp() override {
        ComponentsTest::SetUp();
        location.emplace();
    }
    void TearDown() override {
        location.reset();
        ComponentsTest::TearDown();
    }
    Calls Take_Calls() { return std::exchange(fakes->calls, {}); }
    long Select(const std::string &name, bool reopen = false) {
        return location->Select_Dial_Location(name.c_str(), reopen);
    }
    void Expect_None_Open() {
        char text[256];
        EXPECT_EQ(location->Get_Selected_Areacode(text, 255), E_UNEXPECTED);
        EXPECT_EQ(location->Save_TDD_Undo_State(), E_UNEXPECTED);
        EXPECT_EQ(location->Set_TDD_Options(true, false, "206", "555"), E_UNEXPECTED);
        EXPECT_EQ(location->Undo_TDD_Options_Change(), E_UNEXPECTED);
        EXPECT_FALSE(location->TDD_Available_For_Selected_Country());
        EXPECT_EQ(Select(""), 0) << "the name of none";
        EXPECT_THAT(Take_Calls(), IsEmpty());
    }
    bool Available_In(const std::string &country) {
        fakes->values[Option_Country.code] = country;
        return location->TDD_Available_For_Selected_Country();
    }
    static void Enter_Country(const std::string &name, char code) {
        TestKey("software\\dunmerit software\\kelmara\\Country List\\" + name, HKEY_LOCAL_MACHINE)
            .Set("CountryCode", {code, 0, 0, 0}, REG_DWORD);
    }

    std::optional<CDialLocHelper> location;
};

TEST_F(DialLocation, IsOpenedOnceForANameUntilItIsToBeReopened) {
    Expect_None_Open();
    for (int i = 0; i < 2; ++i) EXPECT_EQ(Select("Home"), 0);
    EXPECT_THAT(Take_Calls(), ElementsAre("Create location", "Open Home 2"));
    EXPECT_EQ(location->Save_TDD_Undo_State(), 0);
    EXPECT_EQ(Select("Home", true), 0);
    EXPECT_THAT(Take_Calls(),
                ElementsAre("Save 1", "Discard 1", "end of location", "Create location", "Open Home 2"));
    EXPECT_EQ(location->Undo_TDD_Options_Change(), E_UNEXPECTED);
    EXPECT_EQ(Select("home"), 0);
    EXPECT_THAT(Take_Calls(), ElementsAre("end of location", "Create location", "Open home 2"));

    const std::string longest(129, 'n');
    EXPECT_EQ(Select(longest), 0);
    EXPECT_EQ(Take_Calls().back(), "Open " + longest + " 2");
    EXPECT_EQ(Select(longest + "n"), E_INVALIDARG);
    EXPECT_THAT(Take_Calls(), ElementsAre("end of location"));
    EXPECT_EQ(Select(std::string(300, 'n')), E_INVALIDARG);
    Expect_None_Open();
}

TEST_F(DialLocation, HandsOnWhatFailsAndThenHasNoneOpen) {
    for (const char *failing : {"Create", "Query Storage", "Open", "Query Values"}) {
        fakes->answers.clear();
        EXPECT_EQ(Select("Home"), 0);
        EXPECT_EQ(location->Save_TDD_Undo_State(), 0);
        Take_Calls();
        for (const long code : {1168L, -8299L, E_NOINTERFACE}) {
            fakes->answers[failing] = code;
            EXPECT_EQ(Select("Office"), code) << failing;
            EXPECT_EQ(fakes->living, 0) << failing;
        }
        EXPECT_EQ(Take_Calls()[0], "Discard " + std::to_string(fakes->last_token));
        Expect_None_Open();
    }
}

TEST_F(DialLocation, KeepsOneStateToGoBackTo) {
    EXPECT_EQ(Select("Home"), 0);
    Take_Calls();
    EXPECT_EQ(location->Undo_TDD_Options_Change(), E_UNEXPECTED);
    for (int i = 0; i < 2; ++i) EXPECT_EQ(location->Save_TDD_Undo_State(), 0);
    EXPECT_EQ(location->Set_TDD_Options(true, false, "206", "555"), 0);
    for (int i = 0; i < 2; ++i) EXPECT_EQ(location->Undo_TDD_Options_Change(), 0);
    location.reset();
    EXPECT_THAT(Take_Calls(), ElementsAre("Save 1", "Discard 1", "Save 2", "Apply 01 206555", "Restore 2",
                                          "Restore 2", "Discard 2", "end of location"));
}

TEST_F(DialLocation, HandsOnWhatFailsOfTheOptions) {
    EXPECT_EQ(Select("Home"), 0);
    EXPECT_EQ(location->Save_TDD_Undo_State(), 0);
    for (const bool refused : {true, false}) {
        fakes->answers = {{refused ? "Query Options" : "Restore", 1}};
        EXPECT_EQ(location->Undo_TDD_Options_Change(), 1);
        fakes->answers = {{refused ? "Query Options" : "Apply", -8350}};
        EXPECT_EQ(location->Set_TDD_Options(true, true, "", ""), -8350);
        fakes->answers = {{refused ? "Query Options" : "Save", -1}};
        EXPECT_EQ(location->Save_TDD_Undo_State(), -1);
    }
    EXPECT_EQ(location->Undo_TDD_Options_Change(), E_UNEXPECTED) << "the old state is given up, none is new";
    fakes->answers.clear();
    EXPECT_EQ(location->Save_TDD_Undo_State(), 0);
    fakes->answers["Query Options"] = E_NOINTERFACE;
    EXPECT_EQ(Select("Office"), 0) << "nobody to give the state back to";
    EXPECT_EQ(location->Undo_TDD_Options_Change(), E_UNEXPECTED);
}

TEST_F(DialLocation, TellsAreaCodeAndCountry) {
    const std::string longest(207, 'c');
    Enter_Country("Canada", 1), Enter_Country(longest, 1), Enter_Country("United Kingdom", 44);
    EXPECT_EQ(Select("Home"), 0);
    for (const std::string &country : {std::string("Canada"), longest}) EXPECT_TRUE(Available_In(country));
    for (const std::string &country : {std::string("United Kingdom"), std::string("Nowhere"), std::string(),
                                       longest + "c", std::string(255, 'c'), std::string(256, 'c')})
        EXPECT_FALSE(Available_In(country)) << country;

    fakes->values[Option_Area_Code.code] = "206";
    fakes->answers["Get"] = 1234;
    Take_Calls();
    char area_code[8];
    EXPECT_EQ(location->Get_Selected_Areacode(area_code, 7), 1234);
    EXPECT_STREQ(area_code, "206");
    EXPECT_THAT(Take_Calls(), ElementsAre("Get arcd 7"));
}

// A caller's component with a number.
class Numbered final : public IComplexComponentInterface {
  public:
    HRESULT QueryInterface(REFIID, void **) override { return E_NOINTERFACE; }
    ULONG AddRef() override { return 1; }
    ULONG Release() override { return 1; }
    long Fill_Tree(IComplexValueInterface *) override { return filling; }
    long Get_Component_Text(char *out) override { return strcpy(out, text.c_str()), -1; }
    std::string text = "Seattle";
    long filling = 0;
};

TEST_F(DialLocation, TakesANumberApart) {
    const auto fives = [](std::size_t count) { return std::string(count, '5'); };
    const std::pair<std::string, std::string> numbers[] = {{"555-1212", "555"},
                                                           {"5551212", "555"},
                                                           {"-1212", "-12"},
                                                           {"12", "12"},
                                                           {"", ""},
                                                           {"5-5-5", "5"},
                                                           {fives(255) + "-1", "555"},
                                                           {fives(254) + "-", fives(254)}};
    Numbered component;
    char area_code[256], exchange[256], text[256];
    for (const auto &[number, expected] : numbers) {
        fakes->values = {{Item_Area_Code, number}, {Item_Phone_Number, number}};
        EXPECT_EQ(location->Get_Number_Information(&component, area_code, exchange, text), 0) << number;
        EXPECT_EQ(area_code, number.substr(0, 255));
        EXPECT_EQ(exchange, expected);
        EXPECT_THAT(Take_Calls(), ElementsAre("Create connection", "end of item", "end of item",
                                              "end of tree", "end of connection"));
    }
    EXPECT_EQ(location->Get_Number_Information(&component, nullptr, nullptr, text), 0);
    EXPECT_STREQ(text, "Seattle");
    component.text.clear();
    EXPECT_EQ(location->Get_Number_Information(&component, area_code, exchange, text), 0);
    EXPECT_EQ(area_code + std::string(exchange), "");
    EXPECT_THAT(Take_Calls(), IsEmpty()) << "there was nothing to look at";
}

TEST_F(DialLocation, HandsOnWhatFailsOfANumber) {
    Numbered component;
    char area_code[256], exchange[256], text[256];
    for (const std::string failing : {"Create", "Query Factory", "Create_Tree", "Fill", "area", "phn#"}) {
        fakes->answers = {{failing, -8314}};
        fakes->values = {{Item_Area_Code, "206"}, {Item_Phone_Number, "555-1212"}};
        if (failing == "area") fakes->values.erase(Item_Area_Code);
        if (failing == "phn#") fakes->values.erase(Item_Phone_Number);
        component.filling = failing == "Fill" ? -8314 : 0;
        strcpy(area_code, "before"), strcpy(exchange, "before");
        EXPECT_EQ(location->Get_Number_Information(&component, area_code, exchange, text),
                  failing == "area" || failing == "phn#" ? E_UNEXPECTED : -8314)
            << failing;
        EXPECT_STREQ(area_code, failing == "phn#" ? "206" : "") << failing;
        EXPECT_STREQ(exchange, "");
        EXPECT_EQ(fakes->living, 0) << failing;
    }
}

} // namespace
