#include <tools/log/log_file_view.h>

#include <tools/failure.h>
#include <tools/files.h>
#include <tools/interruption.h>

#include <kelmara/suite/folders.h>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace tools {

namespace {

constexpr int Root_Folder = 8;
constexpr std::size_t Block = 1 << 20;
constexpr std::size_t Longest_Line = 1 << 20; // what is longer is no line of the log

class OpenFile {
  public:
    explicit OpenFile(const std::string &path)
        : descriptor_(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {}
    ~OpenFile() {
        if (descriptor_ >= 0) close(descriptor_);
    }
    OpenFile(const OpenFile &) = delete;
    OpenFile &operator=(const OpenFile &) = delete;
    int Get() const { return descriptor_; }

  private:
    const int descriptor_;
};

std::string Log_Path() {
    char folder[260] = {};
    GetKelMaraFolderPath(Root_Folder, folder);
    if (*folder == 0) throw Failure(Exit_Negative, "no suite is installed on the machine");
    std::string path = folder;
    if (!path.ends_with('\\')) path += '\\';
    return Host_Name(path + "log.html");
}

} // namespace

LogFileView::LogFileView() : path_(Log_Path()) {}

bool LogFileView::Is_There() const {
    return access(path_.c_str(), F_OK) == 0;
}

void LogFileView::Look(const std::function<void(const LogEntry &)> &take) {
    const OpenFile file(path_);
    struct stat status;
    if (file.Get() < 0 && errno == ENOENT) return;
    if (file.Get() < 0 || fstat(file.Get(), &status) != 0)
        throw Failure(Exit_Unusable, path_ + ": " + std::strerror(errno));
    if (status.st_dev != device_ || status.st_ino != file_ || status.st_size < seen_) seen_ = 0;
    device_ = status.st_dev;
    file_ = status.st_ino;
    std::string text(Block, '\0'), rest;
    for (off_t at = seen_;;) {
        End_If_Interrupted();
        const ssize_t size = pread(file.Get(), text.data(), text.size(), at);
        if (size < 0) throw Failure(Exit_Unusable, path_ + ": " + std::strerror(errno));
        if (size == 0) return;
        at += size;
        rest.append(text, 0, static_cast<std::size_t>(size));
        std::size_t begin = 0;
        for (std::size_t end; (end = rest.find('\n', begin)) != rest.npos; begin = end + 1) {
            const auto entry = Read_Log_Line(std::string_view(rest).substr(begin, end - begin));
            if (entry) take(*entry);
        }
        seen_ += static_cast<off_t>(begin);
        rest.erase(0, begin);
        if (rest.size() <= Longest_Line) continue;
        seen_ += static_cast<off_t>(rest.size());
        rest.clear();
    }
}

} // namespace tools
