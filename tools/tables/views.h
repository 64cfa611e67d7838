#pragma once
// What the commands on shared tables show.

#include <tools/tables/watching.h>

namespace tools {

/// `name` empty: whatever it is called.
View Look_At_Atoms(const std::string &name);
/// `name` empty: all.
View Look_At_Instances(const std::string &name);
View Look_At_Windows();

} // namespace tools
