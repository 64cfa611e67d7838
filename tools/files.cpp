#include <tools/failure.h>
#include <tools/files.h>
#include <tools/interruption.h>
#include <tools/working_file.h>

#include <kelmara/system/file.h>
#include <platform/machine.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

namespace tools {

namespace {

constexpr std::size_t Largest_File = std::size_t{1} << 30;
constexpr int Most_Links = 40;

[[noreturn]] void Fail_On(const std::string &name, int error) {
    if (error == EINTR) End_If_Interrupted();
    throw Failure(Exit_Unusable, name + ": " + std::strerror(error));
}

class OpenFile {
  public:
    explicit OpenFile(int descriptor) : descriptor_(descriptor) {}
    ~OpenFile() {
        if (descriptor_ > STDERR_FILENO) close(descriptor_);
    }
    OpenFile(const OpenFile &) = delete;
    OpenFile &operator=(const OpenFile &) = delete;
    int Descriptor() const { return descriptor_; }

  private:
    int descriptor_;
};

std::string Read_All(int descriptor, const std::string &name) {
    std::string content;
    char block[65536];
    for (;;) {
        const ssize_t size = read(descriptor, block, sizeof block);
        if (size == 0) return content;
        if (size < 0 && errno == EINTR) {
            End_If_Interrupted();
            continue;
        }
        if (size < 0) Fail_On(name, errno);
        content.append(block, static_cast<std::size_t>(size));
        if (content.size() > Largest_File) throw Failure(Exit_Unusable, name + ": over a gigabyte");
    }
}

void Write_All(int descriptor, const std::string &content, const std::string &name) {
    for (std::size_t written = 0; written < content.size();) {
        const ssize_t size = write(descriptor, content.data() + written, content.size() - written);
        if (size < 0 && errno == EINTR) {
            End_If_Interrupted();
            continue;
        }
        if (size < 0) Fail_On(name, errno);
        written += static_cast<std::size_t>(size);
    }
}

/// The file that a write to `host_path` reaches, also through links to one that is not there yet.
std::string Target_Of(const std::string &host_path, const std::string &name) {
    const std::unique_ptr<char, void (*)(void *)> resolved(realpath(host_path.c_str(), nullptr), std::free);
    if (resolved) return resolved.get();
    struct stat there;
    if (stat(host_path.c_str(), &there) == 0) return host_path; // as /dev/stdout, which may lead to a pipe
    std::string path = host_path;
    for (int links = 0; links < Most_Links; ++links) {
        char to[PATH_MAX];
        const ssize_t size = readlink(path.c_str(), to, sizeof to);
        if (size < 0) return path;
        const std::size_t behind_folder = *to == '/' ? 0 : path.rfind('/') + 1;
        path.replace(behind_folder, path.npos, to, static_cast<std::size_t>(size));
    }
    Fail_On(name, ELOOP);
}

void Require_Writable(const std::string &path, const std::string &name, struct stat *before, bool *there) {
    *there = stat(path.c_str(), before) == 0;
    if (!*there && errno != ENOENT) Fail_On(name, errno);
    if (*there && S_ISDIR(before->st_mode)) Fail_On(name, EISDIR);
    if (*there && access(path.c_str(), W_OK) != 0) Fail_On(name, errno);
}

/// A link that leads to what has no name: /dev/stdout where that is a pipe, or a file that was deleted.
bool Leads_To_No_Name(const std::string &target) {
    struct stat status;
    return lstat(target.c_str(), &status) == 0 && S_ISLNK(status.st_mode);
}

/// A device or a pipe takes what is written to it, and stays what it is; so does what has no name.
void Write_Through(const std::string &path, const std::string &content, const std::string &name) {
    const OpenFile file(open(path.c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC | O_NOCTTY));
    if (file.Descriptor() < 0) Fail_On(name, errno);
    Write_All(file.Descriptor(), content, name);
}

/// The whole content at `path`, where nothing is yet. A failure leaves nothing.
void Write_New_File(const std::string &path, const std::string &content, const std::string &name) {
    CKMFile file;
    if (file.Open_With_Rollback(Machine_Path(path).c_str()) != 0)
        throw Failure(Exit_Unusable, name + ": cannot be written");
    const bool whole =
        content.empty() || file.Write(content.data(), static_cast<long>(content.size()), true) == 0;
    const bool long_enough = whole && file.GetLength() == static_cast<long>(content.size());
    if (!long_enough) {
        file.Rollback();
        throw Failure(Exit_Unusable, name + ": the disk does not take it");
    }
    if (file.Close() != 0) throw Failure(Exit_Unusable, name + ": cannot be given its name");
}

void Take_Name(const std::string &from, const std::string &to, const struct stat *before) {
    const OpenFile file(open(from.c_str(), O_RDONLY | O_CLOEXEC));
    if (file.Descriptor() < 0 ||
        (before != nullptr && fchmod(file.Descriptor(), before->st_mode & 07777) != 0) ||
        fsync(file.Descriptor()) != 0 || rename(from.c_str(), to.c_str()) != 0) {
        const int error = errno;
        unlink(from.c_str());
        Fail_On(to, error);
    }
}

} // namespace

bool Is_Machine_Path(const std::string &name) {
    return name.size() >= 2 && name[1] == ':' && std::isalpha(static_cast<unsigned char>(name[0]));
}

std::string Machine_Path(const std::string &name) {
    if (Is_Machine_Path(name)) return name;
    std::string absolute = name;
    if (name.empty() || name[0] != '/') {
        char folder[PATH_MAX];
        if (getcwd(folder, sizeof folder) == nullptr) Fail_On(name, errno);
        absolute = std::string(folder) + "/" + name;
    }
    char path[256], back[PATH_MAX];
    if (!Windows_Path(absolute.c_str(), path, sizeof path))
        throw Failure(Exit_Unusable, name + ": too long for a path of the machine");
    if (std::strchr(path, '?') != nullptr || !Host_Path(path, back, sizeof back))
        throw Failure(Exit_Unusable, name + ": has characters that no path of the machine can have");
    return path;
}

std::string Host_Name(const std::string &name) {
    if (!Is_Machine_Path(name)) return name;
    char path[PATH_MAX];
    if (!Host_Path(name.c_str(), path, sizeof path))
        throw Failure(Exit_Unusable, name + ": no such drive or path");
    return path;
}

std::string Read_File(const std::string &name) {
    if (name == "-") return Read_All(STDIN_FILENO, "standard input");
    const OpenFile file(open(Host_Name(name).c_str(), O_RDONLY | O_CLOEXEC));
    if (file.Descriptor() < 0) Fail_On(name, errno);
    return Read_All(file.Descriptor(), name);
}

void Replace_File(const std::string &name, const std::string &content) {
    if (name == "-") return Write_All(STDOUT_FILENO, content, "standard output");
    const std::string target = Target_Of(Host_Name(name), name);
    struct stat before = {};
    bool there = false;
    Require_Writable(target, name, &before, &there);
    if (there && (!S_ISREG(before.st_mode) || Leads_To_No_Name(target)))
        return Write_Through(target, content, name);
    const std::string work = target + Working_Mark + std::to_string(getpid());
    Write_New_File(work, content, name);
    try {
        End_If_Interrupted(); // the one point where the work is whole and nothing has happened yet
    } catch (...) {
        unlink(work.c_str());
        throw;
    }
    Take_Name(work, target, there ? &before : nullptr);
}

} // namespace tools
