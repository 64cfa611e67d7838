// What stands under a machine's names by accident: names that vanish or have passed to others, what a killed
// or a hampered process has left, and the want of descriptors.

#include <tests/platform/com_servers.h>
#include <tests/support/handles.h>
#include <tests/support/host_permissions.h>

#include <algorithm>
#include <atomic>
#include <dirent.h>
#include <dlfcn.h>
#include <fstream>
#include <sys/file.h>
#include <sys/resource.h>
#include <thread>

namespace {

namespace fs = std::filesystem;

constexpr uid_t Other = 65534;
std::atomic<bool> lists_dots = true;

// While it lives, this process gets no more than so many.
class DescriptorsLeft {
  public:
    explicit DescriptorsLeft(unsigned count) {
        const int next = dup(0);
        close(next);
        getrlimit(RLIMIT_NOFILE, &before_);
        const rlimit now = {static_cast<rlim_t>(next) + count, before_.rlim_max};
        setrlimit(RLIMIT_NOFILE, &now);
    }
    ~DescriptorsLeft() { setrlimit(RLIMIT_NOFILE, &before_); }

  private:
    rlimit before_ = {};
};

long Mutex_Error() {
    return TestHandle(CreateMutexA(nullptr, FALSE, "m")).error;
}

void Put_Folder(const fs::path &path, unsigned mode, const std::initializer_list<const char *> files) {
    fs::create_directories(path);
    for (const char *file : files) std::ofstream(path / file).put('.');
    fs::permissions(path, fs::perms(mode));
}

} // namespace

// The host's, for the library, too: as a host whose folders do not list "." and "..".
extern "C" [[gnu::visibility("default")]] dirent *readdir(DIR *folder) {
    static const auto host = reinterpret_cast<dirent *(*)(DIR *)>(dlsym(RTLD_NEXT, "readdir64"));
    dirent *entry = host(folder);
    while (entry && !lists_dots && std::string(entry->d_name).find_first_not_of('.') == std::string::npos)
        entry = host(folder);
    return entry;
}

// On the machines of their argument, for which they have not asked yet.
SECOND_PROCESS(user_without_descriptors) {
    setenv("KELMARA_MACHINE", process.Arguments()[0].c_str(), 1);
    const auto folder = [] { return Machine_Folder() ? "there " : "none "; };
    std::string answers;
    {
        const DescriptorsLeft none(0);
        answers = std::string(folder()) + folder();
    }
    answers += folder();
    const DescriptorsLeft none(0);
    process.Tell(answers + std::to_string(Mutex_Error()));
    return 0;
}

SECOND_PROCESS(user_in_two_persons) {
    setenv("KELMARA_MACHINE", process.Arguments()[0].c_str(), 1);
    if (setresuid(Other, 0, 0) != 0) return 1;
    process.Tell(Machine_Folder() ? "there" : "none");
    return 0;
}

// Has no machine before it hears that there is one.
SECOND_PROCESS(late_user) {
    HKEY key = nullptr;
    DWORD size = 0;
    const auto open_key = [&] { return RegOpenKeyExA(HKEY_CURRENT_USER, "key", 0, KEY_READ, &key); };
    process.Tell(std::to_string(open_key()));
    process.Hear();
    process.Tell(std::to_string(open_key()));
    process.Tell(std::to_string(RegQueryValueExA(key, "value", nullptr, nullptr, nullptr, &size)));
    RegCloseKey(key);
    return 0;
}

SECOND_PROCESS(loader_of_a_module) {
    Machine_Folder();
    process.Tell("ready");
    const HMODULE loaded = LoadLibraryA(process.Hear().c_str());
    process.Tell(std::to_string(Error_Of(loaded)));
    if (loaded) FreeLibrary(loaded);
    return 0;
}

