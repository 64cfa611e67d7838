#include <platform/machine.h>

#include <tests/support/test_machine.h>

#include <filesystem>
#include <sys/resource.h>
#include <sys/stat.h>

namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;

class Settings : public MachineTest {
  protected:
    static std::string Get(const char *name) {
        char value[256];
        return Get_Machine_Setting(name, value, sizeof value) ? value : "(not set)";
    }
};

TEST_F(Settings, AreLinesOfNameAndValue) {
    machine.Write("machine.conf", "\xEF\xBB\xBFversion = 5.1\r\n\n  # name = remark\n"
                                  "\tScreen Size=800 x 600 # wide enough\n"
                                  "number = a#1\nempty =\ntwice = 1\nTWICE = b = c\nlast = one");
    EXPECT_EQ(Get("Version"), "5.1");
    EXPECT_EQ(Get(" screen size "), "800 x 600");
    EXPECT_EQ(Get("number"), "a#1");
    EXPECT_EQ(Get("empty"), "");
    EXPECT_EQ(Get("LAST"), "one");

    char value[8] = "#######";
    EXPECT_FALSE(Get_Machine_Setting("twice", value, 5));
    EXPECT_FALSE(Get_Machine_Setting("name", value, sizeof value));
    EXPECT_STREQ(value, "#######");
    EXPECT_TRUE(Get_Machine_Setting("twice", value, 6));
    EXPECT_EQ(std::string(value, sizeof value), std::string("b = c\0#\0", 8));
}

TEST_F(Settings, FollowTheFileTheMachineAndTheProcess) {
    EXPECT_EQ(Get("name"), "(not set)");
    // The same length within one grain of the host's clock: stamps and size tell nothing.
    for (char digit = '0'; digit <= '9'; ++digit) {
        machine.Write("machine.conf", std::string("name = ") + digit);
        ASSERT_EQ(Get("name"), std::string(1, digit));
    }
    Override_Machine_Setting("NAME", "mine");
    EXPECT_EQ(Get("name"), "mine");
    Override_Machine_Setting("name", nullptr);
    EXPECT_EQ(Get("name"), "9");
    {
        const TestMachine another;
        EXPECT_EQ(Get("name"), "(not set)");
        EXPECT_TRUE(Enter_Machine(machine.Folder().c_str()));
    }
    EXPECT_EQ(Get("name"), "9");
    std::filesystem::remove(machine.Path("machine.conf"));
    EXPECT_EQ(Get("name"), "(not set)");
}

TEST_F(Settings, OutliveALackOfDescriptors) {
    machine.Set("name", "1");
    EXPECT_EQ(Get("name"), "1");
    machine.Set("name", "2");
    rlimit before;
    getrlimit(RLIMIT_NOFILE, &before);
    const rlimit none = {0, before.rlim_max};
    setrlimit(RLIMIT_NOFILE, &none);
    const std::string meanwhile = Get("name");
    setrlimit(RLIMIT_NOFILE, &before);
    EXPECT_EQ(meanwhile + Get("name"), "12");
}

TEST_F(Settings, ReportWhatIsNoLineOnceAndSkipIt) {
    testing::internal::CaptureStderr();
    machine.Write("machine.conf", "name = 1\nnonsense\n= nameless\nother = 2\n");
    EXPECT_EQ(Get("name") + Get("other"), "12");
    machine.Set("third", "3");
    EXPECT_EQ(Get("third"), "3");
    std::string said = testing::internal::GetCapturedStderr();
    EXPECT_THAT(said, AllOf(HasSubstr("machine.conf, line 2:"), HasSubstr("machine.conf, line 3:")));
    EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), 2) << said;

    testing::internal::CaptureStderr();
    std::string bytes;
    for (int i = 0; i < 200000; ++i) bytes += static_cast<char>(i * 7 + i / 256);
    machine.Write("machine.conf", "name = 1\n" + bytes + "\nother = 2\n");
    EXPECT_EQ(Get("name") + Get("other"), "12");
    machine.Write("machine.conf", "name = 1\n" + std::string(2 << 20, 'x'));
    EXPECT_EQ(Get("name"), "(not set)") << "too large to be one";
    std::filesystem::remove(machine.Path("machine.conf"));
    ASSERT_EQ(mkfifo(machine.Path("machine.conf").c_str(), 0600), 0);
    EXPECT_EQ(Get("name"), "(not set)") << "and nobody waits for a writer";
    said = testing::internal::GetCapturedStderr();
    EXPECT_LE(std::count(said.begin(), said.end(), '\n'), 11) << "a flood of lines helps nobody";
}

} // namespace
