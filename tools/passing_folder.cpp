#include <tools/passing_folder.h>

#include <tools/own_folder.h>

#include <platform/machine.h>

#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <string_view>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

namespace tools {

namespace {

constexpr char Shared_Memory[] = "/dev/shm";
constexpr std::string_view Mark = "kelmara-passing-";
constexpr unsigned long long Room_Wanted = 16 << 20; // a passing machine takes some kilobytes
constexpr std::time_t Grace = 60;                    // seconds, within which a folder gets its lock

bool Has_Room(const char *place) {
    struct statvfs status;
    return access(place, W_OK | X_OK) == 0 && statvfs(place, &status) == 0 &&
           static_cast<unsigned long long>(status.f_bavail) * status.f_frsize >= Room_Wanted;
}

int Opened(const std::string &folder) {
    return open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
}

void Remove_If_Left(const std::string &folder) {
    struct stat status;
    const int lock = Opened(folder);
    if (lock < 0) return;
    const bool is_left = fstat(lock, &status) == 0 && status.st_uid == geteuid() &&
                         std::time(nullptr) - status.st_mtime > Grace && flock(lock, LOCK_EX | LOCK_NB) == 0;
    if (is_left && !Remove_Machine(folder.c_str())) rmdir(folder.c_str());
    close(lock);
}

} // namespace

std::vector<std::string> Passing_Places() {
    const char *const named = std::getenv("TMPDIR");
    if (named != nullptr && *named != 0) return {named};
    if (Has_Room(Shared_Memory)) return {Shared_Memory, "/tmp"};
    return {"/tmp"};
}

PassingFolder::PassingFolder(const std::string &place) : path_(place + "/" + std::string(Mark) + "XXXXXX") {
    if (mkdtemp(path_.data()) == nullptr) return;
    is_made_ = Give_To_Owner(path_);
    if (!is_made_) rmdir(path_.c_str());
}

PassingFolder::~PassingFolder() {
    if (lock_ >= 0) close(lock_);
}

void PassingFolder::Hold() {
    lock_ = Opened(path_);
    while (lock_ >= 0 && flock(lock_, LOCK_SH) != 0 && errno == EINTR) continue;
}

void Remove_Left_Machines(const std::string &place) {
    const std::unique_ptr<DIR, int (*)(DIR *)> folder(opendir(place.c_str()), closedir);
    while (const dirent *const entry = folder ? readdir(folder.get()) : nullptr)
        if (std::string_view(entry->d_name).starts_with(Mark)) Remove_If_Left(place + "/" + entry->d_name);
}

} // namespace tools
