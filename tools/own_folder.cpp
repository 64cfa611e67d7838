#include <tools/own_folder.h>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tools {

bool Make_Own_Folder(const std::string &path) {
    if (mkdir(path.c_str(), 0700) != 0) return false;
    if (Give_To_Owner(path)) return true;
    const int error = errno;
    rmdir(path.c_str());
    errno = error;
    return false;
}

bool Give_To_Owner(const std::string &folder) {
    return fchmodat(AT_FDCWD, folder.c_str(), 0700, AT_SYMLINK_NOFOLLOW) == 0;
}

} // namespace tools
