#include <platform/files/ownership.h>

#include <platform/errors.h>
#include <platform/kernel/open_folder.h>

#include <fcntl.h>

namespace {

constexpr mode_t Owner_Reads_And_Writes = 0600;
constexpr mode_t Owner_Alone = 0700;
constexpr mode_t Writable_By_Group_Or_Others = 0022;
// Nobody else can enter it, and to this user's other processes it is still one that others may write to.
constexpr mode_t Shut_And_In_Question = 0702;
constexpr unsigned Patience_For_Another_Taker = 2000; // milliseconds
constexpr int Most_Attempts = 3;
constexpr useconds_t Wait_For_Its_Maker = 1000;
constexpr int Waits_For_One_Maker = 10, Most_Waits = 25;

bool Is_Of_User(const struct stat &status, mode_t kind) {
    return (status.st_mode & S_IFMT) == kind && status.st_uid == geteuid();
}

bool Is_Own_File(const struct stat &status, mode_t refused) {
    return Is_Of_User(status, S_IFREG) && (status.st_mode & refused) == 0;
}

bool Is_Own_Folder(const struct stat &status) {
    return Is_Of_User(status, S_IFDIR) && (status.st_mode & Writable_By_Group_Or_Others) == 0;
}

bool Change_Mode(const std::string &path, mode_t mode) {
    return fchmodat(AT_FDCWD, path.c_str(), mode, AT_SYMLINK_NOFOLLOW) == 0;
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

// Whoever made it under such a umask has not come to that yet, or was killed before. True when it is done.
bool Give_To_Owner(const std::string &path) {
    struct stat status;
    if (lstat(path.c_str(), &status) != 0 || !Is_Of_User(status, S_IFREG)) return false;
    const bool just_made = status.st_size == 0 && (status.st_mode & Open_To_Anybody_Else) == 0;
    if (just_made || (status.st_mode & 0777) == 0) return Change_Mode(path, Owner_Reads_And_Writes);
    return (status.st_mode & Owner_Reads_And_Writes) == Owner_Reads_And_Writes;
}

FileDescriptor Open_File(const std::string &path, int flags) {
    constexpr int Always = O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY;
    const bool writes = (flags & O_ACCMODE) != O_RDONLY;
    FileDescriptor file;
    for (int attempt = 1; !file; ++attempt) {
        file = FileDescriptor(open(path.c_str(), flags | Always, Owner_Reads_And_Writes));
        if (file || errno != EACCES || !writes || attempt == Most_Attempts) break;
        if (!Give_To_Owner(path)) {
            errno = EACCES;
            break;
        }
    }
    return file;
}

OpenFolder Open_Folder_Itself(const std::string &path) {
    FileDescriptor folder(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    OpenFolder opened(folder ? fdopendir(folder.Get()) : nullptr);
    if (opened) folder.Give();
    return opened;
}

// Looked at again once nobody else can put anything in.
bool Close_While_Empty(DIR *folder, mode_t mode) {
    if (!Is_Empty_Folder(folder) || fchmod(dirfd(folder), Shut_And_In_Question) != 0) return false;
    const bool empty = Is_Empty_Folder(folder);
    return fchmod(dirfd(folder), empty ? Owner_Alone : mode & 07777) == 0 && empty;
}

// One process at a time, so that none gives a folder back the mode that it had before another took it. False
// with errno, 0 for one that is not empty or not this user's.
bool Take_If_Empty(const std::string &path) {
    const OpenFolder folder = Open_Folder_Itself(path);
    if (!folder) return false;
    errno = Lock_File_In_Time(dirfd(folder.get()), LOCK_EX, Patience_For_Another_Taker);
    if (errno != 0) return false;
    struct stat status;
    const bool taken = fstat(dirfd(folder.get()), &status) == 0 && Is_Of_User(status, S_IFDIR) &&
                       (Is_Own_Folder(status) || Close_While_Empty(folder.get(), status.st_mode));
    Unlock_File(dirfd(folder.get()));
    return taken;
}

// One with anything in it may have been shut by its owner.
void Give_To_Owner_If_Empty(const std::string &path) {
    const OpenFolder folder = Open_Folder_Itself(path);
    if (folder && Is_Empty_Folder(folder.get())) fchmod(dirfd(folder.get()), Owner_Alone);
}

bool Close_To_Others(const std::string &path, mode_t mode) {
    const mode_t owners = mode & Owner_Alone; // not all under a umask that takes from the owner, too
    if ((mode & Open_To_Anybody_Else) == 0 && owners != 0) {
        if (owners != Owner_Alone) Give_To_Owner_If_Empty(path);
        return true;
    }
    return Change_Mode(path, owners != 0 ? owners : Owner_Alone);
}

long Error_Of(int reason, long otherwise) {
    switch (reason) {
    case EMFILE:
    case ENFILE:
        return ERROR_TOO_MANY_OPEN_FILES;
    case ENOMEM:
        return ERROR_NOT_ENOUGH_MEMORY;
    case ENOSPC:
        return ERROR_DISK_FULL;
    case EWOULDBLOCK:
        return ERROR_SHARING_VIOLATION;
    case EPERM:
        return ERROR_ACCESS_DENIED;
    default:
        return otherwise;
    }
}

// ERROR_PATH_NOT_FOUND also for a folder that another process takes away meanwhile.
long Make_Or_Close(const std::string &path) {
    if (!Make_Owners_Folder(path) && errno != EEXIST) return Error_Of(errno, ERROR_PATH_NOT_FOUND);
    struct stat status;
    if (lstat(path.c_str(), &status) != 0) return ERROR_PATH_NOT_FOUND;
    if (!Is_Of_User(status, S_IFDIR)) return ERROR_ACCESS_DENIED;
    const bool closed = Is_Own_Folder(status) ? Close_To_Others(path, status.st_mode) : Take_If_Empty(path);
    if (closed) return NO_ERROR;
    const int reason = errno;
    return Is_Nothing_There(path) ? ERROR_PATH_NOT_FOUND : Error_Of(reason, ERROR_ACCESS_DENIED);
}

} // namespace

FileDescriptor Open_Own_File(const std::string &path, int flags, mode_t refused) {
    FileDescriptor file = Open_File(path, flags);
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

bool Is_Nothing_There(const std::string &path) {
    struct stat status;
    return lstat(path.c_str(), &status) != 0 && errno == ENOENT;
}

bool Is_Own_Folder(const std::string &path) {
    struct stat status;
    return lstat(path.c_str(), &status) == 0 && Is_Own_Folder(status);
}

long Refusal_Of_Folder(const std::string &path) {
    struct stat status;
    if (lstat(path.c_str(), &status) != 0 || Is_Own_Folder(status)) return NO_ERROR;
    const OpenFolder opened = Is_Of_User(status, S_IFDIR) ? Open_Folder_Itself(path) : OpenFolder();
    const bool is_or_will_be_own =
        opened && (Is_Empty_Folder(opened.get()) || Is_Own_Folder(path)); // taken by another process by now
    return is_or_will_be_own ? NO_ERROR : ERROR_ACCESS_DENIED;
}

bool Make_Owners_Folder(const std::string &path) {
    if (mkdir(path.c_str(), Owner_Alone) != 0) return false;
    struct stat status;
    if (lstat(path.c_str(), &status) == 0 && (status.st_mode & 0777) == Owner_Alone) return true;
    if (Change_Mode(path, Owner_Alone)) return true;
    const int reason = errno;
    if (reason != ENOENT) rmdir(path.c_str());
    errno = reason == EMFILE || reason == ENFILE || reason == ENOMEM || reason == ENOENT ? reason : EPERM;
    return false;
}

void Make_Owners_Parent(const std::string &path) {
    struct stat status;
    for (int wait = 1; wait <= Most_Waits; ++wait) {
        if (Make_Owners_Folder(path)) return;
        if (errno == ENOENT) continue;
        const bool shut =
            lstat(path.c_str(), &status) == 0 && Is_Of_User(status, S_IFDIR) && (status.st_mode & 0777) == 0;
        if (!shut) return;
        usleep(Wait_For_Its_Maker);
        if (wait % Waits_For_One_Maker == 0 && rmdir(path.c_str()) != 0 && errno != ENOENT) return;
    }
}

long Make_Private_Folder(const std::string &path) {
    long error = ERROR_PATH_NOT_FOUND;
    for (int attempt = 0; error == ERROR_PATH_NOT_FOUND && attempt < Most_Attempts; ++attempt)
        error = Make_Or_Close(path);
    return error;
}
