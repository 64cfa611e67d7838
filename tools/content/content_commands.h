#pragma once
// sections, defines and expand: what the library makes of section files, define files and templates.

#include <tools/command.h>

namespace tools {

void Add_Sections(CommandTree &tree);
void Add_Defines(CommandTree &tree);
void Add_Expand(CommandTree &tree);

} // namespace tools
