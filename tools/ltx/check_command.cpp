#include <tools/arguments.h>
#include <tools/command.h>
#include <tools/json.h>
#include <tools/ltx/checks.h>
#include <tools/ltx/ltx_commands.h>
#include <tools/machine_choice.h>
#include <tools/output.h>

#include <optional>

namespace tools::ltx {

namespace {

struct Options {
    std::vector<std::string> files;
    std::optional<std::string> source;
    bool utf8 = false, json = false;
};

class Report {
  public:
    explicit Report(bool json) : json_(json) {}

    void Add(const std::vector<Finding> &findings) {
        for (const Finding &finding : findings) {
            any_ = true;
            if (json_)
                all_.push_back(Json_Of(finding));
            else
                Print_Line(Shown(finding));
        }
    }

    ExitCode Finish() {
        if (json_) Print_Json(all_);
        return any_ ? Exit_Negative : Exit_Success;
    }

  private:
    bool json_, any_ = false;
    Json all_ = Json::array();
};

ExitCode Check_All(const Options &options) {
    const BorrowedMachine machine;
    StringsFile source;
    if (options.source) source = Load_Strings(*options.source, options.utf8);
    Require_Readable(source);
    Report report(options.json);
    try {
        for (const std::string &name : options.files) {
            const StringsFile file = Load_Strings(name, options.utf8);
            report.Add(Check(file));
            if (options.source) report.Add(Check_Against(file, source));
        }
    } catch (const Failure &) {
        report.Finish(); // what the files before had to say
        Flush_Output();
        throw;
    }
    return report.Finish();
}

} // namespace

void Add_Check(CommandTree &tree, CLI::App *ltx) {
    const auto options = std::make_shared<Options>();
    CLI::App *check = tree.Add("check", "finds what is wrong in tables and texts, and ends with 1 then", ltx);
    Each_Whole(Add_Place(check, "FILE", options->files, "tables (*.ltx) and texts"));
    check->add_option("--against", options->source, "the source that the files translate, table or text")
        ->type_name("SOURCE");
    check->add_flag("--json", options->json, "the findings as JSON");
    Add_Utf8(check, options->utf8);
    check->footer(
        "Found are: damage, identifiers that stand there twice, fields exactly as long as they can be,\n"
        "which may be cut; with --against also format places (%s, %ld) that the source has not, or has\n"
        "in another order, and strings that only one of the two has. Each finding is\n"
        "\"file:line: text\" for a text and \"file: identifier index: text\" for a table.");
    tree.Does(check, [options] { return Check_All(*options); });
}

} // namespace tools::ltx
