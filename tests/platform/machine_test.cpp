#include <platform/kernel.h>
#include <platform/user.h>

#include <tests/platform/registry_verbs.h>
#include <tests/support/second_process.h>
#include <tests/support/test_machine.h>

#include <filesystem>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

class Machines : public MachineTest {
  protected:
    /// Files that the machine has in the host's shared memory.
    int Shared_Files() const {
        int count = 0;
        for (const auto &folder : fs::directory_iterator("/dev/shm")) {
            if (folder.path().string().find(machine.Read("machine.id")) == std::string::npos) continue;
            for ([[maybe_unused]] const auto &file : fs::directory_iterator(folder)) ++count;
        }
        return count;
    }
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

// Ends without closing anything.
SECOND_PROCESS(leaver) {
    const std::string name = process.Arguments().at(0);
    CreateFileMappingA(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, 100, name.c_str());
    CreateMutexA(nullptr, TRUE, (name + "-M").c_str());
    process.Tell("made");
    process.Hear();
    return 0;
}

TEST_F(Machines, LeaveNoSharedMemoryBehind) {
    for (const bool killed : {false, true}) {
        SecondProcess leaver("leaver", {killed ? "A" : "B"});
        leaver.Hear();
        EXPECT_EQ(Shared_Files(), 2);
        if (killed) leaver.Kill();
        leaver.Wait();
        EXPECT_EQ(Shared_Files(), killed ? 2 : 0) << "an ending process lets go";
    }
    SecondProcess next("leaver", {"C"});
    next.Hear();
    EXPECT_EQ(Shared_Files(), 2) << "the next process throws away what the killed one left";
}

SECOND_PROCESS(writer_without_descriptors) {
    const TestKey key("Key");
    MessageBoxA(nullptr, "nobody sees this", "Test", MB_OK);
    const LONG result = key.Set("v", "x");
    MessageBoxA(nullptr, "nor this", "Test", MB_OK);
    return key.error || result ? 1 : 7;
}

TEST_F(Machines, AreSafeFromAProcessWithoutStandardDescriptors) {
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    for (int descriptor : {0, 1, 2}) posix_spawn_file_actions_addclose(&actions, descriptor);
    std::string words[] = {"test", "--second-process", "writer_without_descriptors"};
    char *arguments[] = {words[0].data(), words[1].data(), words[2].data(), nullptr};
    pid_t process = -1;
    ASSERT_EQ(posix_spawn(&process, "/proc/self/exe", &actions, nullptr, arguments, environ), 0);
    posix_spawn_file_actions_destroy(&actions);
    int status = 0;
    waitpid(process, &status, 0);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 7);
    EXPECT_EQ(TestKey("Key").Get("v"), "x") << "the registry is whole";
}

} // namespace
