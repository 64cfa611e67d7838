#pragma once
// `kelmara reg`: looks at the machine's registry, changes it, and carries parts of it as text.

#include <tools/command.h>

namespace tools {

void Add_Reg(CommandTree &tree);

namespace reg {

void Add_Query(CommandTree &tree, CLI::App *parent);
void Add_Set(CommandTree &tree, CLI::App *parent);
void Add_Delete(CommandTree &tree, CLI::App *parent);
void Add_Import(CommandTree &tree, CLI::App *parent);
void Add_Export(CommandTree &tree, CLI::App *parent);

} // namespace reg

} // namespace tools
