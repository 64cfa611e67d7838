#include <tools/command.h>
#include <tools/content/content_commands.h>
#include <tools/content/passing_file.h>
#include <tools/content/template_fields.h>
#include <tools/content/template_tokens.h>
#include <tools/content/text_lines.h>
#include <tools/failure.h>
#include <tools/files.h>
#include <tools/machine_choice.h>
#include <tools/output.h>

#include <kelmara/containers/hash_table.h>
#include <kelmara/foundation/conversions.h>

#include <charconv>
#include <cstring>
#include <map>
#include <optional>

namespace tools {

namespace {

constexpr std::size_t Longest_Name = 255, Longest_Value = 1024;

struct ExpandOptions {
    std::string file, output = "-";
    std::optional<std::string> define_file, fields, descriptor;
    std::vector<std::string> variables;
};

using Variables = std::map<std::string, std::string>;

Variables Read_Variables(const std::vector<std::string> &written) {
    Variables variables;
    for (const std::string &each : written) {
        const std::size_t equals = each.find('=');
        const std::string name = In_Capitals(each.substr(0, equals));
        if (equals == each.npos || name.empty() || name.size() > Longest_Name || name.find('^') != name.npos)
            throw Failure(Exit_Unusable, "--var " + each +
                                             ": wants NAME=VALUE, the name without \"^\" and of at "
                                             "most 255 characters");
        if (each.size() - equals - 1 > Longest_Value)
            throw Failure(Exit_Unusable, "--var " + name + ": its value is longer than 1024 bytes");
        variables[name] = each.substr(equals + 1);
    }
    return variables;
}

void Fill(CHashTable &table, const Variables &variables) {
    if (table.Initialize(static_cast<int>(variables.size()) + 1) != 0) throw std::bad_alloc();
    for (const auto &[name, value] : variables)
        table.Add(name.c_str(), const_cast<char *>(value.data()), static_cast<long>(value.size()));
    if (table.Get_Num_Entries() != static_cast<long>(variables.size())) throw std::bad_alloc();
}

/// From "NAME,CODE,VERSION"; the name may have commas.
ComponentDescriptor Read_Descriptor(const std::string &written) {
    const std::size_t second = written.rfind(',');
    const std::size_t first =
        second == written.npos || second == 0 ? written.npos : written.rfind(',', second - 1);
    ComponentDescriptor descriptor = {};
    const char *const end = written.data() + written.size();
    const std::string code = first == written.npos ? "" : written.substr(first + 1, second - first - 1);
    if (code.empty() || code.size() > 4 || first >= sizeof descriptor.Name)
        throw Failure(Exit_Unusable, "--descriptor " + written +
                                         ": wants NAME,CODE,VERSION with at most 137 and 4 characters");
    const auto [rest, error] = std::from_chars(written.data() + second + 1, end, descriptor.Version);
    if (error != std::errc() || rest != end)
        throw Failure(Exit_Unusable,
                      "--descriptor " + written + ": the version is no whole number of 32 bits");
    written.copy(descriptor.Name, first);
    char padded[5] = {};
    code.copy(padded, code.size());
    descriptor.Code = static_cast<unsigned long>(String_To_Char_Code(padded));
    return descriptor;
}

void Use_Defines(CTokenizer &tokenizer, const std::string &file) {
    const PassingFile copy(Read_File(file));
    const long result = tokenizer.Use_Define_File(Machine_Path(copy.Path()).c_str());
    if (result != 0)
        throw Failure(Exit_Unusable,
                      Shown_Name(file) + ": the library cannot read it: " + std::to_string(result));
}

std::string Expanded(const ExpandOptions &options) {
    const Variables variables = Read_Variables(options.variables);
    std::optional<TemplateFields> fields;
    std::optional<ComponentDescriptor> descriptor;
    if (options.fields) fields.emplace(*options.fields);
    if (options.descriptor) descriptor = Read_Descriptor(*options.descriptor);
    const std::string text = Read_File(options.file);

    CHashTable variable_table;
    Fill(variable_table, variables);
    CTokenizer tokenizer;
    tokenizer.Use_Variable_Table(&variable_table);
    if (fields) fields->Give_To(tokenizer);
    if (descriptor) tokenizer.Use_Component_Desc(&*descriptor);
    if (options.define_file) Use_Defines(tokenizer, *options.define_file);
    return Expand_Template(tokenizer, text, options.file);
}

ExitCode Expand(const ExpandOptions &options) {
    const BorrowedMachine machine;
    try {
        const std::string text = Expanded(options);
        if (options.output == "-")
            Print(text);
        else
            Replace_File(options.output, text);
    } catch (int) {
        throw Failure(Exit_Unusable, "not enough memory"); // for a list
    }
    return Exit_Success;
}

} // namespace

void Add_Expand(CommandTree &tree) {
    auto options = std::make_shared<ExpandOptions>();
    CLI::App *expand = tree.Add("expand", "fills in a template");
    const auto option = [&](const char *name, auto &target, const char *description, const char *type) {
        return expand->add_option(name, target, description)->type_name(type);
    };
    expand->add_option("TEMPLATE", options->file, "the template's file, or - for standard input")->required();
    option("--var", options->variables, "a variable for ^NAME^ tokens; may be given many times", "NAME=VALUE")
        ->allow_extra_args(false);
    option("--define-file", options->define_file, "names of fields for &name& tokens", "FILE");
    option("--fields", options->fields, "a section file with the fields of $ and & tokens", "FILE");
    option("--descriptor", options->descriptor, "the component for <NAME>, <SERIALCODE> and <VERSION> tokens",
           "NAME,CODE,VERSION");
    option("--output", options->output, "replace this file, once all is filled in", "FILE");
    tree.Does(expand, [options] { return Expand(*options); });
    tree.Tells(
        expand, "TOKENS",
        "A token stands between two of the same sigil, or < and >. A sigil twice is that character.\n"
        "    $'TTTT','FFFF'$  field FFFF of section TTTT of --fields\n"
        "    &name&           a field of the first section of --fields,\n"
        "                     by the code that --define-file gives that name\n"
        "    %name%           WINDOWS, TEMP or DESKTOP, or a value of the\n"
        "                     suite's registry key; empty where there is none\n"
        "    <name>           NAME, SERIALCODE or VERSION of --descriptor\n"
        "    ^name^           a variable of --var\n"
        "Sections and fields have names of at most four characters; shorter ones are filled up with "
        "blanks. Values are not looked at for tokens.\n\n"
        "A token without a value, without an end or with a name of over 255 characters is a fault: it is "
        "told as FILE:LINE: TEXT, nothing is written, and the exit code is 2.");
    tree.Tells(expand, "EXAMPLES",
               "    kelmara expand welcome.tpl --var GREETING=Welcome, \\\n"
               "        --define-file customer.def --fields customer.sct \\\n"
               "        --descriptor 'The road,ROAD,1' --output welcome.txt");
}

} // namespace tools
