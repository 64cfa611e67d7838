#include <tools/command.h>
#include <tools/interruption.h>
#include <tools/machine_choice.h>
#include <tools/output.h>
#include <tools/own_memory.h>
#include <tools/tables/columns.h>

#include <cstdio>
#include <new>
#include <sstream>

namespace tools {

static int Out_Of_Memory() {
    std::fputs("kelmara: not enough memory\n", stderr);
    return Exit_Unusable;
}

CommandTree::CommandTree()
    : root_("Works on what the kelmara library keeps: machines, registries, string tables, texts.",
            "kelmara") {
    root_.set_version_flag("--version", std::string("kelmara ") + KELMARA_VERSION);
    root_
        .add_option("--machine", machine_,
                    "the machine's folder, instead of the one that KELMARA_MACHINE names")
        ->type_name("FOLDER");
    root_.require_subcommand(1);
    root_.fallthrough(); // --machine may stand behind the command too
}

CLI::App *CommandTree::Add(const std::string &name, const std::string &description, CLI::App *parent) {
    CLI::App *command = (parent != nullptr ? parent : &root_)->add_subcommand(name, description);
    command->fallthrough();
    if (parent != nullptr) parent->require_subcommand(1);
    return command;
}

void CommandTree::Does(CLI::App *command, std::function<ExitCode()> action) {
    command->final_callback([this, action = std::move(action)] { chosen_ = action; });
}

void CommandTree::Tells(const CLI::App *command, const std::string &title, const std::string &text) {
    manual_[command].push_back({title, text});
}

int CommandTree::Run(int argc, const char *const *argv) {
    Note_Interruptions();
    try {
        return Run_With_Failures_Told(argc, argv);
    } catch (const Interrupted &interrupted) {
        End_By(interrupted.signal);
    }
}

ExitCode CommandTree::Understand_And_Do(int argc, const char *const *argv) {
    ExitCode code = Exit_Success;
    try {
        root_.parse(argc, argv);
        Use_Own_Memory();
        Choose_Machine(machine_, argv);
        code = chosen_();
    } catch (const CLI::ParseError &error) { // help, too
        std::ostringstream output, errors;
        if (root_.exit(error, output, errors) != 0) code = Exit_Unusable;
        std::istringstream told(errors.str());
        for (std::string line; std::getline(told, line);) std::fprintf(stderr, "%s\n", Shown(line).c_str());
        Print(output.str());
    }
    Flush_Output();
    return code;
}

int CommandTree::Run_With_Failures_Told(int argc, const char *const *argv) {
    try {
        return Understand_And_Do(argc, argv);
    } catch (const FaultInFile &fault) {
        std::fprintf(stderr, "%s\n", Shown(fault.what()).c_str());
        return fault.Code();
    } catch (const Failure &failure) {
        std::fprintf(stderr, "kelmara: %s\n", Shown(failure.what()).c_str());
        return failure.Code();
    } catch (const std::bad_alloc &) {
        return Out_Of_Memory();
    } catch (int) { // the library's way to say it
        return Out_Of_Memory();
    } catch (long) {
        return Out_Of_Memory();
    }
}

} // namespace tools
