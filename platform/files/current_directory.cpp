#include <platform/files/current_directory.h>

#include <platform/files.h>
#include <platform/files/give_text.h>
#include <platform/files/host_error.h>
#include <platform/files/paths.h>
#include <platform/kernel/outcome.h>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr std::size_t Longest_Directory = 258; // a separator and the terminator follow

}

long Change_Directory(LPCSTR path) {
    HostPlace place;
    if (const long error = Find_Place(path, place); error != NO_ERROR) return error;
    if (place.windows_path.size() > Longest_Directory) return ERROR_FILENAME_EXCED_RANGE;
    if (chdir(place.host_path.c_str()) == 0) return NO_ERROR;
    if (errno != ENOTDIR) return Error_At(place.host_path, errno);
    struct stat status;
    return stat(place.host_path.c_str(), &status) == 0 ? ERROR_DIRECTORY : ERROR_PATH_NOT_FOUND;
}

long Find_Current_Directory(std::string &windows_path) {
    return Map_To_Windows(".", windows_path);
}

extern "C" {

BOOL SetCurrentDirectoryA(LPCSTR path) {
    return Succeed_Or_Tell(Code_Of([=] { return Change_Directory(path); }));
}

DWORD GetCurrentDirectoryA(DWORD size, LPSTR out) {
    std::string path;
    if (!Succeed_Or_Tell(Code_Of([&] { return Find_Current_Directory(path); }))) return 0;
    return Give_Text(path, out, size);
}
}
