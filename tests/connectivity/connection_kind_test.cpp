#include <kelmara/connectivity/connection_kind.h>
#include <kelmara/foundation/safe_str.h>
#include <kelmara/localization/string_table.h>
#include <kelmara/system/file.h>

#include <tests/connectivity/fake_services.h>
#include <tests/support/registry_verbs.h>
#include <tests/support/second_process.h>
#include <tests/support/test_memory.h>

#include <cstring>
#include <filesystem>

namespace {

RASDEVINFOA Device(const std::string &type, const std::string &name) {
    RASDEVINFOA device = {};
    device.dwSize = sizeof device;
    std::memcpy(device.szDeviceType, type.data(), type.size());
    std::memcpy(device.szDeviceName, name.data(), name.size());
    return device;
}

// "yes TYPE" or "no TYPE", with "~" for a type that was not touched.
std::string Kind(const std::string &name) {
    char type[18] = "~";
    type[17] = '!';
    const bool dsl = Modem_Is_DSL(name.c_str(), type);
    EXPECT_EQ(type[17], '!');
    EXPECT_EQ(Modem_Is_DSL(name.c_str(), nullptr), dsl);
    return std::string(dsl ? "yes " : "no ") + type;
}

class ConnectionKind : public ServicesTest {};

TEST_F(ConnectionKind, IsToldByTypeAndVersion) {
    services.devices = {Device("modem", "Modem"),
                        Device("SERIAL", "Cable"),
                        Device("VPN", "Tunnel"),
                        Device("IsDN", "Line"),
                        Device("isdn", "Twice"),
                        Device("modem", "Twice"),
                        Device(std::string(17, 't'), std::string(129, 'n'))};
    for (const char *windows : {"95", "98", "me", "nt4", "2000", "xp"}) {
        const bool above_nt_4 = std::strchr("2x", *windows);
        Override_Machine_Setting("windows", windows);
        EXPECT_EQ(Kind("Modem"), "no modem") << windows;
        EXPECT_EQ(Kind("Cable"), above_nt_4 ? "yes SERIAL" : "no SERIAL") << windows;
        EXPECT_EQ(Kind("Tunnel"), above_nt_4 ? "no VPN" : "yes VPN") << windows;
        EXPECT_EQ(Kind("Line") + Kind("Twice"), "yes IsDNyes isdn") << windows;
        EXPECT_EQ(Kind("line") + Kind("") + Kind("Lin"), "no ~no ~no ~") << windows;
    }
    EXPECT_EQ(Kind(std::string(129, 'n')), "no " + std::string(16, 't')) << "without terminators";
    EXPECT_FALSE(Modem_Is_DSL(nullptr, nullptr));
    const NoLeak no_leak;
    EXPECT_EQ(Kind("Line"), "yes IsDN");
    const FailingMemory none(1, true);
    EXPECT_EQ(Kind("Line"), "no ~");
}

TEST_F(ConnectionKind, IsNotToldByWhatAServiceHasNotFilled) {
    services.devices = {Device("isdn", "Line")};
    services.list = [](RASDEVINFOA *, DWORD &, DWORD &count) { count = 0xFFFFFFFF; };
    EXPECT_EQ(Kind("Line") + Kind("None"), "yes isdnno ~") << "more than there is room for";
    for (const DWORD told : {0u, 1u, 151u, 0xFFFFFFFFu}) {
        services.list = [=](RASDEVINFOA *, DWORD &size, DWORD &) { size = told; };
        EXPECT_EQ(Kind("Line"), "no ~") << told;
    }
}

void Write_Texts(const char *device) {
    CStringTable table(true);
    CKMFile file;
    const std::string line = std::string(device) + "\tKMSTR_XP_PPPOE_DEVICE\t0\t ";
    ASSERT_EQ(table.New_Table() + file.Open("c:\\confPlugins.ltx", true, true), 0);
    ASSERT_GE(table.Import_String(line.c_str()), 0);
    ASSERT_EQ(table.Save_Changes(&file), 0);
}

SECOND_PROCESS(pppoe) {
    Install_Test_Memory();
    const ServicesInPlace in_place("*");
    for (std::string command; !(command = process.Hear()).empty();) {
        if (command.starts_with("write "))
            Write_Texts(command.c_str() + 6);
        else if (command.starts_with("windows "))
            Override_Machine_Setting("windows", command.c_str() + 8);
        else
            process.Tell(Kind(command));
    }
    return 0;
}

TEST_F(ConnectionKind, KnowsTheNameThatXpShowsForPppoe) {
    TestKey("Software\\Dunmerit Software\\KelMara", HKEY_LOCAL_MACHINE).Set("Localization", {"c:\\", 4});
    std::filesystem::create_directories(machine.Path("drive_c"));
    SecondProcess process("pppoe");
    const struct {
        const char *before, *device, *kind, *why;
    } steps[] = {
        {"windows xp", "Broadband", "no ~", "no texts yet"},
        {"write Broadband", "broadband", "no ~", "in another letter case"},
        {"windows 2000", "Broadband", "yes PPPOE", "it is known by now"},
        {"write Other", "Other", "no ~", "filled once"},
        {"windows xp", "Broadband", "yes PPPOE", "filled once"},
    };
    for (const auto &[before, device, kind, why] : steps) {
        process.Tell(before);
        process.Tell(device);
        EXPECT_EQ(process.Hear(), kind) << why;
    }
    SecondProcess older("pppoe");
    for (const char *line : {"windows 2000", "write Broadband", "Broadband"}) older.Tell(line);
    EXPECT_EQ(older.Hear(), "no ~") << "only XP shows it";
}

} // namespace
