#pragma once
// A section file line by line: what each gives, and why it gives nothing or other than it looks.
//
// What a line gives is the library's: its parser reads the text, in pieces at whose ends it has nothing half
// read. The reasons are of this reader's own look at the line, which also says where a piece ends.

#include <tools/content/text_lines.h>

#include <string>
#include <vector>

namespace tools {

struct SectionLine {
    unsigned long number = 0; // from 1
    long sections = 0;        // that begin on it
    bool has_item = false;    // ends on it, in the section that begins last
    bool is_fault = false;    // the parser ends here, for the reason given
    bool is_whole = true;     // the parser has nothing half read behind it
    std::string reason;       // why it gives nothing, or the fault; empty where it gives something
    std::vector<std::string> remarks;
};

/// The reader's own look. Asked for one line after another; nothing is to be asked behind a fault.
class SectionLook {
  public:
    explicit SectionLook(bool strip_quotes) : strip_quotes_(strip_quotes) {}

    SectionLine Look_At(std::string_view text, unsigned long number);

  private:
    enum class Mode { Name, Before_Value, Value };

    std::size_t Take(std::string_view text, std::size_t at, SectionLine &line);
    std::size_t Take_Header(std::string_view text, std::size_t at, SectionLine &line);
    void Take_Equals(SectionLine &line);
    void Take_Character(char c, SectionLine &line);
    void End_Line(std::string_view text, SectionLine &line);
    std::string Why_Nothing(std::string_view text, const SectionLine &line) const;

    const bool strip_quotes_;
    Mode mode_ = Mode::Name;
    bool in_section_ = false;
    std::size_t name_length_ = 0;
    std::size_t length_at_header_ = 0; // of the name, at the last section's
    unsigned long name_line_ = 0;      // where the item begins; 0 for none yet
    bool blank_in_name_ = false;
};

struct ParsedItem {
    std::string name, value;
};

struct ParsedSection {
    std::string name;
    std::vector<ParsedItem> items;
};

/// What the library's parser makes of a text: its result, and what stands in the list then. Fails with 2
/// where there is no memory.
long Parse_Sections(std::string_view text, bool strip_quotes, std::vector<ParsedSection> &sections);

/// The text line by line, with what the parser gives for each.
class SectionReader {
  public:
    SectionReader(std::string_view text, bool strip_quotes);

    struct Line {
        SectionLine look;
        std::vector<ParsedSection> sections; // those that begin on it, with the item if it ends there
        std::vector<ParsedItem> items;       // of the section that began before it: one or none
    };
    bool Next(Line &line);

  private:
    bool Read_Piece();

    std::string_view text_;
    const bool strip_quotes_;
    TextLines lines_;
    SectionLook look_;
    std::string section_; // that the piece goes on with, as a header; empty for none
    std::vector<Line> piece_;
    std::size_t place_ = 0; // in the piece
    bool at_fault_ = false;
};

} // namespace tools
