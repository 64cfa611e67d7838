#include <kelmara/connectivity/dial_location.h>

#include <tests/modules/fake_components.h>
#include <tests/support/built_modules.h>
#include <tests/support/registry_verbs.h>

#include <platform/kernel.h>

#include <gmock/gmock.h>

#include <optional>

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Calls = std::vector<std::string>;

constexpr char Countries[] = "software\\dunmerit software\\kelmara\\Country List\\";

// A class's module on the test's machine.
void Enter_Class(const std::string &clsid, const std::string &module) {
    TestKey("CLSID\\" + clsid + "\\InProcServer32", HKEY_CLASSES_ROOT).Set("", module);
}

class DialLocation : public MachineTest {
  protected:
    void SetUp() override {
        MachineTest::SetUp();
        const std::string module = "z:" + Test_Module("fake_components");
        Enter_Class("{DE8200E0-FB12-11D1-9960-00A0244EE2F7}", module);
        Enter_Class("{2626B000-CE20-11D1-9960-00A0244EE2F7}", module);
        CoInitialize(nullptr);
        module_ = LoadLibraryA(module.c_str());
        ASSERT_TRUE(module_);
        fakes = reinterpret_cast<FakeComponents *(*)()>(GetProcAddress(module_, "Fakes"))();
        *fakes = {};
        location.emplace();
    }
    void TearDown() override {
        location.reset();
        EXPECT_EQ(fakes->living, 0) << "references left";
        CoUninitialize();
        FreeLibrary(module_);
        MachineTest::TearDown();
    }
    Calls Take_Calls() {
        Calls calls;
        calls.swap(fakes->calls);
        return calls;
    }
    void Select(const std::string &name) {
        EXPECT_EQ(location->Select_Dial_Location(name.c_str(), false), 0);
        Take_Calls();
    }
    void Expect_None_Open() {
        char text[256];
        EXPECT_EQ(location->Get_Selected_Areacode(text, 255), E_UNEXPECTED);
        EXPECT_EQ(location->Select_Dial_Location("", false), 0) << "the name of none";
    }
    bool Available_In(const std::string &country) {
        fakes->values[Option_Country.code] = country;
        return location->TDD_Available_For_Selected_Country();
    }

    FakeComponents *fakes = nullptr;
    std::optional<CDialLocHelper> location;

  private:
    HMODULE module_ = nullptr;
};

TEST_F(DialLocation, IsOpenedOnceForANameUntilItIsToBeReopened) {
    EXPECT_EQ(location->Select_Dial_Location("", false), 0);
    EXPECT_THAT(Take_Calls(), IsEmpty());
    for (int i = 0; i < 2; ++i) EXPECT_EQ(location->Select_Dial_Location("Home", false), 0);
    EXPECT_THAT(Take_Calls(), ElementsAre("Create location", "Open Home 2"));
    EXPECT_EQ(location->Save_TDD_Undo_State(), 0);
    EXPECT_EQ(location->Select_Dial_Location("Home", true), 0);
    EXPECT_THAT(Take_Calls(),
                ElementsAre("Save 1", "Discard 1", "end of location", "Create location", "Open Home 2"));
    EXPECT_EQ(location->Select_Dial_Location("home", false), 0) << "another name";
    EXPECT_THAT(Take_Calls(), ElementsAre("end of location", "Create location", "Open home 2"));

    const std::string longest(129, 'n');
    EXPECT_EQ(location->Select_Dial_Location(longest.c_str(), false), 0);
    EXPECT_EQ(Take_Calls().back(), "Open " + longest + " 2");
    for (const std::string &name : {longest + "n", std::string(255, 'n'), std::string(300, 'n')}) {
        Select(longest);
        EXPECT_EQ(location->Select_Dial_Location(name.c_str(), false), E_INVALIDARG);
        EXPECT_THAT(Take_Calls(), ElementsAre("end of location"));
        Expect_None_Open();
    }
}

TEST_F(DialLocation, HandsOnWhatFailsAndThenHasNoneOpen) {
    for (const char *failing : {"Create", "Query Storage", "Open", "Query Values"}) {
        for (const long code : {1168L, -8299L, E_NOINTERFACE}) {
            fakes->answers.clear();
            Select("Home");
            EXPECT_EQ(location->Save_TDD_Undo_State(), 0);
            Take_Calls();
            fakes->answers[failing] = code;
            EXPECT_EQ(location->Select_Dial_Location("Office", false), code) << failing;
            const Calls calls = Take_Calls();
            EXPECT_THAT(Calls(calls.begin(), calls.begin() + 2),
                        ElementsAre("Discard " + std::to_string(fakes->last_token), "end of location"));
            EXPECT_EQ(fakes->living, 0) << failing;
            EXPECT_EQ(location->Undo_TDD_Options_Change(), E_UNEXPECTED);
            Expect_None_Open();
        }
    }
}

TEST_F(DialLocation, KeepsOneStateToGoBackTo) {
    EXPECT_EQ(location->Save_TDD_Undo_State(), E_UNEXPECTED);
    EXPECT_EQ(location->Set_TDD_Options(true, false, "206", "555"), E_UNEXPECTED);
    Select("Home");
    EXPECT_EQ(location->Undo_TDD_Options_Change(), E_UNEXPECTED);
    for (int i = 0; i < 2; ++i) EXPECT_EQ(location->Save_TDD_Undo_State(), 0);
    EXPECT_EQ(location->Set_TDD_Options(true, false, "206", "555"), 0);
    for (int i = 0; i < 2; ++i) EXPECT_EQ(location->Undo_TDD_Options_Change(), 0);
    location.reset();
    EXPECT_THAT(Take_Calls(), ElementsAre("Save 1", "Discard 1", "Save 2", "Apply 01 206 555", "Restore 2",
                                          "Restore 2", "Discard 2", "end of location"));
}

