#pragma once
// The suite's log file, read while others write it. It is open only during a look, and never locked.

#include <tools/log/log_line.h>

#include <functional>
#include <sys/stat.h>

namespace tools {

class LogFileView {
  public:
    /// Fails, with 1, when the machine's suite has no root folder, in which the log lies.
    LogFileView();

    const std::string &Path() const { return path_; } // of the host
    bool Is_There() const;
    /// Hands over the entries of the lines that have come whole since the last look; of all at the first, and
    /// when the file is another one or has become shorter. None while it is not there.
    void Look(const std::function<void(const LogEntry &)> &take);

  private:
    std::string path_;
    dev_t device_ = 0;
    ino_t file_ = 0;
    off_t seen_ = 0;
};

} // namespace tools
