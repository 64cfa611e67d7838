#include <platform/files/new_folder.h>

#include <platform/files/host_error.h>
#include <platform/files/name_lock.h>
#include <platform/files/paths.h>
#include <platform/kernel/outcome.h>

#include <cerrno>
#include <sys/stat.h>

namespace {

constexpr std::size_t Room_For_A_File = 12; // "\12345678.123" less the separator

bool Is_There(LPCSTR path) {
    HostPlace place;
    struct stat status;
    return Find_Place(path, place) == NO_ERROR && stat(place.host_path.c_str(), &status) == 0;
}

} // namespace

long Make_Folder(LPCSTR path) {
    const NameLock lock;
    if (lock.Error() != NO_ERROR) return lock.Error();
    HostPlace place;
    if (const long error = Find_Place(path, place); error != NO_ERROR) return error;
    if (place.is_root) return ERROR_ACCESS_DENIED;
    if (place.windows_path.size() + Room_For_A_File >= MAX_PATH) return ERROR_FILENAME_EXCED_RANGE;
    if (mkdir(place.host_path.c_str(), 0777) == 0) return NO_ERROR;
    return errno == ENOENT ? ERROR_PATH_NOT_FOUND : Error_Of_Errno(errno);
}

void Make_Folders(LPCSTR path) {
    if (Is_There(path)) return;
    const std::string whole = path;
    for (std::size_t end = whole.find('\\'); end != std::string::npos;) {
        end = whole.find('\\', end + 1);
        Make_Folder(whole.substr(0, end).c_str());
    }
}

extern "C" {

BOOL CreateDirectoryA(LPCSTR path, const SECURITY_ATTRIBUTES *) {
    return Succeed_Or_Tell(Code_Of([=] { return Make_Folder(path); }));
}
}
