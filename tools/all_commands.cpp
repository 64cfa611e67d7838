#include <tools/command.h>
#include <tools/ltx/ltx_commands.h>
#include <tools/reg/reg_commands.h>

namespace tools {

// One line for each group.
void Add_All(CommandTree &tree) {
    Add_Reg(tree);
    Add_Ltx(tree);
}

} // namespace tools
