#include <tools/command.h>

namespace tools {

// One line for each group.
void Add_All(CommandTree &) {}

} // namespace tools
