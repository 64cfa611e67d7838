#include <platform/machine.h>

#include <tests/support/test_machine.h>

#include <cstring>
#include <filesystem>
#include <sys/stat.h>

namespace {

class Settings : public MachineTest {
  protected:
    void TearDown() override {
        for (const char *name : {"name", "other"}) Override_Machine_Setting(name, nullptr);
        MachineTest::TearDown();
    }

    static std::string Get(const char *name) {
        char value[256];
        return Get_Machine_Setting(name, value, sizeof value) ? value : "(not set)";
    }
};

TEST_F(Settings, AreLinesOfNameAndValue) {
    machine.Write("machine.conf", "\xEF\xBB\xBFversion = 5.1\r\n"
                                  "\n"
                                  "  # name = remark\n"
                                  "\tScreen Size=800 x 600 # wide enough\n"
                                  "number = a#1\n"
                                  "empty =\n"
                                  "twice = 1\n"
                                  "TWICE = b = c\n"
                                  "last = one");
    EXPECT_EQ(Get("Version"), "5.1");
    EXPECT_EQ(Get(" screen size "), "800 x 600");
    EXPECT_EQ(Get("number"), "a#1");
    EXPECT_EQ(Get("empty"), "");
    EXPECT_EQ(Get("twice"), "b = c");
    EXPECT_EQ(Get("LAST"), "one");
    EXPECT_EQ(Get("name"), "(not set)");
    EXPECT_EQ(Get(""), "(not set)");
}

TEST_F(Settings, LeaveTheBufferAloneWhenTheyDoNotFit) {
    machine.Set("name", "12345");
    char value[8] = "#######";
    EXPECT_FALSE(Get_Machine_Setting("name", value, 5));
    EXPECT_FALSE(Get_Machine_Setting("name", value, 0));
    EXPECT_FALSE(Get_Machine_Setting("other", value, sizeof value));
    EXPECT_FALSE(Get_Machine_Setting(nullptr, value, sizeof value));
    EXPECT_FALSE(Get_Machine_Setting("name", nullptr, 8));
    EXPECT_STREQ(value, "#######");
    EXPECT_TRUE(Get_Machine_Setting("name", value, 6));
    EXPECT_EQ(std::memcmp(value, "12345\0#", 8), 0);
}

TEST_F(Settings, FollowTheFileAndTheMachine) {
    EXPECT_EQ(Get("name"), "(not set)");
    // The same length within one grain of the host's clock: stamps and size tell nothing.
    for (char digit = '0'; digit <= '9'; ++digit) {
        machine.Write("machine.conf", std::string("name = ") + digit);
        ASSERT_EQ(Get("name"), std::string(1, digit));
    }
    {
        const TestMachine another;
        EXPECT_EQ(Get("name"), "(not set)");
        another.Set("name", "another's");
        EXPECT_EQ(Get("name"), "another's");
        EXPECT_TRUE(Enter_Machine(machine.Folder().c_str()));
    }
    EXPECT_EQ(Get("name"), "9");
    std::filesystem::remove(machine.Path("machine.conf"));
    EXPECT_EQ(Get("name"), "(not set)");
}

TEST_F(Settings, AreOverriddenForTheProcess) {
    machine.Set("name", "from the file");
    Override_Machine_Setting("NAME", "mine");
    Override_Machine_Setting("other", "");
    EXPECT_EQ(Get("name"), "mine");
    EXPECT_EQ(Get("other"), "");
    Override_Machine_Setting("name", nullptr);
    Override_Machine_Setting("other", nullptr);
    Override_Machine_Setting(nullptr, "x");
    EXPECT_EQ(Get("name"), "from the file");
    EXPECT_EQ(Get("other"), "(not set)");
}

TEST_F(Settings, ReportWhatIsNoLineOnceAndSkipIt) {
    machine.Write("machine.conf", "name = 1\nnonsense\n= nameless\nother = 2\n");
    testing::internal::CaptureStderr();
    EXPECT_EQ(Get("name") + Get("other"), "12");
    machine.Set("third", "3");
    EXPECT_EQ(Get("third"), "3");
    const std::string said = testing::internal::GetCapturedStderr();
    EXPECT_NE(said.find("machine.conf, line 2:"), std::string::npos) << said;
    EXPECT_NE(said.find("machine.conf, line 3:"), std::string::npos) << said;
    EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), 2) << said;
}

TEST_F(Settings, StandAFileThatIsNone) {
    std::string bytes;
    for (int i = 0; i < 200000; ++i) bytes += static_cast<char>(i * 7 + i / 256);
    testing::internal::CaptureStderr();
    machine.Write("machine.conf", "name = 1\n" + bytes + "\nother = 2\n");
    EXPECT_EQ(Get("name") + Get("other"), "12");
    const std::string said = testing::internal::GetCapturedStderr();
    EXPECT_LE(std::count(said.begin(), said.end(), '\n'), 11);

    testing::internal::CaptureStderr();
    machine.Write("machine.conf", "name = 1\n" + std::string(2 << 20, 'x'));
    EXPECT_EQ(Get("name"), "(not set)") << "too large to be one";
    std::filesystem::remove(machine.Path("machine.conf"));
    std::filesystem::create_directory(machine.Path("machine.conf"));
    EXPECT_EQ(Get("name"), "(not set)");
    std::filesystem::remove(machine.Path("machine.conf"));
    ASSERT_EQ(mkfifo(machine.Path("machine.conf").c_str(), 0600), 0);
    EXPECT_EQ(Get("name"), "(not set)") << "and nobody waits for a writer";
    testing::internal::GetCapturedStderr();
}

} // namespace
