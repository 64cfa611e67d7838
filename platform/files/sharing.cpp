#include <platform/files/sharing.h>

#include <platform/kernel/file_descriptor.h>

#include <fcntl.h>
#include <sys/stat.h>

namespace {

constexpr int Most_Attempts = 5;
constexpr useconds_t Pause = 1000;

} // namespace

void Mark_As_Open(int descriptor) {
    Lock_File(descriptor, LOCK_SH | LOCK_NB);
}

void Unmark_As_Open(int descriptor) {
    Unlock_File(descriptor);
}

// A process that is just being started has its parent's descriptors for a moment, those closed meanwhile too.
bool Is_Open_Somewhere(const std::string &host_path) {
    struct stat status;
    if (lstat(host_path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return false;
    const FileDescriptor file(open(host_path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOFOLLOW));
    if (!file) return false;
    for (int attempt = 1; !Lock_File(file.Get(), LOCK_EX | LOCK_NB); ++attempt) {
        if (errno != EWOULDBLOCK) return false;
        if (attempt == Most_Attempts) return true;
        usleep(Pause);
    }
    Unlock_File(file.Get());
    return false;
}
