// The telephony and remote-access services: called as the library calls them, and through the library.

#include <kelmara/connectivity/connection_kind.h>
#include <kelmara/connectivity/phone_numbers.h>
#include <kelmara/connectivity/tapi.h>
#include <reference_suite/services/remote_access/remote_access_service.h>
#include <reference_suite/services/telephony/telephony_service.h>

#include <tests/support/built_modules.h>
#include <tests/support/new_failures.h>
#include <tests/support/registry_verbs.h>
#include <tests/support/replaced_import.h>

#include <platform/kernel.h>

#include <cstring>
#include <memory>

namespace {

constexpr DWORD Version = 0x10004;
const std::string Settings = "Software\\Microsoft\\Windows\\CurrentVersion\\";

void Set_Number(const TestKey &key, const char *name, DWORD number) {
    key.Set(name, std::string(reinterpret_cast<const char *>(&number), 4), REG_DWORD);
}

class Services : public MachineTest {
  protected:
    void SetUp() override {
        MachineTest::SetUp();
        for (const std::string name : {"One", "Two", "Three"})
            TestKey(Settings + "Telephony\\Lines\\" + name, HKEY_LOCAL_MACHINE).Set("Name", name + '\0');
        Make_Location(3, "Home", 1, {"206", "", "", "*70,"}, 1);
        Make_Location(5, "Office", 1, {"425", "9,", "9,w8", ""}, 0);
        Make_Location(8, "Hotel", 44, {"0171", "", "0,", ""}, 1);
        Make_Location(9, "Nowhere", 999, {"", "", "", ""}, 1);
        Make_Location(45, "Copenhagen", 45, {"", "", "", ""}, 1);
        Make_Current(3);
        DWORD devices = 0;
        ASSERT_EQ(initialize(&application, nullptr, Ignore, nullptr, &devices), 0);
        ASSERT_EQ(devices, 3u);
    }
    // Both modules stay loaded, as the library has them.
    template <class Entry>
    static Entry *Find(const char *module, const char *name) {
        const HMODULE loaded = LoadLibraryA(("z:" + Suite_Module(module)).c_str());
        return reinterpret_cast<Entry *>(GetProcAddress(loaded, name));
    }
    static void Ignore(DWORD, DWORD, DWORD, DWORD, DWORD, DWORD) {}
    static void Make_Location(DWORD id, const std::string &name, DWORD country,
                              const std::vector<std::string> &texts, DWORD flags) {
        const TestKey key(Settings + "Telephony\\Locations\\Location" + std::to_string(id),
                          HKEY_LOCAL_MACHINE);
        Set_Number(key, "ID", id);
        Set_Number(key, "Country", country);
        Set_Number(key, "Flags", flags);
        key.Set("Name", name + '\0');
        const char *const names[] = {"AreaCode", "OutsideAccess", "LongDistanceAccess", "DisableCallWaiting"};
        for (int i = 0; i < 4; ++i) key.Set(names[i], texts[i] + '\0');
    }
    static void Make_Current(DWORD id) {
        Set_Number(TestKey(Settings + "Telephony\\Locations", HKEY_LOCAL_MACHINE), "CurrentID", id);
    }
    LONG Translate(const char *address, DWORD options = 2, DWORD device = 0) {
        output->dwTotalSize = 1000;
        return translate(application, device, Version, address, 0, options, output);
    }
    std::string Text(DWORD offset) const { return room + offset; }