TEST_F(DialLocation, HandsOnWhatFailsOfTheOptions) {
    Select("Home");
    const struct {
        const char *failing;
        long (*call)(CDialLocHelper &location);
    } calls[] = {
        {"Save", [](CDialLocHelper &each) { return each.Save_TDD_Undo_State(); }},
        {"Restore", [](CDialLocHelper &each) { return each.Undo_TDD_Options_Change(); }},
        {"Apply", [](CDialLocHelper &each) { return each.Set_TDD_Options(true, true, "", ""); }},
    };
    for (const auto &[failing, call] : calls) {
        for (const char *refused : {failing, "Query Options"}) {
            fakes->answers.clear();
            EXPECT_EQ(location->Save_TDD_Undo_State(), 0);
            fakes->answers[refused] = -8350;
            EXPECT_EQ(call(*location), -8350) << failing << ", " << refused;
        }
    }
    fakes->answers = {{"Save", 5}};
    EXPECT_EQ(location->Save_TDD_Undo_State(), 5);
    EXPECT_EQ(location->Undo_TDD_Options_Change(), E_UNEXPECTED)
        << "what was kept is given up, nothing is new";
    fakes->answers.clear();
    EXPECT_EQ(location->Save_TDD_Undo_State(), 0);
    fakes->answers["Query Options"] = E_NOINTERFACE;
    EXPECT_EQ(location->Select_Dial_Location("Office", false), 0) << "nobody to give it back to";
    EXPECT_EQ(location->Undo_TDD_Options_Change(), E_UNEXPECTED);
}

TEST_F(DialLocation, TellsAreaCodeAndCountry) {
    const std::string longest(207, 'c');
    TestKey(Countries + std::string("United Kingdom"), HKEY_LOCAL_MACHINE)
        .Set("CountryCode", {"\x2c\0\0\0", 4}, REG_DWORD);
    for (const std::string &country : {std::string("Canada"), longest})
        TestKey(Countries + country, HKEY_LOCAL_MACHINE).Set("CountryCode", {"\1\0\0\0", 4}, REG_DWORD);
    EXPECT_FALSE(Available_In("Canada")) << "no location is open";
    Select("Home");
    EXPECT_TRUE(Available_In("Canada"));
    EXPECT_TRUE(Available_In(longest));
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
    long Fill_Tree(IComplexValueInterface *tree) override { return tree ? filling : E_POINTER; }
    long Get_Component_Text(char *out) override {
        strcpy(out, text.c_str());
        return -1;
    }
    std::string text = "Seattle";
    long filling = 0;
};

TEST_F(DialLocation, TakesANumberApart) {
    const std::string long_text(300, '5');
    const struct {
        std::string number, exchange;
    } numbers[] = {{"555-1212", "555"},
                   {"5551212", "555"},
                   {"-1212", "-12"},
                   {"12", "12"},
                   {"", ""},
                   {"5-5-5", "5"},
                   {long_text, "555"},
                   {long_text + "-1", "555"},
                   {std::string(255, '5') + "-", "555"},
                   {std::string(254, '5') + "-", std::string(254, '5')}};
    Numbered component;
    char area_code[256], exchange[256], text[256];
    for (const auto &[number, expected] : numbers) {
        fakes->values = {{Item_Area_Code, number}, {Item_Phone_Number, number}};
        EXPECT_EQ(location->Get_Number_Information(&component, area_code, exchange, text), 0) << number;
        EXPECT_EQ(area_code, number.substr(0, 255));
        EXPECT_EQ(exchange, expected);
        EXPECT_STREQ(text, "Seattle");
        EXPECT_THAT(Take_Calls(), ElementsAre("Create connection", "Create_Tree", "end of item",
                                              "end of item", "end of tree", "end of connection"));
    }
    EXPECT_EQ(location->Get_Number_Information(&component, nullptr, nullptr, text), 0);
    component.text.clear();
    EXPECT_EQ(location->Get_Number_Information(&component, area_code, exchange, text), 0);
    EXPECT_STREQ(area_code, "");
    EXPECT_STREQ(exchange, "");
    EXPECT_EQ(location->Get_Number_Information(nullptr, nullptr, nullptr, text), E_INVALIDARG);
    EXPECT_THAT(Take_Calls(), IsEmpty()) << "there was nothing to look at";
}

TEST_F(DialLocation, HandsOnWhatFailsOfANumber) {
    Numbered component;
    char area_code[256], exchange[256], text[256];
    for (const char *failing : {"Create", "Query Factory", "Create_Tree", "Fill", "area", "phn#"}) {
        const bool no_area = strcmp(failing, "area") == 0, no_number = strcmp(failing, "phn#") == 0;
        fakes->answers = {{failing, -8314}};
        fakes->values = {{Item_Area_Code, "206"}, {Item_Phone_Number, "555-1212"}};
        if (no_area) fakes->values.erase(Item_Area_Code);
        if (no_number) fakes->values.erase(Item_Phone_Number);
        component.filling = strcmp(failing, "Fill") == 0 ? -8314 : 0;
        strcpy(area_code, "before"), strcpy(exchange, "before");
        EXPECT_EQ(location->Get_Number_Information(&component, area_code, exchange, text),
                  no_area || no_number ? E_UNEXPECTED : -8314)
            << failing;
        EXPECT_STREQ(area_code, no_number ? "206" : "") << failing;
        EXPECT_STREQ(exchange, "");
        EXPECT_EQ(fakes->living, 0) << failing;
    }
}

} // namespace
