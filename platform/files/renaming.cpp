#include <platform/files/renaming.h>

#include <platform/errors.h>
#include <platform/files/host_error.h>
#include <platform/files/name_lock.h>
#include <platform/files/paths.h>
#include <platform/files/sharing.h>
#include <platform/kernel/code_page.h>

#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>

namespace {

// Where the disk has no renaming that fails when the target is there. A file has both names for a moment; one
// that stays after a kill in between is whole. A folder can take the place of nothing but an empty folder.
int Rename_In_Two_Steps(const char *from, const char *to, bool folder) {
    struct stat status;
    if (folder) {
        if (lstat(to, &status) != 0) return rename(from, to);
        errno = EEXIST;
        return -1;
    }
    if (link(from, to) != 0) return -1;
    if (unlink(from) == 0) return 0;
    const int reason = errno;
    unlink(to);
    errno = reason;
    return -1;
}

int Rename_Unless_There(const char *from, const char *to, bool folder) {
    if (renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE) == 0) return 0;
    if (errno != EINVAL && errno != ENOSYS) return -1;
    return Rename_In_Two_Steps(from, to, folder);
}

// The path of a name in the letter case that it was given.
std::string As_Spelled(const HostPlace &place) {
    const std::string folder = place.host_path.substr(0, place.host_path.rfind('/') + 1);
    return folder + Utf8_Of_Ansi(place.windows_path.substr(place.windows_path.rfind('\\') + 1));
}

// What is missing may be either.
long Error_Of_Failure(const std::string &from, const std::string &to) {
    const int reason = errno;
    struct stat status;
    return Error_At(stat(from.c_str(), &status) == 0 ? to : from, reason);
}

long Check_Source(const HostPlace &from, bool &folder) {
    struct stat status;
    if (from.is_root) return ERROR_ACCESS_DENIED;
    if (lstat(from.host_path.c_str(), &status) != 0) return Error_At(from.host_path, errno);
    folder = S_ISDIR(status.st_mode);
    struct stat target;
    const bool leads_to_folder = stat(from.host_path.c_str(), &target) == 0 && S_ISDIR(target.st_mode);
    if (from.means_folder && !leads_to_folder) return ERROR_INVALID_NAME;
    return NO_ERROR;
}

} // namespace

long Rename(const char *from_path, const char *to_path) {
    const NameLock lock;
    if (lock.Error() != NO_ERROR) return lock.Error();
    HostPlace from, to;
    bool folder = false;
    if (const long error = Find_Place(from_path, from); error != NO_ERROR) return error;
    if (const long error = Find_Place(to_path, to); error != NO_ERROR) return error;
    if (const long error = Check_Source(from, folder); error != NO_ERROR) return error;
    const SoleUse sole_use(from.host_path);
    if (!sole_use) return ERROR_SHARING_VIOLATION;
    if (to.means_folder && !folder) return ERROR_INVALID_NAME;
    const std::string target = to.host_path == from.host_path ? As_Spelled(to) : to.host_path;
    if (target == from.host_path) return NO_ERROR;
    if (Rename_Unless_There(from.host_path.c_str(), target.c_str(), folder) == 0) return NO_ERROR;
    return Error_Of_Failure(from.host_path, target);
}
