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
    services.devices = {Device("modem", "Modem"), Device("SERIAL", "Cable"),  Device("vpn", "Tunnel"),
                        Device("isdn", "Line"),   Device("IsDN", "Line two"), Device("isdn", "Twice"),
                        Device("modem", "Twice"), Device("Serial", "Small"),  Device("VPN", "Large")};
    const struct {
        const char *windows;
        bool above_nt_4;
    } rows[] = {{"95", false}, {"98", false}, {"me", false}, {"nt4", false}, {"2000", true}, {"xp", true}};
    for (const auto &[windows, above] : rows) {
        Override_Machine_Setting("windows", windows);
        EXPECT_EQ(Kind("Modem"), "no modem") << windows;
        EXPECT_EQ(Kind("Cable"), above ? "yes SERIAL" : "no SERIAL") << windows;
        EXPECT_EQ(Kind("Small"), above ? "yes Serial" : "no Serial") << windows;
        EXPECT_EQ(Kind("Tunnel"), above ? "no vpn" : "yes vpn") << windows;
        EXPECT_EQ(Kind("Large"), above ? "no VPN" : "yes VPN") << windows;
        EXPECT_EQ(Kind("Line") + Kind("Line two") + Kind("Twice"), "yes isdnyes IsDNyes isdn") << windows;
        EXPECT_EQ(Kind("line") + Kind("") + Kind("Lin"), "no ~no ~no ~") << windows;
    }
    EXPECT_FALSE(Modem_Is_DSL(nullptr, nullptr));
    const NoLeak no_leak;
    EXPECT_EQ(Kind("Line"), "yes isdn");
    const FailingMemory none(1, true);
    EXPECT_EQ(Kind("Line"), "no ~");
}

TEST_F(ConnectionKind, IsNotToldByWhatAServiceHasNotFilled) {
    const std::string long_name(129, 'n'), long_type(17, 't');
    services.devices = {Device(long_type, long_name)};
    EXPECT_EQ(Kind(long_name), "no " + long_type.substr(1)) << "without terminators";
    services.devices = {Device("isdn", "Line")};
    services.list = [](RASDEVINFOA *, DWORD &size, DWORD &count) { size = count = 0xFFFFFFFF; };
    EXPECT_EQ(Kind("Line"), "no ~");
    services.list = [](RASDEVINFOA *out, DWORD &, DWORD &count) { count = out ? 0xFFFFFFFF : 0; };
    EXPECT_EQ(Kind("Line") + Kind("None"), "yes isdnno ~") << "more than there is room for";
    for (const DWORD told : {0u, 1u, 151u}) {
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
    const std::string folder = "c:\\";
    TestKey("Software\\Dunmerit Software\\KelMara", HKEY_LOCAL_MACHINE).Set("Localization", folder + '\0');
    std::filesystem::create_directories(machine.Path("drive_c"));
    SecondProcess process("pppoe");
    const auto kind = [&](const char *name) {
        process.Tell(name);
        return process.Hear();
    };
    EXPECT_EQ(kind("Broadband"), "no ~") << "no texts yet";
    process.Tell("write Broadband");
    process.Tell("windows 2000");
    EXPECT_EQ(kind("Broadband"), "no ~") << "only XP shows it";
    process.Tell("windows xp");
    EXPECT_EQ(kind("Broadband"), "yes PPPOE");
    EXPECT_EQ(kind("broadband"), "no ~");
    process.Tell("write Other");
    EXPECT_EQ(kind("Other"), "no ~");
    EXPECT_EQ(kind("Broadband"), "yes PPPOE") << "filled once";
    process.Tell("windows 98");
    EXPECT_EQ(kind("Broadband"), "yes PPPOE");
    EXPECT_EQ(process.Wait(), 0) << process.Errors();
}

} // namespace
