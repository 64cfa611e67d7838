#include <tools/content/passing_file.h>
#include <tools/failure.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <unistd.h>

namespace tools {

namespace {

bool Write_All(int descriptor, std::string_view content) {
    while (!content.empty()) {
        const ssize_t size = write(descriptor, content.data(), content.size());
        if (size < 0 && errno == EINTR) continue;
        if (size < 0) return false;
        content.remove_prefix(static_cast<std::size_t>(size));
    }
    return true;
}

} // namespace

PassingFile::PassingFile(std::string_view content) {
    const char *folder = std::getenv("TMPDIR");
    path_ = std::string(folder != nullptr && *folder != 0 ? folder : "/tmp") + "/kelmara-XXXXXX";
    const int descriptor = mkstemp(path_.data());
    if (descriptor < 0) throw Failure(Exit_Unusable, path_ + ": " + std::strerror(errno));
    const int error = Write_All(descriptor, content) ? 0 : errno;
    close(descriptor);
    if (error == 0) return;
    unlink(path_.c_str());
    throw Failure(Exit_Unusable, path_ + ": " + std::strerror(error));
}

PassingFile::~PassingFile() {
    unlink(path_.c_str());
}

} // namespace tools
