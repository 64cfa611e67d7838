#pragma once
// `kelmara machine`: making, describing, copying and checking a machine.

#include <tools/command.h>

namespace tools {

void Add_Machine(CommandTree &tree);

struct InitOptions {
    std::string folder; // empty: the one in force
    std::string windows, screen;
    std::vector<std::string> drives; // "d=cdrom"
};
ExitCode Make_Machine(const InitOptions &options);

ExitCode Describe_Machine(bool json);
ExitCode Clone_Machine(const std::string &target);

struct CheckOptions {
    bool repair = false, json = false;
};
ExitCode Check_Machine(const CheckOptions &options);

} // namespace tools
