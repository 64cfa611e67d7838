#include <platform/files/attributes.h>

#include <platform/files/host_error.h>
#include <platform/files/paths.h>
#include <platform/kernel/outcome.h>

#include <cerrno>

namespace {

constexpr DWORD Known_Attributes =
    FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_NORMAL;

long Find_Mode(LPCSTR path, std::string &host_path, mode_t &mode) {
    HostPlace place;
    if (const long error = Find_Place(path, place); error != NO_ERROR) return error;
    struct stat status;
    if (stat(place.host_path.c_str(), &status) != 0) return Error_At(place.host_path, errno);
    if (place.means_folder && !S_ISDIR(status.st_mode)) return ERROR_INVALID_NAME;
    host_path = place.host_path;
    mode = status.st_mode;
    return NO_ERROR;
}

long Set_Attributes(LPCSTR path, DWORD attributes) {
    if (attributes & ~Known_Attributes) return ERROR_INVALID_PARAMETER;
    std::string host_path;
    mode_t mode;
    if (const long error = Find_Mode(path, host_path, mode); error != NO_ERROR) return error;
    const mode_t wanted = attributes & FILE_ATTRIBUTE_READONLY ? mode & ~S_IWUSR : mode | S_IWUSR;
    if (wanted == mode || chmod(host_path.c_str(), wanted & 07777) == 0) return NO_ERROR;
    return Error_At(host_path, errno);
}

} // namespace

extern "C" {

DWORD GetFileAttributesA(LPCSTR path) {
    std::string host_path;
    mode_t mode;
    const long error = Code_Of([&] { return Find_Mode(path, host_path, mode); });
    if (error == NO_ERROR) return Attributes_Of(mode);
    SetLastError(error);
    return INVALID_FILE_ATTRIBUTES;
}

BOOL SetFileAttributesA(LPCSTR path, DWORD attributes) {
    return Succeed_Or_Tell(Code_Of([=] { return Set_Attributes(path, attributes); }));
}
}
