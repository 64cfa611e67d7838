#include <tools/command.h>
#include <tools/content/content_commands.h>
#include <tools/log/log_commands.h>
#include <tools/ltx/ltx_commands.h>
#include <tools/machine/machine_commands.h>
#include <tools/manual/manual_commands.h>
#include <tools/number/number_commands.h>
#include <tools/reg/reg_commands.h>
#include <tools/tables/table_commands.h>

namespace tools {

// One line for each group.
void Add_All(CommandTree &tree) {
    Add_Reg(tree);
    Add_Ltx(tree);
    Add_Sections(tree);
    Add_Defines(tree);
    Add_Expand(tree);
    Add_Number(tree);
    Add_Manual(tree);
    Add_Completion(tree);
    Add_Log(tree);
    Add_Machine(tree);
    Add_Tables(tree);
}

} // namespace tools
