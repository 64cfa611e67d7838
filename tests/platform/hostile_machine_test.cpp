// What another user has prepared where a machine keeps its things, or where a module lies: it is refused,
// nobody waits for it, and nothing that it leads to is touched.

#include <tests/platform/com_servers.h>
#include <tests/support/handles.h>

#include <platform/files.h>
#include <platform/machine_contents.h>

#include <fstream>
#include <sstream>
#include <sys/stat.h>

namespace {

namespace fs = std::filesystem;

constexpr uid_t Other = 65534;
const std::string Denied = std::to_string(ERROR_ACCESS_DENIED);

long Use(const std::string &what) {
    char value[8];
    DWORD cookie = 0;
    if (what == "key") return TestKey("key").error;
    if (what == "mutex") return Error_Of(CreateMutexA(nullptr, FALSE, "m"));
    if (what == "folder") return Error_Of(CreateDirectoryA("c:\\new", nullptr));
    if (what == "setting") {
        testing::internal::CaptureStderr();
        const bool is_set = Get_Machine_Setting("name", value, sizeof value);
        const bool refused =
            testing::internal::GetCapturedStderr().find("not a file of this user alone") != std::string::npos;
        return is_set ? 0 : refused ? ERROR_ACCESS_DENIED : ERROR_FILE_NOT_FOUND;
    }
    if (what == "blocks") return Error_Of(Visit_Machine_Blocks([](auto...) { return true; }, nullptr));
    if (what == "windows") return Error_Of(Visit_Machine_Windows([](auto...) { return true; }, nullptr));
    if (what == "classes") return Error_Of(Visit_Machine_Classes([](auto...) { return true; }, nullptr));
    const HRESULT result =
        CoRegisterClassObject(CLSID_TestService, &factory, CLSCTX_LOCAL_SERVER, REGCLS_MULTIPLEUSE, &cookie);
    return result == E_ACCESSDENIED ? ERROR_ACCESS_DENIED : result;
}

} // namespace

// Its first argument: "-", or the umask it has, as another user if it can.
SECOND_PROCESS(user_of_a_machine) {
    const std::string mask = process.Arguments()[0];
    if (mask != "-") umask(static_cast<mode_t>(std::stoul(mask, nullptr, 8)));
    if (mask != "-" && geteuid() == 0 && setresuid(Other, Other, Other) != 0) return 1;
    CoInitialize(nullptr);
    std::string codes;
    for (std::size_t i = 1; i < process.Arguments().size(); ++i)
        codes += (i > 1 ? " " : "") + std::to_string(Use(process.Arguments()[i]));
    process.Tell(codes);
    process.Hear();
    CoUninitialize();
    return 0;
}

