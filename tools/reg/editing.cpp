#include <tools/failure.h>
#include <tools/reg/editing.h>

#include <kelmara/system/reg_master.h>

namespace tools::reg {

void Add_Edit_Flags(CLI::App *command, EditOptions &options) {
    command->add_flag("--dry-run", options.dry_run, "changes nothing; tells each thing that would change");
    command->add_flag("--json", options.json, "the report as JSON");
}

void Require_Editing(const EditOptions &options) {
    if (!options.dry_run && CRegMaster().IsEditingDisabled())
        throw Failure(Exit_Unusable, "the user's policy \"DisableRegistryTools\" is set");
}

void Carry_Out(Plan &plan, const EditOptions &options, bool told) {
    const std::vector<Change> changes = plan.Take_Changes();
    if (!options.dry_run) Make_Changes(changes);
    if (options.json) return Print_Changes_As_Json(changes, options.dry_run);
    if (told || options.dry_run) Print_Changes(changes, options.dry_run);
}

} // namespace tools::reg
