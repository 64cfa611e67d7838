#pragma once
// The patterns of FindFirstFileA: "*" and "?" as Windows takes them, which is not by the letter.

#include <string>
#include <string_view>

class NamePattern {
  public:
    explicit NamePattern(std::string_view pattern);

    static bool Has_Wildcards(std::string_view name) { return name.find_first_of("*?") != name.npos; }

    /// Without regard to case.
    bool Matches(std::string_view name) const;

  private:
    std::string signs_;
};
