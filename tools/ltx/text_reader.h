#pragma once
// The lines of a text, one after the other. Lines that are empty or begin with "#" are passed over, but for
// "#escaped", which tells how the next line is to be read. A line that begins with "#" and is a whole string
// all the same is a fault: taken for either it might be lost.

#include <tools/ltx/table_string.h>

#include <string_view>

namespace tools::ltx {

struct TextLine {
    enum Kind { Passed_Over, String, Faulty };
    Kind kind = Passed_Over;
    unsigned long number = 0; // from 1
    std::string_view raw;     // without its end
    TableString string;       // of a string
    std::string fault;        // of a faulty line, for people
};

class TextReader {
  public:
    /// `text` must live as long as the reader and the lines it gave.
    explicit TextReader(std::string_view text) : rest_(text) {}

    /// False, and `line` is as it was, behind the last one.
    bool Next(TextLine &line);

  private:
    std::string_view Cut_Line();
    void Understand(TextLine &line);

    std::string_view rest_;
    unsigned long number_ = 0;
    bool escaped_ = false; // the next line is
};

} // namespace tools::ltx
