#include <tools/command.h>
#include <tools/json.h>
#include <tools/ltx/ltx_commands.h>
#include <tools/ltx/string_line.h>
#include <tools/ltx/strings_file.h>
#include <tools/ltx/table_stats.h>
#include <tools/machine_choice.h>
#include <tools/output.h>

#include <cstdio>

namespace tools::ltx {

namespace {

struct Options {
    std::string table;
    bool json = false;
};

std::string Row(const char *label, std::size_t number, const std::string &remark) {
    char row[64];
    std::snprintf(row, sizeof row, "%-22s%12lu", label, static_cast<unsigned long>(number));
    return row + (remark.empty() ? "" : "  " + remark);
}

std::string Share(std::size_t part, std::size_t whole) {
    char share[32];
    const double percent = 100.0 * static_cast<double>(part) / static_cast<double>(whole);
    std::snprintf(share, sizeof share, "%5.1f %%", percent);
    return share;
}

void Print_Stats(const TableStats &stats) {
    Print_Line(Row("strings", stats.strings, ""));
    Print_Line(Row("  without identifier", stats.without_identifier, ""));
    Print_Line(Row("  without comments", stats.without_comments, ""));
    Print_Line(Row("  without text", stats.without_text, ""));
    Print_Line(Row("  identifier not first", stats.hidden, ""));
    for (const auto &[type, count] : stats.types)
        Print_Line(Row(("  of type " + std::to_string(type)).c_str(), count, ""));
    Print_Line(Row("bytes", stats.bytes, "in the file and in memory"));
    for (const auto &[label, bytes] : stats.parts)
        Print_Line(Row((std::string("  ") + label).c_str(), bytes, Share(bytes, stats.bytes)));
    Print_Line(Row("longest text", stats.longest_text, Escaped(stats.longest_identifier)));
}

Json Json_Of(const TableStats &stats) {
    Json parts = Json::object(), types = Json::object();
    for (const auto &[label, bytes] : stats.parts) parts[label] = bytes;
    for (const auto &[type, count] : stats.types) types[std::to_string(type)] = count;
    return {
        {"strings", stats.strings},
        {"without_identifier", stats.without_identifier},
        {"without_comments", stats.without_comments},
        {"without_text", stats.without_text},
        {"identifier_not_first", stats.hidden},
        {"types", types},
        {"bytes", stats.bytes},
        {"parts", parts},
        {"longest_text", {{"bytes", stats.longest_text}, {"identifier", Utf8_Of(stats.longest_identifier)}}}};
}

ExitCode Stats(const Options &options) {
    const BorrowedMachine machine;
    const StringsFile file = Load_Table(options.table);
    Require_Readable(file);
    const TableStats stats = Stats_Of(file);
    if (options.json)
        Print_Json(Json_Of(stats));
    else
        Print_Stats(stats);
    return Exit_Success;
}

} // namespace

void Add_Stats(CommandTree &tree, CLI::App *ltx) {
    const auto options = std::make_shared<Options>();
    CLI::App *stats = tree.Add("stats", "counts a table's strings and bytes", ltx);
    Add_Place(stats, "TABLE", options->table, "the table, \"-\" for standard input");
    stats->add_flag("--json", options->json, "as JSON");
    stats->footer(
        "A table is held in memory as it stands in the file; a loaded one takes 8 to 16 bytes more for\n"
        "each string. It says nothing of its language.");
    tree.Does(stats, [options] { return Stats(*options); });
}

} // namespace tools::ltx
