#pragma once
// Folders for their owner alone, whatever the umask.

#include <string>

namespace tools {

/// False, with errno set and nothing made, where it cannot be had.
bool Make_Own_Folder(const std::string &path);

/// For one that was just made, under a umask that may take from its owner, too. No link is followed at its
/// name. False with errno set.
bool Give_To_Owner(const std::string &folder);

} // namespace tools
