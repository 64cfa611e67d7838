#include <kelmara/connectivity/phone_numbers.h>
#include <kelmara/connectivity/tapi.h>

#include <tests/connectivity/fake_services.h>
#include <tests/support/second_process.h>

#include <platform/kernel.h>
#include <platform/local_memory.h>

#include <cstring>

namespace {

constexpr unsigned long Nothing = 0xFFFFFFFF;

std::string Hex(unsigned long number) {
    char text[20];
    std::snprintf(text, sizeof text, "%lX", number);
    return text;
}

std::string Dial(const char *number, const char *location, bool display = false) {
    char dialable[257], displayable[257];
    std::memset(dialable, 'x', sizeof dialable);
    std::memset(displayable, 'x', sizeof displayable);
    Create_Dial_Number(number, location, dialable, displayable);
    EXPECT_EQ(dialable[256], 'x');
    EXPECT_EQ(displayable[256], 'x');
    return display ? displayable : dialable;
}

// All that there is, twice, as it is in a fresh process.
std::string Call_All(const std::string &lacking) {
    const ServicesInPlace in_place(lacking);
    services.lines = {FakeLine{"Modem"}};
    services.locations = {"Home"};
    services.dialable = "T1";
    std::string answers = Hex(Set_Current_Dial_Location("Home")) + " ";
    for (int round = 0; round < 2; ++round) {
        answers += Hex(Setup_TAPI(nullptr)) + " ";
        answers += Hex(Set_Current_Dial_Location("Home")) + " ";
        answers += Hex(Get_Current_Device_ID()) + " ";
        answers += "\"" + Dial("+1", "Home") + "\" ";
    }
    return answers + std::to_string(services.loads) + " " + std::to_string(services.searches);
}

SECOND_PROCESS(lacking) {
    process.Tell(Call_All(process.Hear()));
    return 0;
}

TEST(LateBinding, TriesWhatIsMissingOnce) {
    const struct {
        const char *lacking;
        std::string before, then; // twice
        const char *counts;
    } rows[] = {
        {"*", "80000049 ", "80000049 80000049 FFFFFFFF \"\" ", "1 0"},
        {"lineInitialize", "0 ", "80000049 0 FFFFFFFF \"T1\" ", "1 4"},
        {"lineGetTranslateCaps", "80000049 ", "0 80000049 0 \"T1\" ", "1 5"},
        {"lineSetCurrentLocation", "0 ", "0 0 0 \"T1\" ", "1 6"},
        {"lineNegotiateAPIVersion", "0 ", "0 0 FFFFFFFF \"T1\" ", "1 5"},
        {"lineGetDevCaps", "0 ", "0 0 FFFFFFFF \"T1\" ", "1 6"},
        {"lineTranslateAddress", "0 ", "0 0 0 \"\" ", "1 6"},
        {"", "0 ", "0 0 0 \"T1\" ", "1 6"},
    };
    for (const auto &[lacking, before, then, counts] : rows) {
        SecondProcess process("lacking");
        process.Tell(lacking);
        EXPECT_EQ(process.Hear(), before + then + then + counts) << lacking;
        EXPECT_EQ(process.Wait(), 0) << process.Errors();
    }
}

int blocks, allocations;
std::string debug_output;

HLOCAL Count_Alloc(UINT flags, UINT size) {
    ++allocations;
    if (size > 100'000'000) SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    const HLOCAL block = size > 100'000'000 ? nullptr : LocalAlloc(flags, size);
    blocks += block != nullptr;
    return block;
}
HLOCAL Count_Free(HLOCAL block) {
    blocks -= block != nullptr;
    return LocalFree(block);
}

class Telephony : public ServicesTest {
  protected:
    void SetUp() override {
        ServicesTest::SetUp();
        services.locations = {"Home", "Office", "Hotel"};
        services.lines = {FakeLine{"Modem"}};
        blocks = allocations = 0;
        ASSERT_EQ(Setup_TAPI(nullptr), 0u);
    }
    void TearDown() override {
        EXPECT_EQ(blocks, 0) << "blocks are left";
        ServicesTest::TearDown();
    }
    using Ids = std::vector<DWORD>;