namespace {

class HostileNames : public ComServers {
  protected:
    bool Enter(const std::string &relative) const { return Enter_Machine(machine.Path(relative).c_str()); }
};

TEST_F(HostileNames, LetClassesBeListedWhileTheirFolderGoes) {
    const DWORD first = Register();
    const fs::path folder = Class_Socket().parent_path();
    CoRevokeClassObject(first);
    std::atomic<bool> done = false;
    std::thread another_server([&] {
        for (; !done; usleep(1)) rmdir(folder.c_str()); // without a pause nobody would ever get to it
    });
    for (int i = 0; i < 2000 && !HasFailure(); ++i) EXPECT_EQ(CoRevokeClassObject(Register()), S_OK);
    done = true;
    another_server.join();
}

TEST_F(HostileNames, LeaveNoFolderInMemoryWhereNothingWasOpened) {
    Leave_Machine();
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(TestHandle(OpenEventA(EVENT_ALL_ACCESS, FALSE, "none")).error, ERROR_FILE_NOT_FOUND);
        EXPECT_FALSE(fs::exists(machine.Shared_Folder())) << "only looked";
    }
    const DescriptorsLeft for_the_lock_of_names(1);
    EXPECT_EQ(Mutex_Error(), ERROR_TOO_MANY_OPEN_FILES);
    EXPECT_FALSE(fs::exists(machine.Shared_Folder())) << "failed behind the folder's making";
}

TEST_F(HostileNames, CanBeHadAgainOnceThereAreDescriptors) {
    setenv("KELMARA_MACHINE", machine.Path("drive_c/none").c_str(), 1);
    for (const char *folder : {"", "drive_c/new"}) {
        SecondProcess user("user_without_descriptors", {machine.Path(folder)});
        EXPECT_EQ(user.Hear(), "none none there " + std::to_string(ERROR_TOO_MANY_OPEN_FILES)) << folder;
        EXPECT_EQ(user.Wait(), 0);
        EXPECT_EQ(std::count(user.Errors().begin(), user.Errors().end(), '\n'), 1) << user.Errors();
    }
}

TEST_F(HostileNames, WhatIsOpenedByTheCallThatFirstHasTheMachineLives) {
    const fs::path way = machine.Path("drive_c/way"), folder = machine.Folder();
    machine.Write("drive_c/way", "not a folder yet");
    TestKey("key").Set("value", "text");
    setenv("KELMARA_MACHINE", (way / folder.filename()).c_str(), 1);
    SecondProcess user("late_user");
    EXPECT_EQ(user.Hear(), std::to_string(ERROR_CANTOPEN));
    fs::remove(way);
    fs::create_directory_symlink(folder.parent_path(), way);
    user.Tell("go");
    EXPECT_EQ(user.Hear(), "0");
    EXPECT_EQ(user.Hear(), "0") << "of the key";
}

// As long as another process looks whether it may have it.
TEST_F(HostileNames, FolderThatIsLockedForAWhileIsNotRefusedForGood) {
    const std::string folder = machine.Path("drive_c/open");
    Put_Folder(folder, 0777, {});
    const int another_taker = open(folder.c_str(), O_RDONLY | O_DIRECTORY);
    ASSERT_EQ(flock(another_taker, LOCK_EX), 0);
    EXPECT_FALSE(Enter("drive_c/open"));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_SHARING_VIOLATION));
    close(another_taker);
    EXPECT_TRUE(Enter("drive_c/open"));
    Enter("");
}

TEST_F(HostileNames, AreJudgedByTheEffectiveUser) {
    if (geteuid() != 0) GTEST_SKIP() << "only root can be two users";
    setenv("KELMARA_MACHINE", machine.Path("drive_c/none").c_str(), 1);
    EXPECT_EQ(SecondProcess("user_in_two_persons", {machine.Folder()}).Hear(), "there");
}

