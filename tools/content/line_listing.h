#pragma once
// A text's lines as people read what they give: each with its number, its remarks in brackets below it.

#include <string>
#include <vector>

namespace tools {

class LineListing {
  public:
    /// For a text of so many lines.
    explicit LineListing(unsigned long lines);

    void Tell(unsigned long line, const std::string &text) const;
    void Tell_Remarks(unsigned long line, const std::vector<std::string> &remarks) const;

  private:
    std::size_t digits_;
};

/// "1 define", "2 defines".
std::string Counted(std::size_t count, const std::string &what);

} // namespace tools
