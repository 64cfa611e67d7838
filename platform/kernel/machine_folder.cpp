#include <platform/kernel/machine_folder.h>

#include <platform/errors.h>
#include <platform/files/ownership.h>
#include <platform/kernel/machine_number.h>
#include <platform/kernel/open_folder.h>

#include <climits>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr char Not_Empty[] = ": neither a machine nor empty; it is left as it is";
constexpr char Not_Seen[] = ": cannot be looked into, too many files are open";

// Makes the folders that lead to `path`; what they are is the host's affair.
void Make_Parents(const std::string &path) {
    for (std::size_t slash = path.find('/', 1); slash != std::string::npos;
         slash = path.find('/', slash + 1)) {
        Make_Owners_Parent(path.substr(0, slash));
    }
}

// A folder that holds anything else is somebody's own. What another process makes of it at this moment, or
// was killed in the middle of, is not. `unseen_will_do`: one that cannot be looked into, too.
long Objection_To(const std::string &folder, bool unseen_will_do) {
    const auto is_one = [&] {
        return faccessat(AT_FDCWD, (folder + "/machine.id").c_str(), F_OK, AT_EACCESS) == 0;
    };
    const OpenFolder opened = Open_Folder(folder);
    if (!opened && (errno == EMFILE || errno == ENFILE)) return ERROR_TOO_MANY_OPEN_FILES;
    if (!opened) return unseen_will_do || is_one() ? NO_ERROR : ERROR_ACCESS_DENIED;
    for (;;) {
        errno = 0;
        const dirent *const entry = readdir(opened.get());
        const std::string name = entry ? entry->d_name : "";
        if (entry && (name == "." || name == ".." || Is_Machine_Number_Under_Way(name))) continue;
        return (!entry && errno == 0) || is_one() ? NO_ERROR : ERROR_ACCESS_DENIED;
    }
}

long Whole_Path(const std::string &named, std::string &folder, std::string &trouble) {
    folder = named;
    if (folder[0] != '/') {
        char here[PATH_MAX];
        if (!getcwd(here, sizeof here)) {
            trouble = named + ": the current directory that it counts from is gone";
            return ERROR_PATH_NOT_FOUND;
        }
        folder = std::string(here) + "/" + folder;
    }
    while (folder.size() > 1 && folder.back() == '/') folder.pop_back();
    return NO_ERROR;
}

long Make_Machine_Folder_At(const std::string &folder, std::string &trouble) {
    Make_Parents(folder);
    struct stat before;
    const bool there = lstat(folder.c_str(), &before) == 0;
    if (const long error = Objection_To(folder, true); error != NO_ERROR) {
        trouble = folder + (error == ERROR_ACCESS_DENIED ? Not_Empty : Not_Seen);
        return error;
    }
    if (const long error = Make_Private_Folder(folder); error != NO_ERROR) {
        trouble = folder + (error == ERROR_ACCESS_DENIED ? Not_Of_This_User_Alone : ": cannot be made");
        return error;
    }
    const long error = Objection_To(folder, false);
    if (error == NO_ERROR) return error;
    // It could not be looked into before.
    const bool as_it_was =
        !there || fchmodat(AT_FDCWD, folder.c_str(), before.st_mode & 07777, AT_SYMLINK_NOFOLLOW) == 0;
    const char *const refusal = as_it_was ? Not_Empty : ": neither a machine nor empty";
    trouble = folder + (error == ERROR_ACCESS_DENIED ? refusal : Not_Seen);
    return error;
}

} // namespace

long Make_Machine_Folder(const std::string &named, std::string &folder, std::string &trouble) {
    const long error = Whole_Path(named, folder, trouble);
    return error == NO_ERROR ? Make_Machine_Folder_At(folder, trouble) : error;
}
