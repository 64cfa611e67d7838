#pragma once
// `kelmara atoms`, `instances` and `windows`: the machine's shared tables as they are at the moment.

#include <tools/command.h>

namespace tools {

void Add_Tables(CommandTree &tree);

} // namespace tools
