#pragma once
// The folder that is to be a machine: made, or closed to others, unless it is somebody's own.

#include <string>

/// What is said of a folder that is refused.
inline constexpr char Not_Of_This_User_Alone[] = ": not a folder of this user alone; it is left as it is";

/// Makes the folder, with those that lead to it, where it is not there; `named` may count from the current
/// directory, `folder` does not. A code of errors.h, and in `trouble` what is to be said:
/// ERROR_ACCESS_DENIED, and it is left as it is, for one that is refused; any other may pass.
long Make_Machine_Folder(const std::string &named, std::string &folder, std::string &trouble);
