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
    services.translation = "T1";
    std::string answers = Hex(Set_Current_Dial_Location("Home")) + " ";
    for (int round = 0; round < 2; ++round) {
        answers += Hex(Setup_TAPI(nullptr)) + " ";
        answers += Hex(Set_Current_Dial_Location("Home")) + " ";
        answers += Hex(Get_Current_Device_ID()) + " ";
        answers += "\"" + Dial("+1", "Home") + "\" ";
    }
    return answers + std::to_string(ServicesInPlace::Loads()) + " " +
           std::to_string(ServicesInPlace::Searches());
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
    for (const char *name : {"hotel", "Hote", "Hotels", "", static_cast<const char *>(nullptr)}) {
        services.sizes.clear();
        EXPECT_EQ(Set_Current_Dial_Location(name), 0u);
        EXPECT_EQ(services.sizes, (Ids{44, whole})) << "asked all the same";
    }
    EXPECT_EQ(services.selected, Ids{102});
    services.locations.assign(400, "Other");
    services.locations.insert(services.locations.end(), {"The last", "The last"});
    EXPECT_EQ(Set_Current_Dial_Location("The last"), 0u);
    EXPECT_EQ(services.selected, (Ids{102, 500})) << "the first of that name";
    services.locations.clear();
    EXPECT_EQ(Set_Current_Dial_Location("Home"), 0u);
    services.error = LINEERR_NODRIVER;
    EXPECT_EQ(Set_Current_Dial_Location("Home"), static_cast<unsigned long>(LINEERR_NODRIVER));
    EXPECT_EQ(services.selected.size(), 2u);
}

TEST_F(Telephony, StandsAServiceThatCannotBeTrusted) {
    services.caps = [](LINETRANSLATECAPS &caps) {
        caps.dwNeededSize = caps.dwTotalSize + 1;
        return 0;
    };
    EXPECT_EQ(Set_Current_Dial_Location("Home"), Nothing) << "it never has enough";
    EXPECT_LE(allocations, 16);
    services.caps = [](LINETRANSLATECAPS &caps) {
        caps.dwNeededSize = 0x7FFFFFFF;
        return 0;
    };
    Set_Debug_Output_Sink([](const char *text, void *) { debug_output = text; }, nullptr);
    EXPECT_EQ(Set_Current_Dial_Location("Home"), Nothing);
    Set_Debug_Output_Sink(nullptr, nullptr);
    EXPECT_EQ(debug_output, "FillLocationInfo");

    allocations = 0;
    services.sizes.clear();
    services.caps = [](LINETRANSLATECAPS &caps) {
        const bool again = services.sizes.size() > 1;
        caps.dwNeededSize = again ? caps.dwTotalSize : 40;
        if (!again) caps.dwTotalSize = 39;
        return 0;
    };
    EXPECT_EQ(Set_Current_Dial_Location("Home"), 0u);
    EXPECT_EQ(services.sizes, (Ids{44, 44})) << "the block is large enough, and used again";
    EXPECT_EQ(allocations, 1);

    for (const DWORD offset : {0u, 1u, 43u, 44u, 0x80000000u, 0xFFFFFFFFu}) {
        services.caps = [=](LINETRANSLATECAPS &caps) {
            std::memset(&caps, 0x41, sizeof caps); // its own first entry too, and no terminator anywhere
            caps.dwNeededSize = 0;
            caps.dwTotalSize = caps.dwNumLocations = 0xFFFFFFFF;
            caps.dwLocationListOffset = offset;
            return 0;
        };
        EXPECT_EQ(Set_Current_Dial_Location("AAAA"), 0u);
    }
    services.caps = [](LINETRANSLATECAPS &caps) {
        caps.dwNeededSize = 44 + 68 + 4;
        if (caps.dwTotalSize < caps.dwNeededSize) return 0;
        caps.dwNumLocations = 9;
        caps.dwLocationListOffset = 44;
        auto &entry = reinterpret_cast<LINELOCATIONENTRY &>((&caps)[1]);
        entry.dwPermanentLocationID = 5;
        entry.dwLocationNameOffset = 44 + 68;
        std::memcpy(&entry + 1, "Home", 4);
        return 0;
    };
    EXPECT_EQ(Set_Current_Dial_Location("Homes"), 0u);
    EXPECT_EQ(services.selected, Ids{});
    EXPECT_EQ(Set_Current_Dial_Location("Home"), 0u);
    EXPECT_EQ(services.selected, Ids{5}) << "a name ends where its record does";
}

