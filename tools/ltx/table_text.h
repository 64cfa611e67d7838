#pragma once
// A table from its text, and the text of a table: each is the other's way back.

#include <tools/ltx/strings_file.h>

namespace tools::ltx {

/// The bytes of the table that `text` describes. The first faulty line fails, with 2, as one of `name`.
std::string Compiled(const std::string &name, const std::string &text);

/// The text of a table's strings, as far as they could be read.
std::string Dumped(const StringsFile &table);

} // namespace tools::ltx
