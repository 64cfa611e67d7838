#pragma once
// Lists in JSON that are written as they come, an element a line: for what may be too much to hold as one
// value.

#include <tools/output.h>

namespace tools {

class JsonList {
  public:
    /// Writes the beginning, behind whatever stands on its line. Elements stand `indent` blanks from its
    /// left.
    explicit JsonList(std::size_t indent) : indent_(indent) { Print("["); }

    void Add(const Json &element) { Add_Written(element.dump()); }
    /// The beginning of an element, which goes on behind it.
    void Add_Written(const std::string &element);
    /// Writes the end.
    void Close();

  private:
    std::size_t indent_;
    bool is_empty_ = true;
};

} // namespace tools
