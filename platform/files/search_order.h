#pragma once
// Where bare names of modules and programs are looked for: in the program's folder, the current one, the
// system's, the Windows folder, those of the PATH.

#include <string>
#include <vector>

/// The first of `names` that a folder of the host has as a file, as a host path; empty when there is none.
/// Names count without regard to case.
std::string Find_File_In(const std::string &host_folder, const std::vector<std::string> &names);

/// The same in the folders of the search order, as an absolute path.
std::string Find_File_By_Search(const std::vector<std::string> &names);
