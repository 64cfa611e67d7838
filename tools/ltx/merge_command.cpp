#include <tools/command.h>
#include <tools/files.h>
#include <tools/json.h>
#include <tools/ltx/ltx_commands.h>
#include <tools/ltx/merge.h>
#include <tools/machine_choice.h>
#include <tools/output.h>

#include <cstdio>
#include <optional>

namespace tools::ltx {

namespace {

struct Options {
    std::string source, translation, out;
    std::optional<std::string> earlier;
    bool utf8 = false, json = false;
};

StringsFile Load_Whole(const std::string &name, bool utf8) {
    StringsFile file = Load_Strings(name, utf8);
    Require_Faultless(file);
    return file;
}

std::string Shown(const MergeCounts &counts) {
    std::string shown = std::to_string(counts.added) + " new, " + std::to_string(counts.changed) +
                        " changed, " + std::to_string(counts.gone) + " no longer there, " +
                        std::to_string(counts.kept) + " kept";
    if (counts.unknown > 0)
        shown += " (" + std::to_string(counts.unknown) +
                 " of them taken to be up to date, for neither the translation nor --from has their source)";
    return shown;
}

Json Json_Of(const MergeCounts &counts) {
    return {{"new", counts.added},
            {"changed", counts.changed},
            {"gone", counts.gone},
            {"kept", counts.kept},
            {"unknown", counts.unknown}};
}

ExitCode Merge_Files(const Options &options) {
    const BorrowedMachine machine;
    const StringsFile source = Load_Whole(options.source, options.utf8);
    const StringsFile translation = Load_Whole(options.translation, options.utf8);
    StringsFile earlier;
    if (options.earlier) earlier = Load_Whole(*options.earlier, options.utf8);
    MergeCounts counts;
    const Translation merged = Merge(source.strings, Translation_Of(translation), earlier.strings, counts);
    Replace_File(options.out, Encoded(merged.Text(), options.utf8));
    const std::string told = options.json ? Json_Of(counts).dump(2) : Shown(counts);
    if (options.out == "-")
        std::fprintf(stderr, "%s\n", told.c_str());
    else
        Print_Line(told);
    return Exit_Success;
}

} // namespace

void Add_Merge(CommandTree &tree, CLI::App *ltx) {
    const auto options = std::make_shared<Options>();
    CLI::App *merge = tree.Add("merge", "carries a new source text into a translation", ltx);
    Add_Place(merge, "SOURCE", options->source, "the new source, text or table");
    Add_Place(merge, "TRANSLATION", options->translation,
              "the translation so far, text or table; /dev/null begins one");
    Add_Place(merge, "OUT", options->out,
              "the translation to make, a text; may be the one so far, \"-\" is standard output");
    merge
        ->add_option("--from", options->earlier,
                     "the source that the translation was made from, where it does not tell itself")
        ->type_name("SOURCE");
    merge->add_flag("--json", options->json,
                    "the counts as JSON, on standard error where OUT is standard output");
    Add_Utf8(merge, options->utf8);
    merge->footer(
        "Above each string OUT has a line \"#source: ...\" with the text that it translates, by which the\n"
        "next merge knows what has changed. What is to be done is marked above it: \"#new\" for a string "
        "that\n"
        "still has the source's text, \"#changed from: ...\" for one whose source was another; at the end\n"
        "\"#no longer there: ...\" keeps strings that are gone. A translator changes the "
        "string\n"
        "and deletes its mark; marks that stay are kept by the next merge. All of them are comments to\n"
        "`compile`. Types are the source's, comments the translation's as long as it has any.");
    tree.Does(merge, [options] { return Merge_Files(*options); });
}

} // namespace tools::ltx