    ReplacedImport allocate{"libkelmara.so", "LocalAlloc", reinterpret_cast<void *>(Count_Alloc)};
    ReplacedImport release{"libkelmara.so", "LocalFree", reinterpret_cast<void *>(Count_Free)};
};

TEST_F(Telephony, SelectsALocationByItsName) {
    const DWORD whole = 44 + 3 * 68 + 5 + 7 + 6;
    EXPECT_EQ(Set_Current_Dial_Location("Hotel"), 0u);
    EXPECT_EQ(services.selected, Ids{102});
    EXPECT_EQ(services.sizes, (Ids{44, whole})) << "grown once";
    for (const char *name : {"hotel", "Hote", "", static_cast<const char *>(nullptr)}) {
        services.sizes.clear();
        EXPECT_EQ(Set_Current_Dial_Location(name), 0u);
        EXPECT_EQ(services.sizes, (Ids{44, whole})) << "asked all the same";
    }
    EXPECT_EQ(services.selected, Ids{102});
    services.locations.assign(400, "Other");
    services.locations.insert(services.locations.end(), {"The last", "The last"});
    EXPECT_EQ(Set_Current_Dial_Location("The last"), 0u);
    EXPECT_EQ(services.selected, (Ids{102, 500})) << "the first of that name";
    services.error = LINEERR_NODRIVER;
    EXPECT_EQ(Set_Current_Dial_Location("Home"), static_cast<unsigned long>(LINEERR_NODRIVER));
}

TEST_F(Telephony, GivesUpOnAServiceThatNeverHasEnough) {
    services.caps = [](LINETRANSLATECAPS &caps) { caps.dwNeededSize = caps.dwTotalSize + 1; };
    EXPECT_EQ(Set_Current_Dial_Location("Home"), Nothing);
    EXPECT_LE(allocations, 16);
    services.caps = [](LINETRANSLATECAPS &caps) { caps.dwNeededSize = 0x7FFFFFFF; };
    Set_Debug_Output_Sink([](const char *text, void *) { debug_output = text; }, nullptr);
    EXPECT_EQ(Set_Current_Dial_Location("Home"), Nothing) << "no memory";
    Set_Debug_Output_Sink(nullptr, nullptr);
    EXPECT_EQ(debug_output, "FillLocationInfo");

    allocations = 0;
    services.sizes.clear();
    services.caps = [](LINETRANSLATECAPS &caps) {
        caps.dwNeededSize = 40;
        if (services.sizes.size() == 1) caps.dwTotalSize = 39;
    };
    EXPECT_EQ(Set_Current_Dial_Location("Home"), 0u);
    EXPECT_EQ(services.sizes, (Ids{44, 44})) << "the block is large enough, and used again";
    EXPECT_EQ(allocations, 1);
}

TEST_F(Telephony, KeepsToTheRecordsThatAServiceFills) {
    for (const DWORD offset : {0u, 1u, 43u, 44u, 0x80000000u, 0xFFFFFFFFu}) {
        services.caps = [=](LINETRANSLATECAPS &caps) {
            std::memset(&caps, 'A', sizeof caps);
            caps.dwNeededSize = 0;
            caps.dwNumLocations = 0xFFFFFFFF;
            caps.dwLocationListOffset = offset;
        };
        EXPECT_EQ(Set_Current_Dial_Location("AAAA"), 0u);
        services.caps = [=](LINETRANSLATECAPS &caps) {
            caps.dwNeededSize = 44 + 68 + 4;
            caps.dwNumLocations = 9;
            caps.dwLocationListOffset = 44;
            if (caps.dwTotalSize < caps.dwNeededSize) return;
            auto &entry = reinterpret_cast<LINELOCATIONENTRY &>((&caps)[1]);
            entry.dwLocationNameOffset = offset == 44 ? 44 + 68 : offset;
            std::memcpy(&entry + 1, "Home", 4); // its name ends where the record does
        };
        EXPECT_EQ(Set_Current_Dial_Location("Home"), 0u);
    }
    EXPECT_EQ(services.selected, Ids{0});
    const std::pair<DWORD, std::size_t> texts[] = {{40, 216}, {255, 1}, {256, 0}, {0xFFFFFFFF, 0}, {0, 16}};
    for (const auto &[offset, length] : texts) {
        services.output = [from = offset](LINETRANSLATEOUTPUT &output) {
            std::memset(&output, '8', 256);
            output.dwDialableStringOffset = from;
            if (from != 0) output.dwDisplayableStringOffset = from;
        };
        EXPECT_EQ(Dial("+1", "Home"), std::string(length, '8')) << offset;
    }
}

TEST_F(Telephony, FindsALineWithAProperName) {
    const auto device = [](std::vector<FakeLine> lines) {
        services.lines = std::move(lines);
        Setup_TAPI(nullptr);
        return Get_Current_Device_ID();
    };
    const auto broken = [](auto change) { return FakeLine{"Modem", STRINGFORMAT_ASCII, true, change}; };
    const FakeLine good{"Modem"}, unnamed{""}, wide{"M", STRINGFORMAT_UNICODE}, mute{"Modem", 1, false};
    const FakeLine sizeless = broken([](LINEDEVCAPS &caps) { caps.dwLineNameSize = 0; });
    const FakeLine nowhere = broken([](LINEDEVCAPS &caps) { caps.dwLineNameOffset = 0; });
    const FakeLine beyond = broken([](LINEDEVCAPS &caps) { caps.dwLineNameOffset = 1024; });
    EXPECT_EQ(device({}), Nothing);
    EXPECT_EQ(device({unnamed, wide, mute, sizeless, nowhere, beyond}), Nothing);
    EXPECT_EQ(device({unnamed, wide, mute, good}), 0u) << "whichever it is";
    services.error = LINEERR_OPERATIONFAILED;
    EXPECT_EQ(device({good}), 0u) << "results are not looked at";
}

TEST_F(Telephony, TranslatesNumbersForDialling) {
    services.dialable = "T9,5551212";
    services.displayable = "9, 555-1212";
    EXPECT_EQ(Dial("+1 (206) 555-1212", "Office"), "T9,5551212");
    EXPECT_EQ(services.translated, "7 0 10004 +1 (206) 555-1212 0 2 256");
    EXPECT_EQ(services.selected, Ids{101});
    EXPECT_EQ(Dial("+1", "Nowhere", true), "9, 555-1212");
    Create_Dial_Number("+2", "Hotel", nullptr, nullptr);
    EXPECT_EQ(services.translated, "7 0 10004 +2 0 2 256");
    EXPECT_EQ(services.selected, (Ids{101, 102}));
    services.lines.clear();
    Setup_TAPI(nullptr);
    Dial(nullptr, nullptr);
    EXPECT_EQ(services.translated, "7 FFFFFFFF 10004  0 2 256");
    services.error = LINEERR_INVALADDRESS;
    EXPECT_EQ(Dial("+1", "Home") + Dial("+1", "Home", true), "");
}

} // namespace
