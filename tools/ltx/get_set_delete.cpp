#include <tools/arguments.h>
#include <tools/command.h>
#include <tools/files.h>
#include <tools/json.h>
#include <tools/ltx/finding.h>
#include <tools/ltx/ltx_commands.h>
#include <tools/ltx/string_line.h>
#include <tools/ltx/strings_file.h>
#include <tools/ltx/table_image.h>
#include <tools/machine_choice.h>
#include <tools/output.h>

#include <optional>

namespace tools::ltx {

namespace {

struct Options {
    std::string table, identifier, text;
    std::optional<std::string> comments;
    std::optional<long> type;
    bool utf8 = false, json = false, add = false;

    std::string Argument(const std::string &argument) const {
        return utf8 ? Machine_Text_Of(argument) : argument;
    }
};

/// A table without damage, and the first string of an identifier in it.
class Search {
  public:
    Search(const std::string &table, const std::string &identifier)
        : file_(Load_Table(table)), reader_(file_.bytes) {
        Require_Readable(file_);
        while (!found_ && reader_.Next()) found_ = reader_.String().identifier == identifier;
    }

    bool Found() const { return found_; }
    const ImageReader &Place() const { return reader_; }
    std::string Image() const { return file_.bytes; }
    void Require() const {
        if (!found_) throw Failure(Exit_Negative, Shown_Name(file_.name) + ": no string of that identifier");
    }

  private:
    StringsFile file_;
    ImageReader reader_;
    bool found_ = false;
};

ExitCode Get(const Options &options) {
    const BorrowedMachine machine;
    const Search search(options.table, options.Argument(options.identifier));
    search.Require();
    const TableString &string = search.Place().String();
    if (!options.json) {
        Print_Line(Encoded(string.text, options.utf8));
        return Exit_Success;
    }
    Print_Json({{"identifier", Utf8_Of(string.identifier)},
                {"text", Utf8_Of(string.text)},
                {"type", string.type},
                {"comments", Utf8_Of(string.comments)}});
    return Exit_Success;
}

ExitCode Set(const Options &options) {
    const BorrowedMachine machine;
    const Search search(options.table, options.Argument(options.identifier));
    if (!options.add) search.Require();
    TableString string;
    if (search.Found()) string = search.Place().String();
    string.identifier = options.Argument(options.identifier);
    string.text = options.Argument(options.text);
    if (options.comments) string.comments = options.Argument(*options.comments);
    if (options.type) string.type = *options.type;
    const std::string passed = Limit_Passed(string);
    if (!passed.empty()) throw Failure(Exit_Unusable, passed);
    std::string image = search.Image();
    (search.Found() ? Replace_Entry : Append_Entry)(image, search.Place(), string);
    Replace_File(options.table, image);
    return Exit_Success;
}

ExitCode Delete(const Options &options) {
    const BorrowedMachine machine;
    const Search search(options.table, options.Argument(options.identifier));
    search.Require();
    std::string image = search.Image();
    Delete_Entry(image, search.Place());
    Replace_File(options.table, image);
    return Exit_Success;
}

} // namespace

void Add_Get_Set_And_Delete(CommandTree &tree, CLI::App *ltx) {
    const auto options = std::make_shared<Options>();
    const auto add = [&](const char *name, const char *description) {
        CLI::App *command = tree.Add(name, description, ltx);
        Add_Place(command, "TABLE", options->table, "the table");
        Add_Place(command, "ID", options->identifier, "the identifier; the first string that has it counts");
        return command;
    };

    CLI::App *get = add("get", "prints a string, and ends with 1 when it is not there");
    get->add_flag("--json", options->json, "all that the table has of it, as JSON");
    Add_Utf8(get, options->utf8);
    tree.Does(get, [options] { return Get(*options); });

    CLI::App *set = add("set", "replaces a string's text, and ends with 1 when it is not there");
    Add_Place(set, "TEXT", options->text, "the text; behind \"--\" it may begin with a dash");
    set->add_option("--comments", options->comments, "its comments too");
    Never_Empty(set->add_option("--type", options->type, "its type too"));
    set->add_flag("--add", options->add, "append the string when it is not there");
    Add_Utf8(set, options->utf8);
    tree.Does(set, [options] { return Set(*options); });

    CLI::App *remove = add("delete", "takes a string out, and ends with 1 when it is not there");
    Add_Utf8(remove, options->utf8);
    tree.Does(remove, [options] { return Delete(*options); });
}

} // namespace tools::ltx
