#pragma once
// manual and completion: what goes with the command itself, made from its own tree.

namespace tools {

class CommandTree;

void Add_Manual(CommandTree &tree);
void Add_Completion(CommandTree &tree);

} // namespace tools
