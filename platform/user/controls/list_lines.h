#pragma once
// The lines of a list: texts, each with a word of the caller's, and the one that is chosen. No windows here.

#include <platform/types.h>

#include <string>
#include <string_view>
#include <vector>

class ListLines {
  public:
    struct Line {
        std::string text;
        LPARAM data = 0;
    };

    int Count() const { return static_cast<int>(lines_.size()); }
    bool Has(int index) const { return index >= 0 && index < Count(); }
    Line &At(int index) { return lines_[static_cast<std::size_t>(index)]; }
    const Line &At(int index) const { return lines_[static_cast<std::size_t>(index)]; }

    /// Puts a line before `index`, at most Count(); the chosen line stays chosen. May throw std::bad_alloc,
    /// with nothing changed.
    void Insert(int index, const char *text);
    /// A chosen line that goes leaves none chosen.
    void Remove(int index);
    void Clear();
    /// Behind the last that comes before it, without regard to case.
    int Sorted_Place(std::string_view text) const;

    enum class Match { Beginning, Whole };
    /// Without regard to case, from behind `after`, once around; -1 for none.
    int Find(int after, std::string_view text, Match match) const;

    int chosen = -1;

  private:
    std::vector<Line> lines_;
};
