#pragma once
// A command and its subcommands. Each group stands in a folder of its own and is known here by one function
// that adds it to the tree:
//
//     void Add_Atoms(CommandTree &tree) {
//         auto options = std::make_shared<Options>();
//         CLI::App *atoms = tree.Add("atoms", "lists the machine's atom tables");
//         atoms->add_option("TABLE", options->table, "only this table");
//         tree.Does(atoms, [options] { return List(*options); });
//     }
//
// The texts given here are the help, the manual pages and the shell completion. An argument is completed with
// files where its name or type has FILE, TEMPLATE, TABLE, SOURCE or TRANSLATION in it or its description
// speaks of standard input or output, and with folders for FOLDER.

#include <CLI/CLI.hpp>
#include <functional>
#include <map>
#include <string>
#include <tools/failure.h>
#include <vector>

namespace tools {

class CommandTree {
  public:
    CommandTree();

    CLI::App &Root() { return root_; }

    /// A subcommand of `parent`, of the root without one.
    CLI::App *Add(const std::string &name, const std::string &description, CLI::App *parent = nullptr);

    /// What the command does once it is understood. Its result is the process's exit code.
    void Does(CLI::App *command, std::function<ExitCode()> action);

    /// What the manual says of the command beyond its help and footer, under that title ("DESCRIPTION",
    /// "FILES", "EXAMPLES"); optional. An empty line parts paragraphs, and lines that begin with a blank
    /// stand as they are; so it is with footers. Titles come in the order in which they are told.
    void Tells(const CLI::App *command, const std::string &title, const std::string &text);
    struct ManualText {
        std::string title, text;
    };
    const std::vector<ManualText> &Manual_Of(const CLI::App *command) { return manual_[command]; }

    /// Understands the arguments and does the work: the exit code. Failures stand on standard error.
    int Run(int argc, const char *const *argv);

  private:
    ExitCode Understand_And_Do(int argc, const char *const *argv);
    int Run_With_Failures_Told(int argc, const char *const *argv);

    CLI::App root_;
    std::function<ExitCode()> chosen_;
    std::string machine_;
    std::map<const CLI::App *, std::vector<ManualText>> manual_;
};

/// The whole tree with all its groups.
void Add_All(CommandTree &tree);

} // namespace tools