    LineInitialize *const initialize = Find<LineInitialize>("tapi32.so", "lineInitialize");
    LineTranslateAddress *const translate = Find<LineTranslateAddress>("tapi32.so", "lineTranslateAddress");
    RasEnumDevices *const list_devices = Find<RasEnumDevices>("rasapi32.so", "RasEnumDevicesA");
    HLINEAPP application = 0;
    alignas(4) char room[1000];
    LINETRANSLATEOUTPUT *const output = reinterpret_cast<LINETRANSLATEOUTPUT *>(room);
};

TEST_F(Services, TranslateFromWhereTheUserIs) {
    constexpr DWORD Local = 0x9, Long_Distance = 0x5, International = 0x3, As_It_Is = 0x800;
    const struct {
        DWORD location;
        const char *address;
        DWORD options;
        const char *dialable, *displayable;
        DWORD results;
    } rows[] = {
        {3, "+1 (206) 555-1212", 2, "T*70,5551212", "*70, 555-1212", Local},
        {3, "+1 (206) 555-1212", 0, "T5551212", "555-1212", Local},
        {3, "+1 (425) 555-1212", 2, "T*70,14255551212", "*70, 1 (425) 555-1212", Long_Distance},
        {3, "+1 (206) 555-1212", 8, "T12065551212", "1 (206) 555-1212", Long_Distance},
        {3, "+44 (0171) 555 1212", 0, "T011441715551212", "011 44 171 555 1212", International},
        {3, "+47 22 33 44 55", 0, "T0114722334455", "011 47 22 33 44 55", International},
        {3, "+39 (06) 555", 0, "T0113906555", "011 39 06 555", International},
        {3, "+1 555.1212 |sub^name\r\n", 0, "T5551212", "555.1212", Local},
        {5, "+1 (425) 555-1212", 2, "P9,5551212", "9, 555-1212", Local},
        {5, "+1 (206) 555-1212", 2, "P9,W812065551212", "9,w8 1 (206) 555-1212", Long_Distance},
        {8, "+44 (0121) 555 1212", 2, "T0,01215551212", "0, 0121 555 1212", Long_Distance},
        {8, "+1 (206) 555-1212", 2, "T0,0012065551212", "0, 00 1 206 555-1212", International},
        {8, "+44 (0)121 555 1212", 0, "T0,01215551212", "0, 0 121 555 1212", Long_Distance},
        {3, "+49 (0)30 123456", 0, "T0114930123456", "011 49 30 123456", International},
        {45, "+1 (206) 555-1212", 0, "T0012065551212", "00 1 206 555-1212", International},
        {45, "+45 33 12 34 56", 0, "T33123456", "33 12 34 56", Local},
        {3, "411", 2, "T411", "411", As_It_Is},
        {9, "411", 2, "T411", "411", As_It_Is}, // in a country that nobody knows
        {3, "p555-1212#,t34", 2, "P5551212#,T34", "p555-1212#,t34", As_It_Is},
    };
    for (const auto &[location, address, options, dialable, displayable, results] : rows) {
        Make_Current(location);
        ASSERT_EQ(Translate(address, options), 0) << address;
        EXPECT_EQ(Text(output->dwDialableStringOffset), dialable) << address;
        EXPECT_EQ(Text(output->dwDisplayableStringOffset), displayable) << address;
        EXPECT_EQ(output->dwTranslateResults, results) << address;
    }
    Make_Current(3);
    for (const char *address : {"", "+", "+1 () 555", "+1 (206) ", "+1 (206 555", "+1 (206) 555x", "+12345 5",
                                "+0 555", "call me", "+1 (206) 5\xE4"})
        EXPECT_EQ(Translate(address), LINEERR_INVALADDRESS) << address;
}

int asked;

LONG Grow_When_Asked(HKEY key, LPCSTR name, DWORD *reserved, DWORD *type, BYTE *data, DWORD *size) {
    const LONG result = RegQueryValueExA(key, name, reserved, type, data, size);
    if (std::strcmp(name, "LongDistanceAccess") == 0 && ++asked < 3)
        RegSetValueExA(key, name, 0, REG_SZ, reinterpret_cast<const BYTE *>("22,"), 1 + asked);
    return result;
}

TEST_F(Services, ReadTextsThatGrowMeanwhile) {
    const ReplacedImport grow("tapi32.so", "RegQueryValueExA", reinterpret_cast<void *>(Grow_When_Asked));
    asked = 0;
    EXPECT_EQ(Translate("+1 (425) 555", 0), 0);
    EXPECT_EQ(Text(output->dwDialableStringOffset), "T22,1425555");
}

TEST_F(Services, SayWhatIsWrong) {
    EXPECT_EQ(Translate("1", 2, 3), LINEERR_BADDEVICEID);
    EXPECT_EQ(translate(application + 1, 0, Version, "1", 0, 0, output), LINEERR_INVALAPPHANDLE);
    EXPECT_EQ(translate(application, 0, 0x20000, "1", 0, 0, output), LINEERR_INCOMPATIBLEAPIVERSION);
    output->dwTotalSize = 39;
    EXPECT_EQ(translate(application, 0, Version, "1", 0, 0, output), LINEERR_STRUCTURETOOSMALL);
    output->dwTotalSize = 48;
    EXPECT_EQ(translate(application, 0, Version, "123", 0, 0, output), 0);
    EXPECT_EQ(output->dwNeededSize * 1000 + output->dwUsedSize, 49040u) << "it does not fit";
    EXPECT_EQ(output->dwDialableStringOffset, 0u);
    Make_Current(9);
    EXPECT_EQ(Translate("+1 555"), LINEERR_INVALCOUNTRYCODE);
    Make_Current(77);
    EXPECT_EQ(Translate("+1 555"), LINEERR_INIFILECORRUPT);
    const auto select = Find<LineSetCurrentLocation>("tapi32.so", "lineSetCurrentLocation");
    EXPECT_EQ(select(application, 77), LINEERR_INVALLOCATION);
}

TEST_F(Services, ServeTheLibrary) {
    ASSERT_EQ(Setup_TAPI(nullptr), 0u);
    for (DWORD id = 100; id < 400; ++id)
        Make_Location(id, "L" + std::to_string(id), 49, {"89", "0", "0", ""}, 1);
    char dialable[256], displayable[256], name[256];
    Create_Dial_Number("+49 (30) 1234-56", "L399", dialable, displayable);
    EXPECT_STREQ(dialable, "T0030123456");
    EXPECT_STREQ(displayable, "0 030 1234-56");
    EXPECT_TRUE(Get_Current_Dial_Location(name, 255));
    EXPECT_STREQ(name, "L399");
    Create_Dial_Number("+1 (206) 555-1212", "Home", dialable, nullptr);
    EXPECT_STREQ(dialable, "T*70,5551212");
    Create_Dial_Number(("+1 " + std::string(210, '5')).c_str(), "Home", dialable, displayable);
    EXPECT_STREQ(dialable, "") << "it does not fit into the record";
}

TEST_F(Services, TellWantOfMemoryFromWhatIsNotThere) {
    TestKey(Settings + "Remote Access\\Devices\\1", HKEY_LOCAL_MACHINE).Set("Name", "Adapter");
    unsigned long failures = 0;
    const auto sweep = [&](DWORD no_memory, auto step) {
        for (DWORD result = no_memory, nth = 1; result != 0; ++nth) {
            allocations_until_failure = nth;
            result = step();
            allocations_until_failure = 0;
            ASSERT_TRUE(result == 0 || result == no_memory) << result << " at allocation " << nth;
            failures += result != 0;
        }
    };
    sweep(static_cast<DWORD>(LINEERR_NOMEM), [&] {
        const LONG result = Translate("+1 (206) 555-1212");
        EXPECT_TRUE(result != 0 || Text(output->dwDialableStringOffset) == "T*70,5551212");
        return static_cast<DWORD>(result);
    });
    sweep(ERROR_NOT_ENOUGH_MEMORY, [&] {
        RASDEVINFOA found = {};
        DWORD size = found.dwSize = sizeof found, count = 0;
        const DWORD result = list_devices(&found, &size, &count);
        EXPECT_TRUE(result != 0 || found.szDeviceName == std::string("Adapter"));
        return result;
    });
    EXPECT_GT(failures, 20u);
}

TEST_F(Services, ListTheDevicesOfRemoteAccess) {
    DWORD size = 0, count = 9;
    EXPECT_EQ(list_devices(nullptr, &size, &count), 0u);
    EXPECT_EQ(size + count, 0u);
    const std::string devices = Settings + "Remote Access\\Devices\\";
    TestKey(devices + "1", HKEY_LOCAL_MACHINE).Set("Name", std::string("Adapter") + '\0');
    TestKey(devices + "1", HKEY_LOCAL_MACHINE).Set("Type", std::string("isdn") + '\0');
    TestKey(devices + "2", HKEY_LOCAL_MACHINE).Set("Name", std::string(500, 'n') + '\0');
    EXPECT_EQ(list_devices(nullptr, &size, &count), static_cast<DWORD>(ERROR_BUFFER_TOO_SMALL));
    EXPECT_EQ(size * 10 + count, 304u * 10 + 2);
    RASDEVINFOA found[2] = {};
    EXPECT_EQ(list_devices(found, &size, &count), static_cast<DWORD>(ERROR_INVALID_SIZE));
    found->dwSize = sizeof *found;
    size = sizeof *found;
    EXPECT_EQ(list_devices(found, &size, &count), static_cast<DWORD>(ERROR_BUFFER_TOO_SMALL));
    EXPECT_EQ(list_devices(found, &size, &count), 0u);
    EXPECT_EQ(found[1].szDeviceName, std::string(128, 'n'));
    char type[17];
    EXPECT_TRUE(Modem_Is_DSL("Adapter", type));
    EXPECT_STREQ(type, "isdn");
}

} // namespace
