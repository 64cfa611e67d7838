#pragma once
// A file that lasts as long as its object, in the host's folder for such: for calls of the library that take
// a name where the command has a text.

#include <string>
#include <string_view>

namespace tools {

class PassingFile {
  public:
    /// Fails with 2 when it cannot be written.
    explicit PassingFile(std::string_view content);
    ~PassingFile();
    PassingFile(const PassingFile &) = delete;
    PassingFile &operator=(const PassingFile &) = delete;

    const std::string &Path() const { return path_; }

  private:
    std::string path_;
};

} // namespace tools
