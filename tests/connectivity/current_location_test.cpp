#include <kelmara/connectivity/tapi.h>

#include <tests/support/registry_verbs.h>

#include <cstring>

namespace {

const std::string Telephony_Locations = "Software\\Microsoft\\Windows\\CurrentVersion\\Telephony\\Locations";

void Set_Number(const TestKey &key, const char *name, DWORD number) {
    ASSERT_EQ(key.Set(name, std::string(reinterpret_cast<const char *>(&number), 4), REG_DWORD), 0);
}

class CurrentLocation : public MachineTest {
  protected:
    void TearDown() override {
        Override_Machine_Setting("windows", nullptr);
        MachineTest::TearDown();
    }
    static void Make(const std::string &subkey, DWORD id, const std::string &name) {
        const TestKey key(Telephony_Locations + "\\" + subkey, HKEY_LOCAL_MACHINE);
        Set_Number(key, "ID", id);
        key.Set("Name", name + '\0');
    }
    static void Make_Current(DWORD id) {
        Set_Number(TestKey(Telephony_Locations, HKEY_LOCAL_MACHINE), "CurrentID", id);
    }
    void Write_File(const std::string &lines) const {
        machine.Write("drive_c/WINDOWS/telephon.ini", "[Locations]\n" + lines + "\n");
    }
    /// "(none)" for false, and then nothing may be touched. The buffer has a byte more than `size`.
    static std::string Name(int size = 255) {
        std::vector<char> out(static_cast<std::size_t>(size) + 1, '~');
        if (Get_Current_Dial_Location(out.data(), size)) return out.data();
        EXPECT_EQ(std::string(out.begin(), out.end()), std::string(out.size(), '~'));
        return "(none)";
    }
};

TEST_F(CurrentLocation, IsKeptWhereTheVersionKeepsIt) {
    EXPECT_EQ(Name(), "(none)") << "no locations at all";
    Make("Location0", 7, "Registry");
    Make_Current(7);
    Write_File("CurrentLocation=0,1\nLocation1=1,\"File\",\"9,\"");
    for (const char *windows : {"95", "98", "me", "nt4", "2000", "xp"}) {
        Override_Machine_Setting("windows", windows);
        EXPECT_EQ(Name(), std::strcmp(windows, "95") == 0 ? "File" : "Registry") << windows;
    }
}

TEST_F(CurrentLocation, IsFoundByItsIdInTheRegistry) {
    Make("Location0", 0, "Zero");
    EXPECT_EQ(Name(), "(none)") << "none is the current one";
    TestKey(Telephony_Locations + "\\A", HKEY_LOCAL_MACHINE).Set("Name", "no id");
    for (DWORD id = 1; id < 300; ++id) Make("Location" + std::to_string(id), id, "At " + std::to_string(id));
    Make_Current(299);
    EXPECT_EQ(Name(), "At 299");
    Make_Current(300);
    EXPECT_EQ(Name(), "(none)");
    Make(std::string(255, 'L'), 300, "Long key");
    EXPECT_EQ(Name(), "Long key");
    Set_Number(TestKey(Telephony_Locations + "\\Nameless", HKEY_LOCAL_MACHINE), "ID", 301);
    Make_Current(301);
    EXPECT_EQ(Name(), "");
}

TEST_F(CurrentLocation, IsCutToTheSizeThatIsAskedFor) {
    char out[] = "~";
    Make_Current(1);
    Make("Location", 1, "Long name");
    EXPECT_EQ(Name(5), "Long ");
    EXPECT_EQ(Name(9) + Name(0), "Long name");
    EXPECT_FALSE(Get_Current_Dial_Location(nullptr, 5) || Get_Current_Dial_Location(out, -1));
    for (const std::size_t length : {255, 256, 257, 65536}) {
        Make("Location", 1, std::string(length, 'n'));
        EXPECT_EQ(Name(1000), std::string(255, 'n')) << length;
    }
    TestKey(Telephony_Locations + "\\Location", HKEY_LOCAL_MACHINE).Set("Name", "open");
    EXPECT_EQ(Name(), "open") << "stored without a terminator";
}

TEST_F(CurrentLocation, IsReadFromTheFile) {
    Override_Machine_Setting("windows", "95");
    EXPECT_EQ(Name(), "(none)") << "no file";
    const std::string current = "CurrentLocation=0,1\n";
    const std::pair<std::string, std::string> rows[] = {
        {current + "Location0=0,zero\nLocation1=1,\"Home\",\"9,\",\"\",206", "Home"},
        {current + "Location1=1,,x", ""},
        {"CurrentLocation=0,1,2\nLocation1,2=1,Odd", "Odd"},
        {"CurrentLocation=,1\nLocation1=,Home", "Home"},
        {"CurrentLocation=1\nLocation1=1,Home", "(none)"},
        {"CurrentLocation=0,\nLocation1=1,Home", "(none)"},
        {current + "Location1=Home", "(none)"},
        {current, "(none)"},
        {"CurrentLocation=\nLocation=1,Home", "(none)"},
        {current + "Location1=1," + std::string(9000, 'n'), std::string(252, 'n')},
        {"CurrentLocation=0," + std::string(9000, '1'), "(none)"},
    };
    for (const auto &[lines, name] : rows) {
        Write_File(lines);
        EXPECT_EQ(Name(), name) << lines.substr(0, 200);
    }
}

} // namespace
