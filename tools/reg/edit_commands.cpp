#include <tools/machine_choice.h>
#include <tools/reg/editing.h>
#include <tools/reg/open_key.h>
#include <tools/reg/reg_commands.h>
#include <tools/reg/value_form.h>

#include <algorithm>
#include <memory>
#include <optional>

namespace tools::reg {

namespace {

struct SetOptions : EditOptions {
    std::string path, name, type = "sz";
    std::optional<std::string> data;
};

struct DeleteOptions : EditOptions {
    std::string path;
    std::optional<std::string> value;
};

std::vector<std::string> Lines_Of(const std::string &text) {
    std::vector<std::string> lines;
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = std::min(text.find('\n', start), text.size());
        lines.push_back(text.substr(start, end - start));
        start = end + 1;
    }
    return lines;
}

Form Form_Given(const SetOptions &options) {
    if (!options.data) return {options.type, {}};
    if (options.type == "multi_sz") return {options.type, Lines_Of(*options.data)};
    return {options.type, {*options.data}};
}

ExitCode Set(const SetOptions &options) {
    Require_Machine();
    Require_Editing(options);
    const KeyPath path = Key_Path_Of(options.path);
    if (options.name.size() > Longest_Value_Name)
        throw Failure(Exit_Unusable, "the value's name is longer than 16383 characters");
    Plan plan;
    plan.Set_Value(path, options.name, Value_Of(Form_Given(options)));
    Carry_Out(plan, options, false);
    return Exit_Success;
}

ExitCode Delete(const DeleteOptions &options) {
    Require_Machine();
    Require_Editing(options);
    const KeyPath path = Key_Path_Of(options.path);
    Plan plan;
    if (options.value ? !plan.Delete_Value(path, *options.value) : !plan.Delete_Key(path))
        throw Failure(Exit_Negative, options.path + (options.value ? ": no value '" + *options.value + "'"
                                                                   : std::string(": no such key")));
    Carry_Out(plan, options, !options.value);
    return Exit_Success;
}

} // namespace

void Add_Set(CommandTree &tree, CLI::App *parent) {
    auto options = std::make_shared<SetOptions>();
    CLI::App *set = tree.Add("set", "sets a value, and makes its key where there is none", parent);
    set->add_option("PATH", options->path, "the key")->required();
    set->add_option("NAME", options->name, "the value; '' for the default one")->required();
    // One argument and not a list of them: in a list "[a,b]" would become two.
    set->add_option("DATA", options->data,
                    "a text; a number, decimal or 0x...; bytes as pairs of hexadecimal digits; for multi_sz "
                    "texts, each on a line");
    set->add_option("--type", options->type,
                    "sz, expand_sz, dword, qword, binary, multi_sz, or hex(N): bytes of the type with the "
                    "code N, in hexadecimal")
        ->type_name("TYPE")
        ->capture_default_str();
    set->footer("What begins with a '-' stands behind '--':\n"
                "    kelmara reg set --type sz -- 'HKCU\\Sample' Answer -1");
    Add_Edit_Flags(set, *options);
    tree.Does(set, [options] { return Set(*options); });
}

void Add_Delete(CommandTree &tree, CLI::App *parent) {
    auto options = std::make_shared<DeleteOptions>();
    CLI::App *remove = tree.Add("delete", "deletes a key with all that is below it, or one value", parent);
    remove->add_option("PATH", options->path, "the key")->required();
    remove->add_option("--value", options->value, "only this value of it; '' for the default one")
        ->type_name("NAME");
    Add_Edit_Flags(remove, *options);
    tree.Does(remove, [options] { return Delete(*options); });
}

} // namespace tools::reg
