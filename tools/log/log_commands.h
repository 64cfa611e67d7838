#pragma once
// `kelmara log`: the suite's log and the messages between its programs.

namespace tools {

class CommandTree;

void Add_Log(CommandTree &tree);

} // namespace tools
