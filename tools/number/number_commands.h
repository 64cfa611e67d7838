#pragma once
// number: canonical telephone numbers in their fields, and what is dialled for them.

#include <tools/command.h>

namespace tools {

void Add_Number(CommandTree &tree);
void Add_Number_Parse(CommandTree &tree, CLI::App *number);
void Add_Number_Dial(CommandTree &tree, CLI::App *number);

} // namespace tools
