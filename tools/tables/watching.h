#pragma once
// A view of the machine, shown once or again whenever it changes.

#include <tools/command.h>
#include <tools/output.h>

namespace tools {

struct View {
    std::string text; // whole lines
    Json json;
    std::string missing; // what was asked for and is not there: told on standard error, with exit code 1
};

struct ViewOptions {
    bool watch = false, json = false;

    /// Adds --watch and --json.
    void Add_To(CLI::App &command);
};

/// Watching, it goes on until it is interrupted: on a terminal each state takes the place of the one before,
/// otherwise it stands behind it, and with --json each is one line. A watching process takes no part in the
/// machine: killed at any moment, it leaves nothing.
ExitCode Show(const ViewOptions &options, const std::function<View()> &look);

} // namespace tools
