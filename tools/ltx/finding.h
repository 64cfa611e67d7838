#pragma once
// Something that was found in a file of strings, and where: in a line of a text, or at an entry of a table.

#include <tools/json_type.h>

namespace tools::ltx {

struct Finding {
    static constexpr long Header = -1;

    std::string file;
    bool in_table;
    long number; // a line from 1, or an entry's index from 0
    std::string identifier;
    std::string text;            // for people
    bool damage = false;         // the string cannot be read as it was meant
    std::string named_file = {}; // stands behind the text, which is the machine's, as the host writes it
};

/// "file:line: text", "file: identifier index: text", and "file: text" for a table's header.
std::string Shown(const Finding &finding);
Json Json_Of(const Finding &finding);

} // namespace tools::ltx
