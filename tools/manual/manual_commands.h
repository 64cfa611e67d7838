#pragma once
// manual and completion: what goes with the command itself, made from its own tree.

#include <tools/command.h>

namespace tools {

void Add_Manual(CommandTree &tree);
void Add_Completion(CommandTree &tree);

} // namespace tools
