#pragma once
// `kelmara log`: the suite's log and the messages between its programs.

#include <tools/command.h>

namespace tools {

void Add_Log(CommandTree &tree);

} // namespace tools
