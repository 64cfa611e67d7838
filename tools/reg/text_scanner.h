#pragma once
// Goes through registry text line by line, and within a line piece by piece. What does not fit fails with
// FaultInFile. The text must outlive it.

#include <string>
#include <string_view>

namespace tools::reg {

class Scanner {
  public:
    Scanner(const std::string &text, const std::string &file) : left_(text), file_(file) {}

    [[noreturn]] void Fail(const std::string &text) const;
    unsigned long Line() const { return line_; }

    /// False at the text's end. A line's own end is taken off; zero bytes and carriage returns elsewhere in
    /// it are refused.
    bool Next_Line();
    /// Whether the line had an end, or the text just stopped.
    bool Line_Is_Ended() const { return ended_; }

    std::string_view Rest() const { return rest_; }
    bool At_End() const { return rest_.empty(); }
    void Skip(std::size_t size) { rest_.remove_prefix(size); }
    void Skip_Blanks();
    /// Past `word` if it stands here, whatever its letter case in the text.
    bool Take(std::string_view word);
    void Require_Only_Comment(const char *behind);

    /// A text in quotes.
    std::string Quoted();
    /// One to eight digits.
    unsigned long Hexadecimal();
    /// Pairs of digits with commas between them, over as many lines as end with a backslash. None is a list.
    std::string Bytes();

  private:
    void Continue_Lines();
    int Digit() const;

    std::string_view left_; // lines to come
    std::string_view rest_; // of this line
    std::string file_;
    unsigned long line_ = 0;
    bool ended_ = true;
};

} // namespace tools::reg
