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

long Error_Of_Look(int code) {
    switch (code) {
    case EMFILE:
    case ENFILE:
        return ERROR_TOO_MANY_OPEN_FILES;
    case ENOMEM:
        return ERROR_NOT_ENOUGH_MEMORY;
    case EACCES:
        return ERROR_ACCESS_DENIED;
    default: // among them that another process takes it away
        return ERROR_PATH_NOT_FOUND;
    }
}

std::string What_Is_Wrong(long error) {
    if (error == ERROR_ACCESS_DENIED) return Not_Empty;
    const char *const reason = error == ERROR_TOO_MANY_OPEN_FILES ? ", too many files are open" : "";
    return std::string(": cannot be looked into") + reason;
}

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
    const auto unless_it_is_one = [&](long error) {
        struct stat status;
        return stat((folder + "/machine.id").c_str(), &status) == 0 ? NO_ERROR : error;
    };
    const OpenFolder opened = Open_Folder(folder);
    if (!opened) {
        const long error = Error_Of_Look(errno);
        if (error == ERROR_TOO_MANY_OPEN_FILES || error == ERROR_NOT_ENOUGH_MEMORY) return error;
        return unseen_will_do ? NO_ERROR : unless_it_is_one(error);
    }
    for (;;) {
        errno = 0;
        const dirent *const entry = readdir(opened.get());
        if (!entry && errno == 0) return NO_ERROR;
        if (!entry) return unless_it_is_one(Error_Of_Look(errno));
        const std::string name = entry->d_name;
        if (name != "." && name != ".." && !Is_Machine_Number_Under_Way(name))
            return unless_it_is_one(ERROR_ACCESS_DENIED);
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
        trouble = folder + What_Is_Wrong(error);
        return error;
    }
    if (const long error = Make_Private_Folder(folder); error != NO_ERROR) {
        trouble = folder + (error == ERROR_ACCESS_DENIED ? Not_Of_This_User_Alone : ": cannot be made");
        return error;
    }
    const long error = Objection_To(folder, false);
    if (error == NO_ERROR) return error;
    trouble = folder + What_Is_Wrong(error);
    // Only what could not be looked into before comes to this; what cannot be now may be a machine by now.
    const bool is_to_be_as_it_was = there && error == ERROR_ACCESS_DENIED;
    if (is_to_be_as_it_was &&
        fchmodat(AT_FDCWD, folder.c_str(), before.st_mode & 07777, AT_SYMLINK_NOFOLLOW) != 0)
        trouble = folder + ": neither a machine nor empty";
    return error;
}

} // namespace

long Make_Machine_Folder(const std::string &named, std::string &folder, std::string &trouble) {
    const long error = Whole_Path(named, folder, trouble);
    return error == NO_ERROR ? Make_Machine_Folder_At(folder, trouble) : error;
}
