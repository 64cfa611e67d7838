#pragma once
// The routines that the library allocates with in this command: the host's own. The companion that a machine
// names is for programs of its suite; a command has to work where it is missing or broken, and on no machine.

namespace tools {

/// Before the library's first allocation; a binding that is there already stays. When memory runs out, a
/// reserve is given back first: on the way out there are destructors that allocate.
void Use_Own_Memory();

} // namespace tools
