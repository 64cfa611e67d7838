#pragma once
// The entries of the host's folders under the names that Windows has for them.
//
// Windows names are in code page 1252, those of the host in UTF-8. May be called from any thread.

#include <string>
#include <string_view>
#include <vector>

using Names = std::vector<std::string>;

/// `folder` and `name` with one separator between them.
std::string Joined(const std::string &folder, std::string_view name);

bool Can_Stand_In_Name(char c);

std::string_view Without_Trailing_Dots_And_Spaces(std::string_view name);

/// The entry of a host folder that a Windows name means, as a host path: the exact one, else the first in
/// order of bytes that differs in letter case alone. Empty when there is none.
std::string Find_In_Folder(const std::string &host_folder, std::string_view windows_name);

/// What Windows calls an entry of a host folder. Characters that no Windows name can have become '?', and so
/// do a dot or space at the end: such an entry is seen, but not found by that name.
std::string Windows_Name_Of(std::string_view host_name);

/// The host's path of names of Windows one below the other, looked for as Find_In_Folder does it. What is not
/// there keeps its spelling.
std::string Look_Up(std::string folder, const Names &names);
