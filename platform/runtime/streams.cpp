#include <platform/runtime.h>

#include <platform/files/attributes.h>
#include <platform/files/name_lock.h>
#include <platform/files/paths.h>
#include <platform/files/sharing.h>
#include <platform/kernel/outcome.h>
#include <platform/runtime/runtime_error.h>

#include <cstring>

namespace {

struct Mode {
    const char *text;
    int access; // and O_APPEND
    bool creates, empties, exclusive = false;
};

constexpr Mode Modes[] = {
    {"rb", O_RDONLY, false, false},
    {"r+b", O_RDWR, false, false},
    {"rb+", O_RDWR, false, false},
    {"wb", O_WRONLY, true, true},
    {"wbx", O_WRONLY, true, true, true},
    {"w+bx", O_RDWR, true, true, true},
    {"w+b", O_RDWR, true, true},
    {"wb+", O_RDWR, true, true},
    {"ab", O_WRONLY | O_APPEND, true, false},
    {"a+b", O_RDWR | O_APPEND, true, false},
    {"ab+", O_RDWR | O_APPEND, true, false},
};

constexpr int Tries_To_Open = 20;

const Mode *Find_Mode(const char *text) {
    for (const Mode &mode : Modes) {
        if (text && std::strcmp(mode.text, text) == 0) return &mode;
    }
    return nullptr;
}

// Not waiting for the other end of a pipe, which is refused afterwards.
FileDescriptor Open_On_Host(const HostPlace &place, int flags) {
    return FileDescriptor(open(place.host_path.c_str(), flags | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, 0666));
}

// The name is looked for once more before it is made, with everybody else shut out.
long Create(const char *path, const Mode &mode, HostPlace &place, FileDescriptor &file) {
    const NameLock lock;
    if (lock.Error() != NO_ERROR) return lock.Error();
    if (const long error = Find_Place(path, place); error != NO_ERROR) return error;
    struct stat status;
    if (mode.exclusive && lstat(place.host_path.c_str(), &status) == 0) return ERROR_FILE_EXISTS;
    if (place.means_folder) return ERROR_INVALID_NAME;
    file = Open_On_Host(place, mode.access | O_CREAT | (mode.exclusive ? O_EXCL : 0));
    return file ? NO_ERROR : Error_At(place.host_path, errno);
}

long Open_Or_Create(const char *path, const Mode &mode, HostPlace &place, FileDescriptor &file) {
    if (const long error = Find_Place(path, place); error != NO_ERROR) return error;
    if (mode.exclusive) return Create(path, mode, place, file);
    file = Open_On_Host(place, mode.access);
    if (!file && errno == ENOENT && mode.creates && !place.means_folder) {
        return Create(path, mode, place, file);
    }
    return file ? NO_ERROR : Error_At(place.host_path, errno);
}

// A stream is for a plain file, or for a device that takes and gives bytes.
long Prepare(int descriptor, const Mode &mode, bool means_folder, bool &plain) {
    struct stat status;
    if (fstat(descriptor, &status) != 0) return Error_Of_Errno(errno);
    plain = S_ISREG(status.st_mode);
    if (!plain && !S_ISCHR(status.st_mode)) return ERROR_ACCESS_DENIED;
    if (means_folder) return ERROR_INVALID_NAME;
    if (plain && (mode.access & O_ACCMODE) != O_RDONLY && Is_Read_Only(status.st_mode))
        return ERROR_ACCESS_DENIED;
    const int flags = fcntl(descriptor, F_GETFL);
    if (flags < 0 || fcntl(descriptor, F_SETFL, flags & ~O_NONBLOCK) != 0) return Error_Of_Errno(errno);
    return NO_ERROR;
}

// A file may lose its name between its opening and its mark; then the name is looked for again.
long Open_And_Mark(const char *path, const Mode &mode, FileDescriptor &file, bool &plain) {
    HostPlace place;
    for (int tries = Tries_To_Open; tries > 0; --tries) {
        if (const long error = Open_Or_Create(path, mode, place, file); error != NO_ERROR) return error;
        const long error = Prepare(file.Get(), mode, place.means_folder, plain);
        if (error != NO_ERROR || !plain) return error;
        if (!Mark_As_Open(file.Get())) return ERROR_SHARING_VIOLATION;
        if (Leads_To(place.host_path, file.Get())) return NO_ERROR;
        Unmark_As_Open(file.Get());
    }
    return ERROR_SHARING_VIOLATION;
}

long Close_Stream(FILE *stream) {
    const long flushed = fflush(stream) == 0 ? NO_ERROR : Error_Of_Errno(errno);
    Unmark_As_Open(fileno(stream));
    const long closed = fclose(stream) == 0 ? NO_ERROR : Error_Of_Errno(errno);
    return flushed == NO_ERROR ? closed : flushed;
}

// One that is empty needs no cut, which the host may refuse: a file that was just made would stay.
bool Cut_To_Nothing(int descriptor) {
    struct stat status;
    if (fstat(descriptor, &status) == 0 && status.st_size == 0) return true;
    int result;
    do {
        result = ftruncate(descriptor, 0);
    } while (result != 0 && errno == EINTR);
    return result == 0;
}

long Open_Stream(const char *path, const Mode *mode, FILE *&stream) {
    if (!mode) return ERROR_INVALID_PARAMETER;
    FileDescriptor file;
    bool plain = false;
    if (const long error = Open_And_Mark(path, *mode, file, plain); error != NO_ERROR) return error;
    stream = fdopen(file.Get(), mode->text);
    if (!stream) {
        const long error = Error_Of_Errno(errno);
        Unmark_As_Open(file.Get());
        return error;
    }
    const bool done = !plain || !mode->empties || Cut_To_Nothing(file.Get());
    const long error = done ? NO_ERROR : Error_Of_Errno(errno);
    file.Give();
    if (!done) Close_Stream(stream);
    return error;
}

} // namespace

extern "C" {

FILE *Machine_Open_Stream(const char *path, const char *mode) {
    FILE *stream = nullptr;
    const long error = Code_Of([&] { return Open_Stream(path, Find_Mode(mode), stream); });
    return Succeed_Or_Set_Errno(error) ? stream : nullptr;
}

int Machine_Close_Stream(FILE *stream) {
    return Succeed_Or_Set_Errno(stream ? Close_Stream(stream) : ERROR_INVALID_PARAMETER) ? 0 : EOF;
}
}
