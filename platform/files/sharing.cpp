#include <platform/files/sharing.h>

#include <fcntl.h>
#include <sys/stat.h>

namespace {

constexpr useconds_t Pause = 1000;
constexpr int Tries_To_Mark = 2000;
constexpr int Tries_Alone = 5;
constexpr int Tries_To_Find = 20;

// 0 or a number of errno; EWOULDBLOCK when others hold it all the time.
int Lock_In_Time(int descriptor, int operation, int tries) {
    while (!Lock_File(descriptor, operation | LOCK_NB)) {
        if (errno != EWOULDBLOCK || --tries == 0) return errno;
        usleep(Pause);
    }
    return 0;
}

// Nothing for what needs no lock, or can have none.
FileDescriptor Open_To_Lock(const std::string &host_path) {
    struct stat status;
    if (lstat(host_path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return FileDescriptor();
    return FileDescriptor(open(host_path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOFOLLOW));
}

} // namespace

bool Mark_As_Open(int descriptor) {
    return Lock_In_Time(descriptor, LOCK_SH, Tries_To_Mark) != EWOULDBLOCK;
}

void Unmark_As_Open(int descriptor) {
    Unlock_File(descriptor);
}

bool Leads_To(const std::string &host_path, int descriptor) {
    struct stat named, opened;
    return stat(host_path.c_str(), &named) == 0 && fstat(descriptor, &opened) == 0 &&
           named.st_dev == opened.st_dev && named.st_ino == opened.st_ino;
}

// A process that is just being started has its parent's descriptors for a moment, those closed meanwhile too.
SoleUse::SoleUse(const std::string &host_path) {
    for (int tries = Tries_To_Find; tries > 0; --tries) {
        FileDescriptor file = Open_To_Lock(host_path);
        const int error = file ? Lock_In_Time(file.Get(), LOCK_EX, Tries_Alone) : 0;
        granted_ = error != EWOULDBLOCK;
        if (!file || error != 0) return;
        file_ = std::move(file);
        if (Leads_To(host_path, file_.Get())) return;
        Unlock_File(file_.Get());
    }
    granted_ = false;
}

SoleUse::~SoleUse() {
    if (file_) Unlock_File(file_.Get());
}
