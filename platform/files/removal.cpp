#include <platform/files/removal.h>

#include <platform/files/attributes.h>
#include <platform/files/host_error.h>
#include <platform/files/paths.h>
#include <platform/files/sharing.h>
#include <platform/kernel/outcome.h>

#include <cerrno>
#include <unistd.h>

namespace {

bool Is_Folder(const std::string &host_path) {
    struct stat status;
    return stat(host_path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

bool Is_Current_Folder(const struct stat &folder) {
    struct stat current;
    return stat(".", &current) == 0 && current.st_dev == folder.st_dev && current.st_ino == folder.st_ino;
}

// `status` is that of the name itself, which may be a link.
long Look_At(const HostPlace &place, struct stat &status) {
    if (place.is_root) return ERROR_ACCESS_DENIED;
    if (lstat(place.host_path.c_str(), &status) != 0) return Error_At(place.host_path, errno);
    return NO_ERROR;
}

long Remove_Folder(LPCSTR path) {
    HostPlace place;
    struct stat status;
    if (const long error = Find_Place(path, place); error != NO_ERROR) return error;
    if (const long error = Look_At(place, status); error != NO_ERROR) return error;
    const std::string &folder = place.host_path;
    if (S_ISLNK(status.st_mode) && Is_Folder(folder)) {
        return unlink(folder.c_str()) == 0 ? NO_ERROR : Error_At(folder, errno);
    }
    if (!S_ISDIR(status.st_mode)) return ERROR_DIRECTORY;
    if (Is_Read_Only(status.st_mode)) return ERROR_ACCESS_DENIED;
    if (Is_Current_Folder(status)) return ERROR_SHARING_VIOLATION;
    if (rmdir(folder.c_str()) == 0) return NO_ERROR;
    return errno == EEXIST ? ERROR_DIR_NOT_EMPTY : Error_At(folder, errno);
}

} // namespace

long Delete_File(LPCSTR path) {
    HostPlace place;
    struct stat status;
    if (const long error = Find_Place(path, place); error != NO_ERROR) return error;
    const std::string &file = place.host_path;
    const SoleUse sole_use(file);
    if (const long error = Look_At(place, status); error != NO_ERROR) return error;
    if (Is_Folder(file)) return ERROR_ACCESS_DENIED;
    if (place.means_folder) return ERROR_INVALID_NAME;
    if (Is_Read_Only(status.st_mode)) return ERROR_ACCESS_DENIED;
    if (!sole_use) return ERROR_SHARING_VIOLATION;
    return unlink(file.c_str()) == 0 ? NO_ERROR : Error_At(file, errno);
}

extern "C" {

BOOL DeleteFileA(LPCSTR path) {
    return Succeed_Or_Tell(Code_Of([=] { return Delete_File(path); }));
}

BOOL RemoveDirectoryA(LPCSTR path) {
    return Succeed_Or_Tell(Code_Of([=] { return Remove_Folder(path); }));
}
}
