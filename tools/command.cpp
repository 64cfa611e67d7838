#include <tools/command.h>
#include <tools/interruption.h>
#include <tools/machine_choice.h>
#include <tools/output.h>
#include <tools/own_memory.h>

#include <cstdio>
#include <new>

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
    try {
        root_.parse(argc, argv);
    } catch (const CLI::ParseError &error) {
        return root_.exit(error) == 0 ? Exit_Success : Exit_Unusable;
    }
    Note_Interruptions();
    Use_Own_Memory();
    try {
        return Run_Chosen(argv);
    } catch (const Interrupted &interrupted) {
        End_By(interrupted.signal);
    }
}

int CommandTree::Run_Chosen(const char *const *argv) {
    try {
        Choose_Machine(machine_, argv);
        const ExitCode code = chosen_();
        Flush_Output();
        return code;
    } catch (const FaultInFile &fault) {
        std::fprintf(stderr, "%s\n", fault.what());
        return fault.Code();
    } catch (const Failure &failure) {
        std::fprintf(stderr, "kelmara: %s\n", failure.what());
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
