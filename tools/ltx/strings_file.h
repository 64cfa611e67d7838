#pragma once
// A file of strings, read whole: a `.ltx` table or a text.

#include <tools/ltx/finding.h>
#include <tools/ltx/table_string.h>

#include <vector>

namespace tools::ltx {

struct LocatedString {
    TableString string;
    long number; // the line it stands in, or its index
};

struct StringsFile {
    std::string name, bytes; // of a text in the machine's code page
    bool is_table = false;
    std::vector<LocatedString> strings; // as far as they can be read
    std::vector<Finding> faults;
};

/// How bytes of a text are to be read: with `utf8`, or a byte order mark at their start, as UTF-8, else as
/// the machine's own. Faults are noted; only what cannot be read at all fails, with 2.
StringsFile Load_Text(const std::string &name, bool utf8);
StringsFile Load_Table(const std::string &name);

/// A table if the name ends in ".ltx" or there is a zero byte in it, which no text has.
StringsFile Load_Strings(const std::string &name, bool utf8);

/// The bytes of a text in the machine's code page: what Load_Text begins with.
std::string Read_Text(const std::string &name, bool utf8);

/// What Load_Text and Load_Table do with the bytes.
StringsFile Text_Of(const std::string &name, std::string bytes);
StringsFile Table_Of(const std::string &name, std::string bytes);

/// Fails with 2 for the first fault: of a table only for damage, as long as no text is to carry it.
void Require_Readable(const StringsFile &file);
void Require_Faultless(const StringsFile &file);

/// A text for a file or for standard output.
std::string Encoded(const std::string &text, bool utf8);

} // namespace tools::ltx
