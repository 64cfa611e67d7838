#pragma once
// A define file line by line: the names that the library's reader takes from it, and why a line gives none.
//
// Names and values are the library's; on which line they stand and what is odd about them is of an own look
// at the text.

#include <tools/content/text_lines.h>

#include <string>
#include <vector>

namespace tools {

struct ParsedDefine {
    std::string name, value;
};

/// What the library's reader takes from a text, in its order. Fails with 2 where it cannot.
std::vector<ParsedDefine> Parse_Defines(std::string_view text);

/// A "#define" of the text.
struct FoundDefine {
    unsigned long line = 0;
    bool is_taken = true;    // into the library's table
    unsigned long last_line; // of its name, which line ends do not end
    std::vector<std::string> remarks;
};

/// All of them, in order. `earlier` names count as there already: of two with one name the first is found.
std::vector<FoundDefine> Find_Defines(std::string_view text);

/// Why nothing is defined on a line: `text` of the file's line of that number, which no define begins on.
/// `before` is the last one in front of it, null for none; `is_behind_end` for a line behind a zero byte.
std::string Why_No_Define(std::string_view text, unsigned long number, const FoundDefine *before,
                          bool is_behind_end);

/// Where the library's reader stops: at a zero byte, or at the text's end.
std::size_t End_Of_Defines(std::string_view text);

} // namespace tools
