#pragma once
// What the commands that change the registry have in common.

#include <tools/command.h>
#include <tools/reg/plan.h>

namespace tools::reg {

struct EditOptions {
    bool dry_run = false, json = false;
};

/// --dry-run and --json.
void Add_Edit_Flags(CLI::App *command, EditOptions &options);

/// Fails with 2 where the user's policy forbids editing; a dry run is none.
void Require_Editing(const EditOptions &options);

/// Makes what the plan has, or only tells it in a dry run. Each change is told in a dry run; their counts
/// also with `told` or as JSON.
void Carry_Out(Plan &plan, const EditOptions &options, bool told);

} // namespace tools::reg
