#include <tools/content/section_lines.h>

namespace tools {

namespace {

constexpr std::size_t Longest_Name = 255;
constexpr std::size_t Longest_Section_Name = 256;
constexpr char Blanks[] = " \t";

} // namespace

SectionLine SectionLook::Look_At(std::string_view text, unsigned long number) {
    SectionLine line;
    line.number = number;
    const bool is_swallowed = mode_ != Mode::Name;
    const unsigned long begun = name_line_;
    for (std::size_t at = 0; at < text.size() && !line.is_fault;) at = Take(text, at, line);
    if (line.is_fault) return line;
    End_Line(text, line);
    if (line.sections > 0 || line.has_item) return line;
    line.reason = is_swallowed ? "part of the item that begins on line " + std::to_string(begun) +
                                     ", in front of the first section"
                               : Why_Nothing(text, line);
    return line;
}

std::size_t SectionLook::Take(std::string_view text, std::size_t at, SectionLine &line) {
    const char c = text[at];
    if (c == ';') {
        if (mode_ != Mode::Name)
            line.remarks.push_back("\";\" in column " + std::to_string(at + 1) +
                                   " begins a comment: the value is cut there");
        return text.size();
    }
    if (c == '[' && mode_ != Mode::Value) return Take_Header(text, at, line);
    if (c == '=' && mode_ != Mode::Value)
        Take_Equals(line);
    else if (c != '"' || !strip_quotes_)
        Take_Character(c, line);
    return at + 1;
}

std::size_t SectionLook::Take_Header(std::string_view text, std::size_t at, SectionLine &line) {
    const std::size_t end = text.find(']', at);
    const std::size_t length = (end == text.npos ? text.size() : end) - at - 1;
    line.is_fault = end == text.npos || length > Longest_Section_Name;
    if (length > Longest_Section_Name)
        line.reason = "a section's name has at most 256 characters";
    else if (line.is_fault)
        line.reason = "a section's name has no \"]\" on its line";
    if (line.is_fault) return text.size();

    ++line.sections;
    in_section_ = true;
    length_at_header_ = name_length_;
    if (length == Longest_Section_Name)
        line.remarks.push_back("the 256th character of the section's name is dropped");
    if (mode_ == Mode::Before_Value)
        line.remarks.push_back("\"[\" in front of a value begins a section: the item is in that one, empty");
    return end + 1;
}

void SectionLook::Take_Equals(SectionLine &line) {
    if (mode_ == Mode::Before_Value) {
        line.remarks.push_back("a second \"=\" in front of the value is dropped");
        return;
    }
    if (name_length_ > Longest_Name) {
        line.is_fault = true;
        line.reason = "an item's name has at most 255 characters";
        return;
    }
    if (name_length_ == 0) line.remarks.push_back("the item has no name");
    if (name_line_ == 0) name_line_ = line.number;
    if (name_line_ != line.number)
        line.remarks.push_back("its name begins on line " + std::to_string(name_line_));
    mode_ = Mode::Before_Value;
    name_length_ = 0;
    blank_in_name_ = false;
}

void SectionLook::Take_Character(char c, SectionLine &line) {
    const bool is_blank = c == ' ' || c == '\t';
    if (mode_ != Mode::Name) {
        if (!is_blank) mode_ = Mode::Value;
        return;
    }
    if (is_blank) {
        blank_in_name_ = name_length_ > 0;
        return;
    }
    if (blank_in_name_) line.remarks.push_back("blanks in the name are dropped");
    blank_in_name_ = false;
    if (name_line_ == 0) name_line_ = line.number;
    ++name_length_;
}

void SectionLook::End_Line(std::string_view text, SectionLine &line) {
    blank_in_name_ = false;
    if (mode_ != Mode::Name && in_section_) {
        line.has_item = true;
        mode_ = Mode::Name;
        name_line_ = 0;
    }
    line.is_whole = mode_ == Mode::Name && name_length_ == 0;
    if (mode_ == Mode::Name && line.sections > 0 && name_length_ > length_at_header_)
        line.remarks.push_back("no \"=\" behind the header: it begins the name of the next item");
    if (text.find('\0') != text.npos) line.remarks.push_back("has a zero byte, where programs may stop");
}

std::string SectionLook::Why_Nothing(std::string_view text, const SectionLine &line) const {
    const std::size_t first = text.find_first_not_of(Blanks);
    if (first == text.npos) return "empty";
    if (text[first] == ';') return "comment";
    if (mode_ != Mode::Name)
        return mode_ == Mode::Value ? "in front of the first section: the item has no end, and no header "
                                      "behind it is seen"
                                    : "in front of the first section: its value is still to come";
    if (line.is_whole) return "nothing but double quotes, which are dropped";
    return "no \"=\": it begins the name of the next item";
}

} // namespace tools
