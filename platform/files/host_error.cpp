#include <platform/files/host_error.h>

#include <platform/errors.h>

#include <cerrno>
#include <sys/stat.h>

namespace {

struct Pair {
    int number;
    long error;
};

constexpr Pair By_Number[] = {
    {ENOENT, ERROR_FILE_NOT_FOUND},
    {ENOTDIR, ERROR_PATH_NOT_FOUND},
    {ELOOP, ERROR_PATH_NOT_FOUND},
    {ENAMETOOLONG, ERROR_INVALID_NAME},
    {EACCES, ERROR_ACCESS_DENIED},
    {EPERM, ERROR_ACCESS_DENIED},
    {EROFS, ERROR_ACCESS_DENIED},
    {ENXIO, ERROR_ACCESS_DENIED},
    {EISDIR, ERROR_ACCESS_DENIED},
    {EEXIST, ERROR_ALREADY_EXISTS},
    {ENOTEMPTY, ERROR_DIR_NOT_EMPTY},
    {EBUSY, ERROR_SHARING_VIOLATION},
    {ETXTBSY, ERROR_SHARING_VIOLATION},
    {EMFILE, ERROR_TOO_MANY_OPEN_FILES},
    {ENFILE, ERROR_TOO_MANY_OPEN_FILES},
    {ENOMEM, ERROR_NOT_ENOUGH_MEMORY},
    {EAGAIN, ERROR_NOT_ENOUGH_MEMORY},
    {ENOSPC, ERROR_DISK_FULL},
    {EDQUOT, ERROR_DISK_FULL},
    {EXDEV, ERROR_NOT_SAME_DEVICE},
    {EIO, ERROR_READ_FAULT},
    {E2BIG, ERROR_FILENAME_EXCED_RANGE},
    {ENOEXEC, ERROR_BAD_EXE_FORMAT},
    {ELIBBAD, ERROR_BAD_EXE_FORMAT},
};

constexpr Pair By_Error[] = {
    {ENOENT, ERROR_FILE_NOT_FOUND},      {ENOENT, ERROR_PATH_NOT_FOUND},       {ENOENT, ERROR_INVALID_DRIVE},
    {ENOENT, ERROR_BAD_NETPATH},         {ENOENT, ERROR_FILENAME_EXCED_RANGE}, {EACCES, ERROR_ACCESS_DENIED},
    {EMFILE, ERROR_TOO_MANY_OPEN_FILES}, {ENOMEM, ERROR_NOT_ENOUGH_MEMORY},    {EXDEV, ERROR_NOT_SAME_DEVICE},
    {EEXIST, ERROR_ALREADY_EXISTS},      {EEXIST, ERROR_FILE_EXISTS},          {ENOSPC, ERROR_DISK_FULL},
    {ENOTEMPTY, ERROR_DIR_NOT_EMPTY},    {EAGAIN, ERROR_NOT_ENOUGH_QUOTA},
};

// Codes of devices, and of files that others hold.
constexpr long First_Device_Error = 19, Last_Device_Error = 36;

} // namespace

long Error_Of_Errno(int number) {
    for (const Pair &pair : By_Number) {
        if (pair.number == number) return pair.error;
    }
    return ERROR_GEN_FAILURE;
}

long Error_At(const std::string &host_path, int number) {
    if (number != ENOENT) return Error_Of_Errno(number);
    struct stat status;
    const std::string folder = host_path.substr(0, host_path.rfind('/') + 1);
    return stat(folder.c_str(), &status) == 0 ? ERROR_FILE_NOT_FOUND : ERROR_PATH_NOT_FOUND;
}

int Errno_Of_Error(long error) {
    for (const Pair &pair : By_Error) {
        if (pair.error == error) return pair.number;
    }
    return error >= First_Device_Error && error <= Last_Device_Error ? EACCES : EINVAL;
}
