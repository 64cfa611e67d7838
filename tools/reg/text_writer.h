#pragma once
// Writes what text_reader.h reads: lines with CR LF, of at most 80 characters where bytes can be continued.
//
// A text in quotes stands for REG_SZ data with its one zero byte at the end; other REG_SZ data (with a line
// end or a zero byte inside, or without the one at the end) is written as hex(1), so that every byte comes
// back. Lines have no way to carry a line end in a name, nor "]" and ";" in a row in a key's: these fail with
// 2.

#include <tools/reg/value.h>

namespace tools::reg {

void Write_Heading(std::string &out);
/// An empty line, and the key with its path from the root.
void Write_Key(std::string &out, const std::string &path);
/// A value of the key at `path`, which failures name.
void Write_Value(std::string &out, const std::string &path, const NamedValue &value);

/// What stands to the left and to the right of the "=", on one line.
std::string Written_Name(const std::string &name);
std::string Written_Data(const Value &value);

} // namespace tools::reg
