#include <tools/command.h>

#include <tools/log/log_commands.h>
#include <tools/machine/machine_commands.h>
#include <tools/tables/table_commands.h>

namespace tools {

// One line for each group.
void Add_All(CommandTree &tree) {
    Add_Log(tree);
    Add_Machine(tree);
    Add_Tables(tree);
}

} // namespace tools
