#pragma once
// Tables made to be read: columns as wide as what stands in them, texts fit for a terminal.

#include <string>
#include <vector>

namespace tools {

/// Text with its control characters as "\xNN", so that it cannot command a terminal.
std::string Shown(const std::string &text);

class Columns {
  public:
    /// A heading that begins with ">" is of a column of numbers, set to the right.
    explicit Columns(std::vector<std::string> headings);
    void Add(std::vector<std::string> row);
    bool Is_Empty() const { return rows_.empty(); }
    /// With its headings, a line each.
    std::string Text() const;

  private:
    std::string Line_Of(const std::vector<std::string> &row, const std::vector<std::size_t> &widths) const;

    std::vector<std::string> headings_;
    std::vector<bool> to_the_right_;
    std::vector<std::vector<std::string>> rows_;
};

} // namespace tools
