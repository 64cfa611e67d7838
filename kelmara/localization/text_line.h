#pragma once
// Inside the library: the line of text that an entry of a string table is exported to and imported from, four
// fields with tabs between them.

#include <cstddef>

namespace text_line {

inline constexpr std::size_t Longest = 2047; // characters of an imported line

/// Copies a text of at most `length` characters, which a terminator may end before, to `out` of `room` bytes:
/// carriage returns, line feeds and tabs as the sequences "\r", "\n", "\t". Ends, with a terminator, in front
/// of the first character that does not fit whole. The length of the result.
std::size_t Escape(const char *text, std::size_t length, char *out, std::size_t room);

/// Turns the sequences back, in place.
void Unescape(char *text);

/// An imported line's fields. None of them is empty.
class Fields {
  public:
    /// False for null, a line that is too long, and fewer than four fields.
    bool Split(const char *line);

    char *String, *Identifier, *Type, *Comments;

  private:
    char m_Copy[Longest + 1];
};

} // namespace text_line
