#pragma once
// What the commands that change the registry have in common.

#include <tools/reg/plan.h>

namespace tools::reg {

struct EditOptions {
    bool dry_run = false, json = false;
};

/// Fails with 2 where the user's policy forbids editing; a dry run is none.
void Require_Editing(const EditOptions &options);

/// Makes what the plan has, or only tells it in a dry run. `told`: a report is printed in any case.
void Carry_Out(Plan &plan, const EditOptions &options, bool told);

} // namespace tools::reg
