#include <tools/command.h>
#include <tools/reg/reg_commands.h>

namespace tools {

// One line for each group.
void Add_All(CommandTree &tree) {
    Add_Reg(tree);
}

} // namespace tools
