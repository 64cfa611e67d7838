#include <tools/machine/tree_copy.h>

#include <tools/failure.h>
#include <tools/interruption.h>
#include <tools/own_folder.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <unistd.h>

namespace tools {

namespace {

constexpr int Most_Attempts = 5;
constexpr std::size_t Block = 1 << 20;

[[noreturn]] void Fail_On(const std::string &path) {
    throw Failure(Exit_Unusable, path + ": " + std::strerror(errno));
}

class OpenFile {
  public:
    OpenFile(const std::string &path, int flags)
        : descriptor_(open(path.c_str(), flags | O_CLOEXEC | O_NOFOLLOW, 0600)) {}
    ~OpenFile() {
        if (descriptor_ >= 0) close(descriptor_);
    }
    OpenFile(const OpenFile &) = delete;
    OpenFile &operator=(const OpenFile &) = delete;
    explicit operator bool() const { return descriptor_ >= 0; }
    int Get() const { return descriptor_; }

  private:
    const int descriptor_;
};

bool Is_Same_Time(const timespec &left, const timespec &right) {
    return left.tv_sec == right.tv_sec && left.tv_nsec == right.tv_nsec;
}

bool Is_Unchanged(const struct stat &before, const struct stat &after) {
    return before.st_size == after.st_size && Is_Same_Time(before.st_mtim, after.st_mtim) &&
           Is_Same_Time(before.st_ctim, after.st_ctim);
}

bool Write_All(int descriptor, const char *bytes, std::size_t size) {
    for (std::size_t written = 0; written < size;) {
        const ssize_t count = write(descriptor, bytes + written, size - written);
        if (count < 0 && errno != EINTR) return false;
        if (count > 0) written += static_cast<std::size_t>(count);
    }
    return true;
}

void Copy_By_Blocks(const OpenFile &from, const OpenFile &to, const std::string &from_path,
                    const std::string &to_path) {
    std::vector<char> block(Block);
    for (;;) {
        End_If_Interrupted();
        const ssize_t size = read(from.Get(), block.data(), block.size());
        if (size == 0) return;
        if (size < 0 && errno == EINTR) continue;
        if (size < 0) Fail_On(from_path);
        if (!Write_All(to.Get(), block.data(), static_cast<std::size_t>(size))) Fail_On(to_path);
    }
}

// The host can share the bytes of the two where its disk knows how to.
void Copy_Content(const OpenFile &from, const OpenFile &to, const std::string &from_path,
                  const std::string &to_path) {
    if (lseek(from.Get(), 0, SEEK_SET) != 0 || lseek(to.Get(), 0, SEEK_SET) != 0 ||
        ftruncate(to.Get(), 0) != 0)
        Fail_On(to_path);
    for (;;) {
        End_If_Interrupted();
        const ssize_t size = copy_file_range(from.Get(), nullptr, to.Get(), nullptr, 16 * Block, 0);
        if (size < 0 && errno == EINTR) continue;
        if (size < 0 && errno == ENOSPC) Fail_On(to_path);
        if (size <= 0) break;
    }
    Copy_By_Blocks(from, to, from_path, to_path); // what is left: nothing, or all of it
}

} // namespace

std::size_t Entries_Below(const std::string &path) {
    using std::filesystem::recursive_directory_iterator;
    std::size_t count = 1;
    struct stat status;
    if (lstat(path.c_str(), &status) != 0 || !S_ISDIR(status.st_mode)) return count;
    std::error_code error;
    recursive_directory_iterator entry(path, std::filesystem::directory_options::skip_permission_denied,
                                       error);
    for (; !error && entry != recursive_directory_iterator(); entry.increment(error)) {
        End_If_Interrupted();
        ++count;
    }
    return count;
}

void TreeCopy::Copy(const std::string &from, const std::string &to) {
    End_If_Interrupted();
    progress_.Step();
    struct stat original;
    if (lstat(from.c_str(), &original) == 0) return Copy_Entry(from, to, original);
    if (errno != ENOENT) Fail_On(from);
}

void TreeCopy::Copy_Entry(const std::string &from, const std::string &to, const struct stat &original) {
    if (S_ISDIR(original.st_mode)) return Copy_Folder(from, to, original);
    if (S_ISLNK(original.st_mode)) return Copy_Link(from, to);
    if (S_ISREG(original.st_mode)) return Copy_File(from, to);
    remarks_.push_back(from + ": is no file, and left out");
}

void TreeCopy::Copy_Folder(const std::string &from, const std::string &to, const struct stat &original) {
    if (!Make_Own_Folder(to)) Fail_On(to);
    folders_.push_back({to, original});
    std::error_code error;
    std::filesystem::directory_iterator entry(from, error);
    for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
        const std::string name = entry->path().filename();
        Copy(from + "/" + name, to + "/" + name);
    }
    if (error) throw Failure(Exit_Unusable, from + ": " + error.message());
}

