#pragma once
// Counts of a table's strings and of its bytes.

#include <tools/ltx/strings_file.h>

#include <map>

namespace tools::ltx {

struct TableStats {
    std::size_t strings = 0, without_identifier = 0, without_comments = 0, without_text = 0;
    std::size_t hidden = 0; // behind another one of the same identifier
    std::map<long, std::size_t> types;
    std::size_t bytes = 0; // of which `parts` is the whole
    std::vector<std::pair<const char *, std::size_t>> parts;
    std::size_t longest_text = 0; // bytes
    std::string longest_identifier;
};

/// Of a table without damage.
TableStats Stats_Of(const StringsFile &table);

} // namespace tools::ltx
