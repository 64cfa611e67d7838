#pragma once
// The machine's number: made once with the folder, kept in it as `machine.id`. With the folder's own identity
// it names the shared memory, so that neither a copy of the folder nor a new one in its place meets what is
// not its own.

#include <string>

/// Empty when it is not there (errno ENOENT), is not this user's own (Not_This_Users_Own) or is none.
std::string Read_Machine_Number(const std::string &folder);

/// The same, made where it is not there, or where an empty file of this user's own is. Two that mend a folder
/// at once would undo each other's work: one at a time. Whoever waits two seconds for another one fails where
/// the file is empty, and changes nothing; where there is none he goes on, because only one can be put there.
std::string Read_Or_Make_Machine_Number(const std::string &folder);

/// Whether this is the name, in a machine's folder, of a number that is being made, or whose maker was
/// killed.
bool Is_Machine_Number_Under_Way(const std::string &name);
