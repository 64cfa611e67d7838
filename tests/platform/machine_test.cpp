#include <platform/kernel.h>
#include <platform/machine.h>
#include <platform/registry.h>
#include <platform/user.h>

#include <tests/support/second_process.h>
#include <tests/support/test_machine.h>

#include <filesystem>
#include <spawn.h>
#include <sys/stat.h>
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
};

TEST_F(Machines, AreNotMadeOfAFolderWithOtherThingsInIt) {
    const std::string folder = machine.Path("drive_c/somebodys");
    machine.Write("drive_c/somebodys/thesis.txt", "years of work");
    fs::permissions(folder, fs::perms(0755));
    EXPECT_FALSE(Enter_Machine(folder.c_str()));
    EXPECT_FALSE(Remove_Machine(folder.c_str()));
    EXPECT_EQ(machine.Read("drive_c/somebodys/thesis.txt"), "years of work");
    EXPECT_EQ(fs::status(folder).permissions(), fs::perms(0755));
    EXPECT_EQ(Machine_Folder(), machine.Folder()) << "this process is where it was";
    EXPECT_FALSE(Enter_Machine(machine.Path("machine.id").c_str()));
    fs::create_directory_symlink(folder, machine.Path("link"));
    EXPECT_FALSE(Enter_Machine(machine.Path("link").c_str()));
}

TEST_F(Machines, AreRemovedWithAllThatTheyHave) {
    const std::string folder = machine.Path("drive_c/inner");
    ASSERT_TRUE(Enter_Machine(folder.c_str()));
    struct stat status;
    ASSERT_EQ(stat(folder.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0700u);
    EXPECT_EQ(RegFlushKey(HKEY_LOCAL_MACHINE), 0);
    ASSERT_TRUE(Enter_Machine(machine.Folder().c_str()));
    EXPECT_TRUE(Remove_Machine(folder.c_str()));
    EXPECT_FALSE(fs::exists(folder));
    EXPECT_FALSE(Remove_Machine(folder.c_str()));
}

TEST_F(Machines, StandAnEmptyNumberFromAPowerFailure) {
    const std::string folder = machine.Path("drive_c/inner");
    machine.Write("drive_c/inner/machine.id", "");
    EXPECT_TRUE(Enter_Machine(folder.c_str()));
    EXPECT_EQ(machine.Read("drive_c/inner/machine.id").size(), 32u);
    machine.Write("drive_c/inner/machine.id", "no number at all");
    EXPECT_FALSE(Enter_Machine(folder.c_str()));
    Enter_Machine(machine.Folder().c_str());
}

SECOND_PROCESS(leaver) {
    CreateFileMappingA(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, 100,
                       process.Arguments().at(0).c_str());
    CreateMutexA(nullptr, TRUE, (process.Arguments().at(0) + "-M").c_str());
    process.Tell("made");
    process.Hear();
    return 0; // without closing anything
}

TEST_F(Machines, LeaveNoSharedMemoryBehind) {
    {
        SecondProcess leaver("leaver", {"A"});
        leaver.Hear();
        EXPECT_EQ(Shared_Files(), 2);
        leaver.Wait();
        EXPECT_EQ(Shared_Files(), 0) << "an ending process lets go";
    }
    SecondProcess killed("leaver", {"B"});
    killed.Hear();
    killed.Kill();
    killed.Wait();
    EXPECT_EQ(Shared_Files(), 2);
    SecondProcess next("leaver", {"C"});
    next.Hear();
    EXPECT_EQ(Shared_Files(), 2) << "the next process throws away what the killed one left";
}

SECOND_PROCESS(writer_without_descriptors) {
    HKEY key = nullptr;
    LONG result =
        RegCreateKeyExA(HKEY_LOCAL_MACHINE, "Key", 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr);
    MessageBoxA(nullptr, "nobody sees this", "Test", MB_OK);
    if (result == 0) result = RegSetValueExA(key, "v", 0, REG_SZ, reinterpret_cast<const BYTE *>("x"), 2);
    MessageBoxA(nullptr, "nor this", "Test", MB_OK);
    return result == 0 ? 7 : 1;
}

TEST_F(Machines, AreSafeFromAProcessWithoutStandardDescriptors) {
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    for (int descriptor = 0; descriptor < 3; ++descriptor)
        posix_spawn_file_actions_addclose(&actions, descriptor);
    std::string words[] = {"test", "--second-process", "writer_without_descriptors"};
    char *arguments[] = {words[0].data(), words[1].data(), words[2].data(), nullptr};
    pid_t process = -1;
    ASSERT_EQ(posix_spawn(&process, "/proc/self/exe", &actions, nullptr, arguments, environ), 0);
    posix_spawn_file_actions_destroy(&actions);
    int status = 0;
    waitpid(process, &status, 0);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 7);
    HKEY key = nullptr;
    EXPECT_EQ(RegOpenKeyExA(HKEY_LOCAL_MACHINE, "Key", 0, KEY_READ, &key), 0) << "the registry is whole";
    EXPECT_EQ(RegQueryValueExA(key, "v", nullptr, nullptr, nullptr, nullptr), 0);
    RegCloseKey(key);
}

} // namespace
