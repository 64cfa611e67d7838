#include <tools/failure.h>
#include <tools/machine/machine_commands.h>

#include <tools/interruption.h>
#include <tools/machine/tree_copy.h>
#include <tools/machine_choice.h>
#include <tools/output.h>
#include <tools/own_folder.h>
#include <tools/progress.h>
#include <tools/tables/columns.h>

#include <platform/errors.h>
#include <platform/machine.h>
#include <platform/machine_contents.h>

#include <cerrno>
#include <climits>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <unistd.h>

namespace tools {

namespace {

constexpr int Most_Names = 20; // those before may be a killed clone's, whose process had this one's number

[[noreturn]] void Fail_On(const std::string &path, int error) {
    throw Failure(Exit_Unusable, path + ": " + std::strerror(error));
}

bool Is_There(const std::string &path) {
    struct stat status;
    return lstat(path.c_str(), &status) == 0;
}

/// The target as a whole path, in a folder that is there and not in the machine itself.
std::string Checked_Target(std::string target, const std::string &machine) {
    while (target.size() > 1 && target.back() == '/') target.pop_back();
    if (target.empty() || target == "/") throw Failure(Exit_Unusable, "no name for the new machine's folder");
    if (Is_There(target)) throw Failure(Exit_Unusable, target + ": is there already; it is left as it is");
    const std::size_t slash = target.rfind('/');
    const std::string parent = slash == target.npos ? "." : slash == 0 ? "/" : target.substr(0, slash);
    char real[PATH_MAX];
    if (realpath(parent.c_str(), real) == nullptr) Fail_On(parent, errno);
    const std::string folder = real == std::string("/") ? "" : real;
    if ((folder + "/").starts_with(machine + "/"))
        throw Failure(Exit_Unusable, target + ": lies in the machine that is to be copied");
    return folder + "/" + target.substr(slash == target.npos ? 0 : slash + 1);
}

// Not every file system and host can be told not to replace. There the name is taken by an empty folder of
// our own first: a folder may take the place of an empty one, and of nothing else.
bool Rename_Without_Replacing(const std::string &from, const std::string &to) {
    if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return true;
    if (errno != EINVAL && errno != ENOSYS) return false;
    if (mkdir(to.c_str(), 0700) != 0) return false;
    if (rename(from.c_str(), to.c_str()) == 0) return true;
    const int error = errno;
    rmdir(to.c_str());
    errno = error;
    return false;
}

/// The new machine under a working name, with a number of its own; gone again unless it takes its name.
class MachineInMaking {
  public:
    MachineInMaking(std::string target, const std::string &source)
        : target_(std::move(target)), folder_(target_ + ".new" + std::to_string(getpid())) {
        for (int left = Most_Names; !Make_Own_Folder(folder_); folder_ += "-") {
            if (errno != EEXIST || --left == 0) Fail_On(folder_, errno);
        }
        const bool made = Enter_Machine(folder_.c_str());
        if (!Enter_Machine(source.c_str()) || !made) {
            Remove();
            throw Failure(Exit_Unusable, folder_ + ": no machine was made");
        }
    }
    ~MachineInMaking() {
        if (!named_) Remove();
    }
    MachineInMaking(const MachineInMaking &) = delete;
    MachineInMaking &operator=(const MachineInMaking &) = delete;
    const std::string &Folder() const { return folder_; }

    void Take_Name() {
        const int folder = open(folder_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        const bool on_disk = folder >= 0 && syncfs(folder) == 0;
        const int error = errno;
        if (folder >= 0) close(folder);
        if (!on_disk) Fail_On(folder_, error);
        End_If_Interrupted();
        if (!Rename_Without_Replacing(folder_, target_)) Fail_On(target_, errno);
        named_ = true;
    }

  private:
    // A folder that may not be written, as its original, would keep what is in it.
    void Remove() const {
        using std::filesystem::recursive_directory_iterator;
        std::error_code error;
        recursive_directory_iterator entry(folder_, error);
        for (; !error && entry != recursive_directory_iterator(); entry.increment(error)) {
            struct stat status;
            if (lstat(entry->path().c_str(), &status) == 0 && S_ISDIR(status.st_mode))
                chmod(entry->path().c_str(), 0700);
        }
        Remove_Machine(folder_.c_str());
        std::filesystem::remove_all(folder_, error);
    }

    std::string target_, folder_;
    bool named_ = false;
};

/// Its drives and settings; the registry goes another way, and all else is a machine's own.
std::vector<std::string> Things_To_Copy(const std::string &machine) {
    std::vector<std::string> names;
    if (Is_There(machine + "/machine.conf")) names.emplace_back("machine.conf");
    for (char letter = 'a'; letter < 'z'; ++letter) {
        const std::string name = std::string("drive_") + letter;
        if (Is_There(machine + "/" + name)) names.push_back(name);
    }
    return names;
}

void Copy_Its_Registry(const std::string &target) {
    MachineRegistry registry;
    if (Look_At_Registry(&registry) == ERROR_FILE_NOT_FOUND) return;
    if (const LONG error = Copy_Registry(target.c_str()); error != ERROR_SUCCESS)
        throw Failure(Exit_Unusable, "the registry cannot be copied: error " + std::to_string(error));
}

void Copy_Its_Files(const std::string &from, const std::string &to) {
    const std::vector<std::string> names = Things_To_Copy(from);
    std::size_t total = 0;
    for (const std::string &name : names) total += Entries_Below(from + "/" + name);
    Progress progress("copying", total);
    TreeCopy copy(from, progress);
    for (const std::string &name : names) copy.Copy(from + "/" + name, to + "/" + name);
    copy.Finish();
    Make_Room_On_Terminal();
    for (const std::string &remark : copy.Remarks())
        std::fprintf(stderr, "kelmara: %s\n", Shown(remark).c_str());
}

} // namespace

ExitCode Clone_Machine(const std::string &target) {
    Require_Machine();
    const std::string source = Machine_Folder();
    const std::string place = Checked_Target(target, source);
    MachineInMaking clone(place, source);
    Copy_Its_Registry(clone.Folder());
    Copy_Its_Files(source, clone.Folder());
    clone.Take_Name();
    Print_Line("copied " + Shown(source) + " to " + Shown(place));
    return Exit_Success;
}

} // namespace tools
