#include <platform/kernel.h>
#include <platform/user.h>

#include <tests/support/registry_verbs.h>
#include <tests/support/second_process.h>
#include <tests/support/test_machine.h>

#include <filesystem>
#include <sys/wait.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

class Machines : public MachineTest {
  protected:
    static bool Enter(const std::string &folder) { return Enter_Machine(folder.c_str()); }
};

TEST_F(Machines, AreNotMadeOfAFolderWithOtherThingsInIt) {
    const std::string folder = machine.Path("drive_c/somebodys");
    machine.Write("drive_c/somebodys/thesis.txt", "years of work");
    fs::permissions(folder, fs::perms(0755));
    EXPECT_FALSE(Enter(folder));
    EXPECT_FALSE(Remove_Machine(folder.c_str()));
    EXPECT_EQ(machine.Read("drive_c/somebodys/thesis.txt"), "years of work");
    EXPECT_EQ(fs::status(folder).permissions(), fs::perms(0755));
    EXPECT_EQ(Machine_Folder(), machine.Folder()) << "this process is where it was";
    EXPECT_FALSE(Enter(machine.Path("machine.id")));
    fs::create_directory_symlink(folder, machine.Path("link"));
    EXPECT_FALSE(Enter(machine.Path("link")));
}

TEST_F(Machines, AreRemovedWithAllThatTheyHave) {
    const std::string folder = machine.Path("drive_c/inner");
    ASSERT_TRUE(Enter(folder));
    EXPECT_EQ(fs::status(folder).permissions(), fs::perms(0700));
    EXPECT_EQ(RegFlushKey(HKEY_LOCAL_MACHINE), 0);
    ASSERT_TRUE(Enter(machine.Folder()));
    EXPECT_TRUE(Remove_Machine(folder.c_str()));
    EXPECT_FALSE(fs::exists(folder));
    EXPECT_FALSE(Remove_Machine(folder.c_str()));
}

TEST_F(Machines, StandAnEmptyNumberFromAPowerFailure) {
    const std::string number = "drive_c/inner/machine.id";
    machine.Write(number, "");
    EXPECT_TRUE(Enter(machine.Path("drive_c/inner")));
    EXPECT_EQ(machine.Read(number).size(), 32u);
    machine.Write(number, "no number at all");
    EXPECT_FALSE(Enter(machine.Path("drive_c/inner")));
    Enter(machine.Folder());
}

TEST_F(Machines, AreMadeByAllThatStartTogether) {
    for (int round = 0; round < 10; ++round) {
        const std::string folder = machine.Path("drive_c/new" + std::to_string(round));
        if (round == 0)
            machine.Write("drive_c/new0/machine.id." + std::string(32, 'a'), "of one that was killed");
        std::vector<pid_t> makers(4);
        for (pid_t &maker : makers) {
            maker = fork();
            if (maker == 0) _exit(Enter(folder) ? 0 : 1);
        }
        for (const pid_t maker : makers) {
            int status = -1;
            EXPECT_EQ(waitpid(maker, &status, 0), maker);
            EXPECT_EQ(status, 0) << round;
        }
        Enter(folder), Enter(machine.Folder());
        EXPECT_TRUE(Remove_Machine(folder.c_str()));
    }
}

SECOND_PROCESS(writer_without_descriptors) {
    const TestKey key("Key");
    MessageBoxA(nullptr, "nobody sees this", "Test", MB_OK);
    const LONG result = key.Set("v", "x");
    MessageBoxA(nullptr, "nor this", "Test", MB_OK);
    return key.error || result ? 1 : 7;
}

TEST_F(Machines, AreSafeFromAProcessWithoutStandardDescriptors) {
    const pid_t process = fork();
    if (process == 0) {
        for (int descriptor : {0, 1, 2}) close(descriptor);
        execl("/proc/self/exe", "test", "--second-process", "writer_without_descriptors", nullptr);
    }
    int status = 0;
    waitpid(process, &status, 0);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 7);
    EXPECT_EQ(TestKey("Key").Get("v"), "x") << "the registry is whole";
}

} // namespace
