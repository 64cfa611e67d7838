#include <tools/command.h>
#include <tools/content/content_commands.h>
#include <tools/content/define_lines.h>
#include <tools/content/json_list.h>
#include <tools/content/line_listing.h>
#include <tools/failure.h>
#include <tools/files.h>
#include <tools/json.h>
#include <tools/machine_choice.h>
#include <tools/output.h>
#include <tools/progress.h>
#include <tools/tables/machine_view.h>

namespace tools {

namespace {

struct DefineOptions {
    std::string file;
    bool json = false;
};

/// All that a file defines, and where.
struct Defines {
    std::string text;
    std::vector<FoundDefine> found;
    std::vector<ParsedDefine> taken; // by the library: those of `found` that are taken, in that order
};

Defines Read_Defines(const std::string &file) {
    Defines defines{Read_File(file), {}, {}};
    defines.found = Find_Defines(defines.text);
    defines.taken = Parse_Defines(defines.text);
    std::size_t taken = 0;
    for (const FoundDefine &each : defines.found) taken += each.is_taken;
    if (taken != defines.taken.size())
        throw Failure(Exit_Unusable,
                      Shown_Name(file) + ": the explanation does not fit what the library reads");
    return defines;
}

/// `on_define` for each "#define", with what the library took from it or null; `on_other` with the reason for
/// each line without.
template <class OnDefine, class OnOther>
void Walk(const Defines &defines, OnDefine on_define, OnOther on_other) {
    const std::size_t end = End_Of_Defines(defines.text);
    std::size_t next = 0, taken = 0, start = 0;
    Progress progress("reading lines", Count_Text_Lines(defines.text) + defines.found.size());
    TextLines lines(defines.text);
    for (std::string_view line; lines.Next(line); start = lines.Behind(), progress.Step()) {
        const std::size_t first = next;
        for (; next < defines.found.size() && defines.found[next].line == lines.Number(); ++next) {
            const FoundDefine &found = defines.found[next];
            on_define(found, found.is_taken ? &defines.taken[taken++] : nullptr);
            progress.Step();
        }
        if (next > first) continue;
        const FoundDefine *const before = next > 0 ? &defines.found[next - 1] : nullptr;
        on_other(lines.Number(), Why_No_Define(line, lines.Number(), before, start > end));
    }
}

void List_Defines(const Defines &defines) {
    std::size_t width = 0;
    for (const ParsedDefine &define : defines.taken) width = std::max(width, On_One_Line(define.name).size());
    const LineListing listing(Count_Text_Lines(defines.text));
    Walk(
        defines,
        [&](const FoundDefine &found, const ParsedDefine *define) {
            if (define == nullptr) return listing.Tell(found.line, "- " + found.remarks.front());
            listing.Tell(found.line, Column(On_One_Line(define->name), std::min(width, std::size_t{40})) +
                                         On_One_Line(define->value));
            listing.Tell_Remarks(found.line, found.remarks);
        },
        [&](unsigned long line, const std::string &reason) { listing.Tell(line, "- " + reason); });
    Print_Line(Counted(defines.taken.size(), "define"));
}

/// One of the lists of the whole: of each line what `on_define` and `on_other` add to it.
template <class OnDefine, class OnOther>
void Tell_List(const Defines &defines, const char *name, OnDefine on_define, OnOther on_other) {
    Print(std::string(",\n  \"") + name + "\": ");
    JsonList list(4);
    Walk(
        defines,
        [&](const FoundDefine &found, const ParsedDefine *define) { on_define(list, found, define); },
        [&](unsigned long line, const std::string &reason) { on_other(list, line, reason); });
    list.Close();
}

void Tell_Json(const Defines &defines, const std::string &file) {
    const auto nothing = [](JsonList &, unsigned long, const std::string &) {};
    Print("{\n  \"file\": " + Json(Host_Text(file)).dump());
    Tell_List(
        defines, "defines",
        [](JsonList &list, const FoundDefine &found, const ParsedDefine *define) {
            if (define != nullptr)
                list.Add({{"name", Utf8_Of(define->name)},
                          {"value", Utf8_Of(define->value)},
                          {"line", found.line}});
        },
        nothing);
    Tell_List(
        defines, "remarks",
        [](JsonList &list, const FoundDefine &found, const ParsedDefine *define) {
            for (const std::string &remark : found.remarks)
                if (define != nullptr) list.Add({{"line", found.line}, {"text", remark}});
        },
        nothing);
    Tell_List(
        defines, "without_effect",
        [](JsonList &list, const FoundDefine &found, const ParsedDefine *define) {
            if (define == nullptr) list.Add({{"line", found.line}, {"reason", found.remarks.front()}});
        },
        [](JsonList &list, unsigned long line, const std::string &reason) {
            list.Add({{"line", line}, {"reason", reason}});
        });
    Print_Line("\n}");
}

ExitCode Show_Defines(const DefineOptions &options) {
    const BorrowedMachine machine;
    const Defines defines = Read_Defines(options.file);
    if (options.json)
        Tell_Json(defines, options.file);
    else
        List_Defines(defines);
    return Exit_Success;
}

} // namespace

void Add_Defines(CommandTree &tree) {
    auto options = std::make_shared<DefineOptions>();
    CLI::App *defines = tree.Add("defines", "shows what the library's reader takes from a define file");
    defines->add_option("FILE", options->file, "the define file, or - for standard input")->required();
    defines->add_flag("--json", options->json, "as JSON");
    tree.Does(defines, [options] { return Show_Defines(*options); });
    tree.Tells(
        defines, "OUTPUT",
        "Each line of the file stands with its number and the name and value that it defines, or a dash "
        "and the reason why it defines nothing. Remarks in brackets tell what is not as it looks: a "
        "value that loses its last character because the line does not end in CR LF, one that is cut "
        "to 63 bytes, a name that goes on behind the line's end.");
    tree.Tells(defines, "EXAMPLES",
               "    kelmara defines customer.def\n"
               "    kelmara defines --json customer.def | jq -r '.remarks[].text'");
}

} // namespace tools
