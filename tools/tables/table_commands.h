#pragma once
// `kelmara atoms`, `instances` and `windows`: the machine's shared tables as they are at the moment.

namespace tools {

class CommandTree;

void Add_Tables(CommandTree &tree);

} // namespace tools
