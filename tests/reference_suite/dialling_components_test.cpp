#include <kelmara/connectivity/dial_location.h>

#include <reference_suite/components/value_filling.h>

#include <tests/reference_suite/installed_components.h>

namespace {

struct DiallingComponents : InstalledComponents {
    // "AREA,EXCHANGE=ANSWERS;" and so on.
    static std::string Answers(const std::string &location) {
        const TestKey key(std::string(Store) + "Locations\\" + location, HKEY_LOCAL_MACHINE);
        std::string lines = key.Get("Ten-Digit Dialling");
        for (char &character : lines) character = character ? character : ';';
        return lines;
    }
};

TEST_F(DiallingComponents, LocationsAreSelectedAndTheirOptionsTakenBack) {
    CDialLocHelper location;
    EXPECT_EQ(location.Select_Dial_Location("Nowhere", false), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(location.Select_Dial_Location("Hotel", false), 0);
    EXPECT_FALSE(location.TDD_Available_For_Selected_Country());
    EXPECT_EQ(location.Select_Dial_Location("Home", false), 0);
    EXPECT_TRUE(location.TDD_Available_For_Selected_Country());

    EXPECT_EQ(location.Set_TDD_Options(true, false, "206", "555"), 0);
    EXPECT_EQ(location.Save_TDD_Undo_State(), 0);
    EXPECT_EQ(location.Set_TDD_Options(false, true, "425", "555"), 0);
    EXPECT_EQ(location.Set_TDD_Options(false, false, "206", "555"), 0);
    EXPECT_EQ(Answers("Home"), "425,555=01;;");
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(location.Undo_TDD_Options_Change(), 0);
        EXPECT_EQ(Answers("Home"), "206,555=10;;");
        EXPECT_EQ(location.Set_TDD_Options(true, true, "206", "555"), 0);
    }
    EXPECT_EQ(location.Set_TDD_Options(true, true, "2=6", "555"), E_INVALIDARG);
    EXPECT_EQ(location.Select_Dial_Location("Office", false), 0);
    EXPECT_EQ(Answers("Home"), "206,555=11;;") << "what is not taken back stays in force";
    EXPECT_EQ(Answers("Office"), Missing);
}

TEST_F(DiallingComponents, SavedOptionsAreOfOneObjectAndLocation) {
    const Client one("Home", Component_Location), two("Home", Component_Location);
    OwnedInterface<ITDDOptionsInterface> options, others;
    ASSERT_EQ(options.Query(one.storage.Get(), IID_ITDDOptionsInterface), S_OK);
    ASSERT_EQ(others.Query(two.storage.Get(), IID_ITDDOptionsInterface), S_OK);
    unsigned long first = 0, second = 0;
    EXPECT_EQ(options->Save_Options(&first), 0);
    EXPECT_EQ(others->Save_Options(&second), 0);
    EXPECT_EQ(options->Restore_Options(second), ERROR_NOT_FOUND) << "another's";
    EXPECT_EQ(others->Discard_Saved_Options(second), 0);
    EXPECT_EQ(others->Restore_Options(second), ERROR_NOT_FOUND);
    EXPECT_EQ(one.Open("Office", Component_Location), 0);
    EXPECT_EQ(options->Restore_Options(first), ERROR_NOT_FOUND) << "another location's";

    EXPECT_EQ(two.Lock(), 0);
    EXPECT_EQ(two.Set(Option_Area_Code, "360"), 0);
    EXPECT_EQ(one.Open("Home", Component_Location), 0);
    char area_code[] = "206", exchange[] = "555";
    EXPECT_EQ(options->Apply_Options(false, true, area_code, exchange), 0) << "no lock is needed";
    EXPECT_EQ(two.Commit(), 0);
    EXPECT_EQ(one.Get(Option_Area_Code) + Answers("Home"), "360206,555=10;;");
}

// Adds an item below `parent` and gives it, for the caller to release.
IComplexValueInterface *Add(IUnknown *parent, unsigned long code, const char *text) {
    OwnedInterface<IComplexValueFillingInterface> filling;
    EXPECT_EQ(filling.Query(parent, IID_IComplexValueFillingInterface), S_OK);
    IComplexValueInterface *made = nullptr;
    return filling->Add_Item(code, text, &made) == 0 ? made : nullptr;
}

// A caller's component with a number, in two levels.
class Numbered final : public IComplexComponentInterface {
  public:
    HRESULT QueryInterface(REFIID, void **) override { return E_NOINTERFACE; }
    ULONG AddRef() override { return 1; }
    ULONG Release() override { return 1; }
    long Get_Component_Text(char *out) override { return strcpy(out, "Seattle"), 0; }
    long Fill_Tree(IComplexValueInterface *tree) override {
        const OwnedInterface<IComplexValueInterface> number(Add(tree, 1, "")), //
            area(Add(number.Get(), Item_Area_Code, "206")),
            line(Add(number.Get(), Item_Phone_Number, "555-0100"));
        return 0;
    }
};

TEST_F(DiallingComponents, NumbersAreTakenApartByAValueTree) {
    Numbered component;
    char area_code[256], exchange[256], text[256];
    EXPECT_EQ(CDialLocHelper().Get_Number_Information(&component, area_code, exchange, text), 0);
    EXPECT_EQ(std::string(area_code) + "-" + exchange, "206-555");
}

TEST_F(DiallingComponents, ValueTreesEndAtALevelAndItemsOutliveThem) {
    OwnedInterface<IComplexValueFactoryInterface> factory;
    ASSERT_EQ(factory.Create(CLSID_ConnectionComponent, IID_IComplexValueFactoryInterface), S_OK);
    IComplexValueInterface *item = nullptr;
    ASSERT_EQ(factory->Create_Tree(&item), 0);
    EXPECT_EQ(item->Find_Item(1, 0), nullptr);
    EXPECT_EQ(Add(item, 1, nullptr), nullptr);
    IComplexValueInterface *below = nullptr;
    for (int level = 1; (below = Add(item, 1, std::to_string(level).c_str())); ++level) {
        ASSERT_LE(level, Deepest_Value_Level);
        item->Release();
        item = below;
    }
    EXPECT_STREQ(item->Get_Text(), "16") << "also when all above it has gone";
    EXPECT_EQ(item->Find_Item(1, 0), nullptr);
    item->Release();
}

} // namespace