TEST_F(Telephony, FindsALineWithAProperName) {
    const auto device = [](std::vector<FakeLine> lines) {
        services.lines = std::move(lines);
        Setup_TAPI(nullptr);
        return Get_Current_Device_ID();
    };
    const FakeLine good{"Modem"}, unnamed{""}, wide{"M", STRINGFORMAT_UNICODE};
    const FakeLine refusing{"Modem", STRINGFORMAT_ASCII, false, nullptr};
    const FakeLine sizeless{"Modem", 1, true, [](LINEDEVCAPS &caps) { caps.dwLineNameSize = 0; }};
    const FakeLine nowhere{"Modem", 1, true, [](LINEDEVCAPS &caps) { caps.dwLineNameOffset = 0; }};
    const FakeLine beyond{"Modem", 1, true, [](LINEDEVCAPS &caps) { caps.dwLineNameOffset = 1024; }};
    const FakeLine far{"Modem", 1, true, [](LINEDEVCAPS &caps) { caps.dwLineNameOffset = 0x80000000; }};
    EXPECT_EQ(device({}), Nothing);
    EXPECT_EQ(device({unnamed, wide, refusing, sizeless, nowhere, beyond, far}), Nothing);
    EXPECT_EQ(device({unnamed, wide, refusing, good}), 0u) << "whichever it is";
    services.error = LINEERR_OPERATIONFAILED;
    EXPECT_EQ(device({good}), 0u) << "results are not looked at";
}

TEST_F(Telephony, TranslatesNumbersForDialling) {
    services.translation = "T9,5551212";
    services.display = "9, 555-1212";
    EXPECT_EQ(Dial("+1 (206) 555-1212", "Office"), "T9,5551212");
    EXPECT_EQ(services.translated, "7 0 10004 +1 (206) 555-1212 0 2 256");
    EXPECT_EQ(services.selected, Ids{101});
    EXPECT_EQ(Dial("+1", "Nowhere", true), "9, 555-1212");
    services.translated.clear();
    Create_Dial_Number("+1", "Hotel", nullptr, nullptr);
    EXPECT_EQ(services.translated, "7 0 10004 +1 0 2 256");
    EXPECT_EQ(services.selected, (Ids{101, 102}));
    services.lines.clear();
    Setup_TAPI(nullptr);
    Dial(nullptr, nullptr);
    EXPECT_EQ(services.translated, "7 FFFFFFFF 10004  0 2 256");
    services.error = LINEERR_INVALADDRESS;
    EXPECT_EQ(Dial("+1", "Home") + Dial("+1", "Home", true), "");
}

TEST_F(Telephony, KeepsToTheRecordOfATranslation) {
    const struct {
        DWORD offset;
        std::size_t length;
    } rows[] = {{40, 216}, {255, 1}, {256, 0}, {0x7FFFFFFF, 0}, {0xFFFFFFFF, 0}};
    for (const auto &[offset, length] : rows) {
        services.output = [from = offset](LINETRANSLATEOUTPUT &output) {
            std::memset(&output, '8', 256);
            output.dwDialableStringOffset = output.dwDisplayableStringOffset = from;
            return 0;
        };
        EXPECT_EQ(Dial("+1", "Home"), std::string(length, '8')) << offset;
        EXPECT_EQ(Dial("+1", "Home", true), std::string(length, '8')) << offset;
    }
    services.output = [](LINETRANSLATEOUTPUT &output) {
        std::memset(&output, '8', 256);
        output.dwDialableStringOffset = 0x00000000;
        return 0;
    };
    EXPECT_EQ(Dial("+1", "Home"), std::string(16, '8')) << "of the record's own first bytes";
}

} // namespace
