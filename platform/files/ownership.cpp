#include <platform/files/ownership.h>

#include <platform/errors.h>

#include <climits>
#include <cstdio>
#include <dlfcn.h>
#include <fcntl.h>

namespace {

constexpr mode_t Owner_Reads_And_Writes = 0600;

bool Is_Own_File(const struct stat &status, mode_t refused) {
    return S_ISREG(status.st_mode) && status.st_uid == geteuid() && (status.st_mode & refused) == 0;
}

bool Is_Own_Folder(const struct stat &status) {
    return S_ISDIR(status.st_mode) && status.st_uid == geteuid() &&
           (status.st_mode & Writable_By_Group_Or_Others) == 0;
}

bool Close_To_Others(const std::string &folder) {
    return fchmodat(AT_FDCWD, folder.c_str(), 0700, AT_SYMLINK_NOFOLLOW) == 0;
}

int Reason_At(const std::string &path, int reason, mode_t refused) {
    struct stat status;
    const bool there = reason != ENOENT && lstat(path.c_str(), &status) == 0;
    return there && !Is_Own_File(status, refused) ? Not_This_Users_Own : reason;
}

// Made under a umask that takes from the owner, too.
bool Give_To_Owner(int descriptor, mode_t mode) {
    return (mode & Owner_Reads_And_Writes) == Owner_Reads_And_Writes ||
           fchmod(descriptor, Owner_Reads_And_Writes) == 0;
}

uid_t Owner_Of(const char *path) {
    struct stat status;
    return path && stat(path, &status) == 0 ? status.st_uid : 0;
}

uid_t Owner_Of_This_Library() {
    static const char inside = 0;
    Dl_info info;
    return Owner_Of(dladdr(&inside, &info) ? info.dli_fname : nullptr);
}

bool Gives_Code(uid_t owner) {
    if (owner == 0 || owner == geteuid()) return true;
    static const uid_t program = Owner_Of("/proc/self/exe"), library = Owner_Of_This_Library();
    return owner == program || owner == library;
}

bool May_Give_Code(const struct stat &status) {
    const bool each_keeps_his_own = S_ISDIR(status.st_mode) && (status.st_mode & S_ISVTX) != 0;
    return Gives_Code(status.st_uid) && ((status.st_mode & S_IWOTH) == 0 || each_keeps_his_own);
}

bool Is_In_Such_A_Folder(const std::string &path) {
    struct stat status;
    const std::string folder = path.substr(0, path.rfind('/') + 1);
    return stat(folder.empty() ? "." : folder.c_str(), &status) == 0 && May_Give_Code(status);
}

// Empty where the host does not tell.
std::string Path_Of(int descriptor) {
    char link[32], path[PATH_MAX];
    std::snprintf(link, sizeof link, "/proc/self/fd/%d", descriptor);
    const ssize_t length = readlink(link, path, sizeof path);
    return length > 0 && length < PATH_MAX ? std::string(path, static_cast<std::size_t>(length))
                                           : std::string();
}

} // namespace

FileDescriptor Open_Own_File(const std::string &path, int flags, mode_t refused) {
    constexpr int Always = O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY;
    FileDescriptor file(open(path.c_str(), flags | Always, Owner_Reads_And_Writes));
    if (!file) {
        errno = Reason_At(path, errno, refused);
        return file;
    }
    struct stat status;
    if (fstat(file.Get(), &status) != 0) return FileDescriptor();
    if (!Is_Own_File(status, refused)) {
        errno = Not_This_Users_Own;
        return FileDescriptor();
    }
    return (flags & O_CREAT) == 0 || Give_To_Owner(file.Get(), status.st_mode) ? std::move(file)
                                                                               : FileDescriptor();
}

bool Is_Own_Folder(const std::string &path) {
    struct stat status;
    return lstat(path.c_str(), &status) == 0 && Is_Own_Folder(status);
}

bool Make_Owners_Folder(const std::string &path) {
    if (mkdir(path.c_str(), 0700) != 0) return false;
    struct stat status;
    return (lstat(path.c_str(), &status) == 0 && (status.st_mode & 0777) == 0700) || Close_To_Others(path);
}

long Make_Private_Folder(const std::string &path) {
    if (!Make_Owners_Folder(path) && errno != EEXIST) {
        return errno == ENOSPC ? ERROR_DISK_FULL : ERROR_PATH_NOT_FOUND;
    }
    struct stat status;
    if (lstat(path.c_str(), &status) != 0) return ERROR_PATH_NOT_FOUND;
    if (!Is_Own_Folder(status)) return ERROR_ACCESS_DENIED;
    const bool closed = (status.st_mode & Open_To_Anybody_Else) == 0 || Close_To_Others(path);
    return closed ? NO_ERROR : ERROR_ACCESS_DENIED;
}

bool May_Give_Code(int descriptor, const std::string &path) {
    struct stat status;
    if (fstat(descriptor, &status) != 0 || !May_Give_Code(status) || !Is_In_Such_A_Folder(path)) return false;
    const std::string real = Path_Of(descriptor);
    return !real.empty() && (real == path || Is_In_Such_A_Folder(real));
}
