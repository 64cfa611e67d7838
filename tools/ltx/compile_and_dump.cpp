#include <tools/command.h>
#include <tools/files.h>
#include <tools/ltx/ltx_commands.h>
#include <tools/ltx/strings_file.h>
#include <tools/ltx/table_text.h>
#include <tools/machine_choice.h>
#include <tools/tables/columns.h>

#include <cstdio>

namespace tools::ltx {

namespace {

struct Options {
    std::string table, text = "-";
    bool utf8 = false, anyway = false;
};

ExitCode Compile(const Options &options) {
    const BorrowedMachine machine;
    Replace_File(options.table, Compiled(options.text, Read_Text(options.text, options.utf8)));
    return Exit_Success;
}

ExitCode Dump(const Options &options) {
    const BorrowedMachine machine;
    const StringsFile file = Load_Table(options.table);
    if (!options.anyway) Require_Faultless(file);
    if (file.strings.empty()) Require_Readable(file); // no text is given up for nothing
    Replace_File(options.text, Encoded(Dumped(file), options.utf8));
    for (const Finding &fault : file.faults) std::fprintf(stderr, "%s\n", tools::Shown(Shown(fault)).c_str());
    return file.faults.empty() ? Exit_Success : Exit_Negative;
}

} // namespace

void Add_Compile_And_Dump(CommandTree &tree, CLI::App *ltx) {
    const auto options = std::make_shared<Options>();

    CLI::App *compile = tree.Add("compile", "makes a table of a text", ltx);
    Add_Place(compile, "TEXT", options->text, "the text, \"-\" for standard input");
    Add_Place(compile, "TABLE", options->table, "the table to make or replace");
    Add_Utf8(compile, options->utf8);
    tree.Does(compile, [options] { return Compile(*options); });

    CLI::App *dump = tree.Add("dump", "makes a text of a table", ltx);
    Add_Place(dump, "TABLE", options->table, "the table, \"-\" for standard input");
    dump->add_option("TEXT", options->text, "the text to make or replace, standard output without it")
        ->type_name("");
    dump->add_flag(
        "--anyway", options->anyway,
        "take what can be read of a damaged table, say what is wrong, and end with 1 (with 2 for nothing)");
    Add_Utf8(dump, options->utf8);
    dump->footer(
        "The table that `compile` makes of the text has the same strings again, byte for byte and in\n"
        "the same order. What no text can carry (damage, reserved bytes in use) is refused.");
    tree.Does(dump, [options] { return Dump(*options); });
}

} // namespace tools::ltx