TEST_F(HostileNames, TornNumberIsReplacedByItsOwnerAloneAndOneAtATime) {
    const std::string number = "drive_c/torn/machine.id";
    machine.Write(number, "");
    fs::permissions(machine.Path(number), fs::perms(0666));
    EXPECT_FALSE(Enter("drive_c/torn")) << "anybody's";
    fs::permissions(machine.Path(number), fs::perms(0600));
    const int another_maker = open(machine.Path("drive_c/torn").c_str(), O_RDONLY | O_DIRECTORY);
    ASSERT_EQ(flock(another_maker, LOCK_EX), 0);
    EXPECT_FALSE(Enter("drive_c/torn")) << "another one takes his time";
    EXPECT_EQ(machine.Read(number), "");
    close(another_maker);
    EXPECT_TRUE(Enter("drive_c/torn"));
    Enter("");
}

// By makers that were killed before they gave them to their owner, under a umask that takes from him.
TEST_F(HostileNames, LeftWithoutTheOwnersBitsAreGivenBackWhereNothingIsInThem) {
    machine.Write("drive_c/half/machine.id", std::string(32, 'a'));
    machine.Write("drive_c/half/names.lock", "");
    fs::permissions(machine.Path("drive_c/half/names.lock"), fs::perms(0400));
    Put_Folder(machine.Path("drive_c/half/registry"), 0500, {});
    Put_Folder(machine.Path("drive_c/shut"), 0, {});
    Put_Folder(machine.Path("drive_c/own"), 0, {"precious"});
    const HostPermissions hold;
    EXPECT_TRUE(Enter("drive_c/shut/machine"));
    EXPECT_FALSE(Enter("drive_c/own/machine"));
    EXPECT_EQ(fs::status(machine.Path("drive_c/own")).permissions(), fs::perms(0));
    EXPECT_TRUE(Enter("drive_c/half"));
    EXPECT_EQ(Mutex_Error(), 0);
    EXPECT_EQ(TestKey("key").error, 0);
    Enter("");
    fs::permissions(machine.Path("drive_c/own"), fs::perms(0700));
}

TEST_F(HostileNames, FolderThatListsNoDotsIsNotTakenForEmpty) {
    Leave_Machine();
    Put_Folder(machine.Shared_Folder(), 0777, {"one", "two"});
    lists_dots = false;
    EXPECT_EQ(Mutex_Error(), ERROR_ACCESS_DENIED);
    lists_dots = true;
    fs::remove_all(machine.Shared_Folder());
}

// The library lies where another user puts a file in its place, once it is gone.
TEST_F(HostileNames, GiveNobodyTheRightsOfTheLibraryThatHadThem) {
    if (geteuid() != 0) GTEST_SKIP() << "only root can give files away";
    Dl_info info;
    ASSERT_NE(dladdr(reinterpret_cast<void *>(&Machine_Folder), &info), 0);
    const fs::path folder = machine.Path("sticky"), library = folder / fs::path(info.dli_fname).filename();
    const fs::path module = machine.Path("drive_c/anothers.dll");
    Put_Folder(module.parent_path(), 0700, {});
    Put_Folder(folder, 01777, {});
    fs::copy_file(Test_Module("plain"), module);
    ASSERT_EQ(chown(module.c_str(), Other, Other), 0);
    const auto put_library = [&] {
        fs::remove(library);
        fs::copy_file(info.dli_fname, library);
        return chown(library.c_str(), Other, Other) == 0;
    };
    setenv("LD_LIBRARY_PATH", folder.c_str(), 1);
    for (const bool replaced : {false, true}) {
        ASSERT_TRUE(put_library());
        SecondProcess loader("loader_of_a_module");
        EXPECT_EQ(loader.Hear(), "ready");
        EXPECT_TRUE(!replaced || put_library());
        loader.Tell("c:\\anothers.dll");
        EXPECT_EQ(loader.Hear(), std::to_string(replaced ? ERROR_ACCESS_DENIED : 0)) << replaced;
    }
    unsetenv("LD_LIBRARY_PATH");
}

} // namespace