// As its text has it, whatever the folders on the way are: such a link leads to the copy as it stands.
bool TreeCopy::Stays_Within(const std::string &folder, const std::string &target) const {
    if (target.starts_with('/')) return false;
    long depth = std::count(folder.begin() + static_cast<long>(whole_.size()), folder.end(), '/') - 1;
    for (const std::filesystem::path &step : std::filesystem::path(target)) {
        if (step == "..") --depth;
        if (step != ".." && step != "." && !step.empty()) ++depth;
        if (depth < 0) return false;
    }
    return true;
}

std::string TreeCopy::Target_For_Copy(const std::string &link, const std::string &target) const {
    std::error_code error;
    const std::string folder = link.substr(0, link.rfind('/') + 1);
    const std::string named = target.starts_with('/') ? target : folder + target;
    const std::string place = std::filesystem::weakly_canonical(named, error);
    if (error) return target;
    const bool leads_within = (place + "/").starts_with(whole_ + "/");
    if (leads_within && Stays_Within(folder, target)) return target;
    if (!leads_within) return target.starts_with('/') ? target : place;
    const std::string within =
        std::filesystem::relative(place, folder, error); // also for one that goes round
    return error || within.empty() ? target : within;
}

void TreeCopy::Copy_Link(const std::string &from, const std::string &to) {
    char target[PATH_MAX];
    const ssize_t length = readlink(from.c_str(), target, sizeof target - 1);
    if (length < 0) Fail_On(from);
    target[length] = 0;
    if (symlink(Target_For_Copy(from, target).c_str(), to.c_str()) != 0) Fail_On(to);
}

void TreeCopy::Copy_File(const std::string &from, const std::string &to) {
    const OpenFile source(from, O_RDONLY | O_NONBLOCK);
    if (!source && errno == ENOENT) return;
    if (!source) Fail_On(from);
    const OpenFile target(to, O_WRONLY | O_CREAT | O_EXCL);
    if (!target) Fail_On(to);
    struct stat before = {}, after = {};
    bool unchanged = false;
    for (int attempt = 0; attempt < Most_Attempts && !unchanged; ++attempt) {
        if (fstat(source.Get(), &before) != 0) Fail_On(from);
        Copy_Content(source, target, from, to);
        if (fstat(source.Get(), &after) != 0) Fail_On(from);
        unchanged = Is_Unchanged(before, after);
    }
    if (!unchanged) remarks_.push_back(from + ": was written all the while, and copied as it stood");
    const timespec times[2] = {after.st_atim, after.st_mtim};
    if (fchmod(target.Get(), after.st_mode & 07777) != 0 || futimens(target.Get(), times) != 0) Fail_On(to);
}

// The innermost first, so that a folder's time is not touched by what is done in it.
void TreeCopy::Finish() {
    for (; !folders_.empty(); folders_.pop_back()) {
        const auto &[path, original] = folders_.back();
        const timespec times[2] = {original.st_atim, original.st_mtim};
        if (chmod(path.c_str(), original.st_mode & 07777) != 0 ||
            utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW) != 0)
            Fail_On(path);
    }
}

} // namespace tools
