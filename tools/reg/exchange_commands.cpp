#include <tools/command.h>
#include <tools/files.h>
#include <tools/machine_choice.h>
#include <tools/progress.h>
#include <tools/reg/editing.h>
#include <tools/reg/export.h>
#include <tools/reg/open_key.h>
#include <tools/reg/reg_commands.h>
#include <tools/reg/text_writer.h>
#include <tools/tables/columns.h>

#include <cstdio>
#include <memory>

namespace tools::reg {

namespace {

struct ImportOptions : EditOptions {
    std::string file;
};

struct ExportOptions {
    std::string path, file = "-";
};

void Tell_Left_Out(const std::string &path, const std::string &class_name) {
    Make_Room_On_Terminal();
    std::fprintf(stderr, "kelmara: %s: its class \"%s\" is left out\n", Shown(path).c_str(),
                 Shown(class_name).c_str());
}

ExitCode Import(const ImportOptions &options) {
    Require_Machine();
    Require_Editing(options);
    Plan plan;
    plan.Do(Read_Registry_Text(Read_File(options.file), options.file), options.file);
    Carry_Out(plan, options, true);
    return Exit_Success;
}

ExitCode Export(const ExportOptions &options) {
    Require_Machine();
    Replace_File(options.file, Export_Key(Key_Path_Of(options.path)));
    return Exit_Success;
}

} // namespace

std::string Export_Key(const KeyPath &path) {
    const std::vector<KeyPath> keys = Keys_From(Stored_Path(path));
    Progress progress("reading the registry", keys.size());
    std::string text;
    Write_Heading(text);
    for (const KeyPath &key_path : keys) {
        progress.Step();
        const OpenKey key(key_path);
        if (!key) continue;
        Write_Key(text, key.Path());
        const std::string class_name = key.Class();
        if (!class_name.empty()) Tell_Left_Out(key.Path(), class_name);
        for (const NamedValue &value : key.Values()) Write_Value(text, key.Path(), value);
    }
    return text;
}

void Add_Import(CommandTree &tree, CLI::App *parent) {
    auto options = std::make_shared<ImportOptions>();
    CLI::App *import = tree.Add("import", "makes the registry as a REGEDIT4 text says", parent);
    import->add_option("FILE", options->file, "the text; '-' for standard input")->required();
    Add_Edit_Flags(import, *options);
    import->footer("The text is checked whole before anything is changed. An import that fails or is\n"
                   "interrupted takes back what it has changed; one that is killed leaves what it came to,\n"
                   "and the same import again makes the rest.");
    tree.Does(import, [options] { return Import(*options); });
}

void Add_Export(CommandTree &tree, CLI::App *parent) {
    auto options = std::make_shared<ExportOptions>();
    CLI::App *write = tree.Add("export", "writes a key with all that is below it as a REGEDIT4 text", parent);
    write->add_option("PATH", options->path, "the key")->required();
    write->add_option("FILE", options->file, "where to, in place of what is there; '-' is standard output")
        ->capture_default_str();
    write->footer("Keys and values stand in the order of their names: two exports can be compared.");
    tree.Does(write, [options] { return Export(*options); });
}

} // namespace tools::reg