namespace {

// Whose it is, who may use it, what it holds or leads to.
std::string State_Of(const fs::path &path) {
    struct stat status = {};
    if (lstat(path.c_str(), &status) != 0) return "(gone)";
    std::ostringstream text;
    text << status.st_mode << " of " << status.st_uid << ": ";
    if (S_ISLNK(status.st_mode)) text << fs::read_symlink(path);
    if (S_ISREG(status.st_mode)) text << std::ifstream(path).rdbuf();
    if (S_ISDIR(status.st_mode))
        text << std::distance(fs::directory_iterator(path), fs::directory_iterator());
    return text.str();
}

void Become(const fs::path &path, uid_t owner, unsigned mode) {
    if (!fs::is_symlink(path)) fs::permissions(path, fs::perms(mode));
    EXPECT_EQ(lchown(path.c_str(), owner, static_cast<gid_t>(-1)), 0) << path;
}

struct Disguise {
    const char *name;
    void (*put)(const fs::path &path, const fs::path &true_one);
};

const Disguise Disguises[] = {
    {"link", [](auto &path, auto &true_one) { fs::create_symlink(true_one, path); }},
    {"pipe", [](auto &path, auto &) { EXPECT_EQ(mkfifo(path.c_str(), 0600), 0); }},
    {"other kind",
     [](auto &path, auto &true_one) {
         if (!fs::is_directory(true_one)) return void(fs::create_directory(path));
         std::ofstream(path) << "text";
         Become(path, geteuid(), 0644);
     }},
    {"for all",
     [](auto &path, auto &true_one) {
         fs::copy(true_one, path, fs::copy_options::recursive);
         Become(path, geteuid(), fs::is_directory(path) ? 0777 : 0666);
     }},
    {"another's",
     [](auto &path, auto &true_one) {
         fs::copy(true_one, path, fs::copy_options::recursive);
         Become(path, Other, fs::is_directory(path) ? 0700 : 0600);
     }}, // which only root can bring about
};

class HostileMachine : public ComServers {
  protected:
    fs::path Shared_Folder() const { return machine.Shared_Folder(); }
    void Put_Shared() const {
        fs::create_directories(Shared_Folder() / "classes");
        for (const char *file : {"block-m", "classes/left"}) {
            const fs::path path = Shared_Folder() / file;
            std::ofstream(path) << "left by the killed";
            fs::permissions(path, fs::perms(0600));
            fs::permissions(path.parent_path(), fs::perms(0700));
        }
    }
    void Expect_Refused(const fs::path &path, const char *use, const Disguise &disguise) const;
};

void HostileMachine::Expect_Refused(const fs::path &path, const char *use, const Disguise &disguise) const {
    const bool is_shared = path.parent_path() == Shared_Folder(); // where what nobody holds is thrown away
    const fs::path true_one = (is_shared ? Shared_Folder() : path).string() + ".true";
    fs::rename(path, true_one);
    disguise.put(path, true_one);
    const std::string before = State_Of(path) + State_Of(true_one);
    EXPECT_EQ(SecondProcess("user_of_a_machine", {"-", use}).Hear(), Denied) << path << ": " << disguise.name;
    EXPECT_EQ(State_Of(path) + State_Of(true_one), before) << path << ": " << disguise.name;
    fs::remove_all(path);
    fs::rename(true_one, path);
}

TEST_F(HostileMachine, IsRefusedWithWhateverIsNotItsUsersOwn) {
    machine.Set("name", "1");
    ASSERT_EQ(SecondProcess("user_of_a_machine", {"-", "key", "mutex", "folder", "setting", "class", "blocks",
                                                  "windows", "classes"})
                  .Hear(),
              "0 0 0 0 0 0 0 0");
    fs::remove(machine.Path("drive_c/new"));
    fs::remove_all(Shared_Folder() / "classes");          // with its socket
    ASSERT_TRUE(Enter_Machine(machine.Folder().c_str())); // lets go of the registry
    const std::pair<fs::path, const char *> things[] = {
        {machine.Folder(), "key"},
        {machine.Folder(), "mutex"},
        {machine.Folder(), "folder"},
        {machine.Folder(), "class"},
        {machine.Folder(), "windows"},
        {machine.Path("machine.id"), "mutex"},
        {machine.Path("machine.conf"), "setting"},
        {machine.Path("names.lock"), "mutex"},
        {machine.Path("names.lock"), "folder"},
        {machine.Path("registry"), "key"},
        {machine.Path("registry/registry.lock"), "key"},
        {machine.Path("registry/registry.log"), "key"},
        {Shared_Folder(), "mutex"},
        {Shared_Folder(), "blocks"},
        {Shared_Folder(), "windows"},
        {Shared_Folder(), "class"},
        {Shared_Folder() / "block-m", "mutex"},
        {Shared_Folder() / "classes", "class"},
        {Shared_Folder() / "classes", "classes"},
    };
    for (const auto &[path, use] : things) {
        for (std::size_t i = 0; i < std::size(Disguises) - (geteuid() != 0); ++i) {
            Put_Shared();
            Expect_Refused(path, use, Disguises[i]);
        }
    }
    if (geteuid() != 0) GTEST_SKIP() << "what is another's: only root can bring that about";
}

// A machine made under any umask by somebody who is bound by it, where nothing or his empty folder is.
TEST_F(HostileMachine, LetsNobodyInUnderAnyUmask) {
    const uid_t owner = geteuid() == 0 ? Other : geteuid();
    for (const char *mask : {"0", "2", "777"}) {
        std::string base = "/tmp/kelmara-hostile-XXXXXX"; // where another user gets to
        ASSERT_NE(mkdtemp(base.data()), nullptr);
        const std::string own_machine = base + (*mask == '2' ? "" : "/deep/machine");
        Become(base, owner, *mask == '2' ? 0775 : 0700);
        setenv("KELMARA_MACHINE", own_machine.c_str(), 1);
        SecondProcess user("user_of_a_machine", {mask, "key", "mutex", "folder", "class"});
        EXPECT_EQ(user.Hear(), "0 0 0 0") << mask;
        fs::permissions(own_machine + "/drive_c/new", fs::perms(0700)); // a program's own: shut by its umask
        std::string number;
        fs::path base_in_memory;
        std::ifstream(own_machine + "/machine.id") >> number;
        std::vector<fs::directory_entry> entries(fs::recursive_directory_iterator(base), {});
        entries.emplace_back(base);
        for (const auto &shared : fs::directory_iterator("/dev/shm")) {
            if (number.empty() || !shared.path().string().ends_with(number)) continue;
            base_in_memory = shared.path();
            entries.push_back(shared);
            entries.insert(entries.end(), fs::recursive_directory_iterator(shared.path()), {});
        }
        EXPECT_GT(entries.size(), 10u) << "with shared memory and the class";
        for (const auto &entry : entries) {
            EXPECT_EQ(entry.status().permissions(), fs::perms(entry.is_directory() ? 0700 : 0600)) << entry;
        }
        EXPECT_EQ(user.Wait(), 0);
        fs::remove_all(base);
        fs::remove_all(base_in_memory);
    }
}

TEST_F(HostileMachine, IsNotMadeOfAFolderThatItsOwnerHasShut) {
    for (const unsigned mode : {0u, 0300u}) {
        std::string base = "/tmp/kelmara-hostile-XXXXXX";
        ASSERT_NE(mkdtemp(base.data()), nullptr);
        std::ofstream(base + "/precious") << "own";
        Become(base, geteuid() == 0 ? Other : geteuid(), mode);
        setenv("KELMARA_MACHINE", base.c_str(), 1);
        SecondProcess user("user_of_a_machine", {"22", "key"});
        EXPECT_EQ(user.Hear(), std::to_string(ERROR_ACCESS_DENIED));
        EXPECT_EQ(user.Wait(), 0);
        EXPECT_EQ(fs::status(base).permissions(), fs::perms(mode)) << "as it was";
        fs::permissions(base, fs::perms(0700));
        EXPECT_TRUE(State_Of(base).ends_with(": 1")) << "nothing was put into it";
        fs::remove_all(base);
    }
}

TEST_F(HostileMachine, LoadsNoModuleThatOthersMayChange) {
    const fs::path folder = machine.Path("drive_c/modules"), module = folder / "plain.dll";
    const fs::path elsewhere = machine.Path("drive_c/elsewhere/plain.dll");
    const auto Loaded = [](const char *path) {
        const HMODULE loaded = LoadLibraryA(path);
        const long error = Error_Of(loaded);
        if (loaded) FreeLibrary(loaded);
        return error;
    };
    for (const fs::path &each : {folder, elsewhere.parent_path()}) {
        fs::create_directories(each);
        Become(each, geteuid(), 0755);
    }
    fs::copy_file(Test_Module("plain"), elsewhere);
    const fs::path link = folder / "linked.dll", through = elsewhere.parent_path() / "through.dll";
    fs::create_symlink("../elsewhere/through.dll", link);
    fs::create_symlink(elsewhere, through);
    fs::copy_file(Test_Module("plain"), module);
    struct Case {
        fs::path changed;
        unsigned mode;
        uid_t owner;
        long error, error_by_link;
    };
    const uid_t own = geteuid();
    const Case cases[] = {{module, 0755, own, 0, 0},
                          {module, 0777, own, ERROR_ACCESS_DENIED, 0},
                          {module, 0755, Other, ERROR_ACCESS_DENIED, 0},
                          {folder, 0777, own, ERROR_ACCESS_DENIED, ERROR_ACCESS_DENIED},
                          {folder, 01777, own, ERROR_ACCESS_DENIED, ERROR_ACCESS_DENIED},
                          {link, 0777, Other, 0, ERROR_ACCESS_DENIED},
                          {through, 0777, Other, 0, ERROR_ACCESS_DENIED},
                          {folder, 0755, Other, ERROR_ACCESS_DENIED, ERROR_ACCESS_DENIED},
                          {elsewhere, 0777, own, 0, ERROR_ACCESS_DENIED},
                          {elsewhere.parent_path(), 0777, own, 0, ERROR_ACCESS_DENIED}};
    for (const Case &each : cases) {
        if (own != 0 && each.owner != own) continue;
        Become(each.changed, each.owner, each.mode);
        EXPECT_EQ(Loaded("c:\\modules\\plain"), each.error) << each.changed << " " << each.mode << each.owner;
        EXPECT_EQ(Loaded("c:\\modules\\linked"), each.error_by_link) << each.changed << " " << each.mode;
        Become(each.changed, own, 0755);
    }
    if (geteuid() != 0) GTEST_SKIP() << "what is another's: only root can bring that about";
}

} // namespace
