#pragma once
// A text in lines, as people and editors count them: CR, LF and CR LF each end one.

#include <string>
#include <string_view>

namespace tools {

class TextLines {
  public:
    /// The text must live as long as the object.
    explicit TextLines(std::string_view text) : text_(text) {}

    /// The next line, without its end. False behind the last one; an end at the text's end begins no line.
    bool Next(std::string_view &line);
    /// Of the line that Next gave last, from 1.
    unsigned long Number() const { return number_; }
    /// Where the line behind it begins.
    std::size_t Behind() const { return behind_; }

  private:
    std::string_view text_;
    std::size_t behind_ = 0;
    unsigned long number_ = 0;
};

unsigned long Count_Text_Lines(std::string_view text);

/// The number of the line that a place of the text lies in.
unsigned long Line_Of(std::string_view text, std::size_t place);

/// Fit for one line of a listing: control characters become "\r", "\n", "\t" or "\x07", a backslash stays.
std::string On_One_Line(std::string_view text);

/// With the letters a to z in capitals, as the library folds names.
std::string In_Capitals(std::string text);

/// As wide as `width` at least, with a blank behind it in any case.
std::string Column(const std::string &text, std::size_t width);
/// The number at the right of such a column.
std::string Number_Column(unsigned long number, std::size_t width);

} // namespace tools
