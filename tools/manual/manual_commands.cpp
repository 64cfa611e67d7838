#include <tools/arguments.h>
#include <tools/command.h>
#include <tools/failure.h>
#include <tools/files.h>
#include <tools/machine_choice.h>
#include <tools/manual/bash_completion.h>
#include <tools/manual/command_facts.h>
#include <tools/manual/manual_commands.h>
#include <tools/manual/manual_page.h>
#include <tools/output.h>

#include <filesystem>
#include <optional>

namespace tools {

namespace {

struct ManualOptions {
    std::vector<std::string> command;
    std::optional<std::string> folder;
};

const CLI::App &Find(const CLI::App &root, const std::vector<std::string> &names) {
    const CLI::App *found = &root;
    for (const std::string &name : names) {
        const CLI::App *next = nullptr;
        for (const CLI::App *each : Commands_Of(*found))
            if (each->get_name() == name) next = each;
        if (next == nullptr)
            throw Failure(Exit_Negative, Full_Name_Of(*found) + " has no command \"" + name + "\"");
        found = next;
    }
    return *found;
}

void Write_All(CommandTree &tree, const std::string &folder) {
    const BorrowedMachine machine;
    std::error_code error;
    std::filesystem::create_directories(Host_Name(folder), error);
    if (error) throw Failure(Exit_Unusable, folder + ": " + error.message());
    const auto write = [&](const CLI::App &command) {
        Replace_File(Host_Name(folder) + "/" + Page_Name(command) + ".1", Manual_Page(tree, command));
    };
    write(tree.Root());
    for (const CLI::App *each : Commands_Of(tree.Root())) write(*each);
}

ExitCode Show_Manual(CommandTree &tree, const ManualOptions &options) {
    if (options.folder)
        Write_All(tree, *options.folder);
    else
        Print(Manual_Page(tree, Find(tree.Root(), options.command)));
    return Exit_Success;
}

void Tell_Of_All(CommandTree &tree) {
    const CLI::App *const root = &tree.Root();
    tree.Tells(root, "THE MACHINE",
               "Commands that need a machine's own things never make one: `kelmara machine init` does. Those "
               "that only work on files need none, and use the machine where there is one.\n\n"
               "Machine text is in code page 1252 and is printed byte for byte. JSON is in UTF-8.");
    tree.Tells(
        root, "FILES",
        "Where a command takes a FILE, a name with a drive letter (c:\\suite\\texts.ltx) is one of the "
        "machine's, any other one of the host's, and - is standard input or output.\n\n"
        "Files are replaced whole or not at all: a command that fails or is interrupted leaves what "
        "stood there. Errors in a file are told on standard error as FILE:LINE: TEXT.");
    tree.Tells(root, "EXAMPLES",
               "    kelmara --help\n"
               "    kelmara sections services.sct\n"
               "    KELMARA_MACHINE=~/machines/test kelmara number dial '+1 (206) 555-1212'");
}

} // namespace

void Add_Manual(CommandTree &tree) {
    auto options = std::make_shared<ManualOptions>();
    CLI::App *manual = tree.Add("manual", "prints the manual page of a command");
    CLI::Option *const command = Each_Whole(
        manual->add_option("COMMAND", options->command, "its words; without them of kelmara itself"));
    manual->add_option("--all", options->folder, "write every page into this folder instead, as kelmara-*.1")
        ->type_name("FOLDER")
        ->excludes(command);
    tree.Does(manual, [&tree, options] { return Show_Manual(tree, *options); });
    tree.Tells(manual, "EXAMPLES",
               "    kelmara manual expand | man -l -\n"
               "    kelmara manual --all ~/.local/share/man/man1");
    Tell_Of_All(tree);
}

void Add_Completion(CommandTree &tree) {
    struct CompletionOptions {
        std::string shell, output = "-";
    };
    auto options = std::make_shared<CompletionOptions>();
    CLI::App *completion = tree.Add("completion", "prints a script with which the shell completes commands");
    completion->add_option("SHELL", options->shell, "the shell")
        ->required()
        ->check(CLI::IsMember(std::vector<std::string>{"bash"}));
    completion->add_option("--output", options->output, "replace this file")->type_name("FILE");
    tree.Does(completion, [&tree, options] {
        const std::string script = Bash_Completion(tree.Root());
        if (options->output == "-") return Print(script), Exit_Success;
        const BorrowedMachine machine;
        Replace_File(options->output, script);
        return Exit_Success;
    });
    tree.Tells(completion, "EXAMPLES",
               "    source <(kelmara completion bash)\n"
               "    kelmara completion bash --output ~/.local/share/bash-completion/completions/kelmara");
}

} // namespace tools
