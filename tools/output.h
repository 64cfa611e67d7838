#pragma once
// What commands write to standard output: text in the machine's own code page, 1252, byte for byte; JSON in
// UTF-8 (json.h).

#include <string>

namespace tools {

/// Adds to what goes to standard output. It is written when much has come together and by Flush_Output. Fails
/// with 2 when it cannot be written; a closed pipe is such a failure.
void Print(const std::string &text);
void Print_Line(const std::string &text);
void Flush_Output();

/// Text of the machine as JSON wants it, and back. Every byte has a character of its own: the five that the
/// code page leaves out stand for the control characters of their number.
std::string Utf8_Of(const std::string &text);
/// Fails with 2 for characters that the code page does not have.
std::string Machine_Text_Of(const std::string &utf8);

} // namespace tools
