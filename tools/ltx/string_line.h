#pragma once
// A string as a line of text: text, identifier, type and comments, with tabs between them.
//
// The plain form is the library's own, which CStringTable exports and imports. It keeps each backslash of a
// text as it is, turns "\r", "\n" and "\t" of comments into characters, has a blank for no comments, and
// takes several tabs for one. What it cannot carry stands in the escaped form, below a line "#escaped": four
// fields with one tab between them, in each of them "\\", "\r", "\n", "\t" and "\x" with two digits.
//
// Comments that begin with a blank or are a single character, which CStringTable drops, are kept here.

#include <tools/ltx/table_string.h>

#include <string_view>

namespace tools::ltx {

inline constexpr std::string_view Escape_Mark = "#escaped";

/// What the string's lines are, line ends included: its own, and the mark above it if need be.
std::string Lines_Of(const TableString &string);

/// A line without its end, in the one form or the other. What is wrong with it; empty, and `string` is set,
/// when nothing is.
std::string Parse_Plain(std::string_view line, TableString &string);
std::string Parse_Escaped(std::string_view line, TableString &string);

/// Whether it has the fields of a string in the plain form, whatever they hold.
bool Looks_Like_String(std::string_view line);

/// The bytes of a text in the escaped form, and back; false for what is no such form.
std::string Escaped(std::string_view text);
bool Unescape(std::string_view escaped, std::string &text);

} // namespace tools::ltx
