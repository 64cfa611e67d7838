#include <tools/ltx/table_layout.h>
#include <tools/ltx/table_stats.h>

#include <string_view>
#include <unordered_set>

namespace tools::ltx {

namespace {

struct Sizes {
    std::size_t texts = 0, identifiers = 0, comments = 0;
};

void Count(const TableString &string, TableStats &stats, Sizes &sizes) {
    ++stats.strings;
    stats.without_identifier += string.identifier.empty();
    stats.without_comments += string.comments.empty();
    stats.without_text += string.text.empty();
    ++stats.types[string.type];
    sizes.texts += string.text.size();
    sizes.identifiers += string.identifier.size();
    sizes.comments += string.comments.size();
    if (string.text.size() <= stats.longest_text) return;
    stats.longest_text = string.text.size();
    stats.longest_identifier = string.identifier;
}

} // namespace

TableStats Stats_Of(const StringsFile &table) {
    TableStats stats;
    Sizes sizes;
    std::unordered_set<std::string_view> seen;
    for (const LocatedString &each : table.strings) {
        Count(each.string, stats, sizes);
        const bool is_first = seen.insert(each.string.identifier).second;
        stats.hidden += !is_first && !each.string.identifier.empty();
    }
    const std::size_t used = sizes.texts + sizes.identifiers + sizes.comments;
    const std::size_t entries = sizes.texts + stats.strings * Frame_Size;
    stats.bytes = table.bytes.size();
    stats.parts = {{"texts", sizes.texts},
                   {"identifiers", sizes.identifiers},
                   {"comments", sizes.comments},
                   {"frame", entries - used},
                   {"header and spare", stats.bytes - entries}};
    return stats;
}

} // namespace tools::ltx
