#pragma once
// Puts the suite on a machine: its folders, its registry keys, its companion libraries, its server and
// components, its texts, string tables and icon; and the system's services beside it, with dialling locations
// and devices on a machine without any.

#include <string>

/// Installs on the machine that this process is on, from a folder of the host that holds the built modules,
/// with the texts in "content" below it. What is there already is replaced; modules that running programs
/// have loaded stay theirs. Empty on success, otherwise what went wrong, as a sentence. May be run again at
/// any time, also after it failed half way.
std::string Install_Suite(const std::string &module_folder);

/// The suite's root folder, as a Windows path.
inline constexpr char Suite_Root[] = "C:\\Program Files\\Kelmara";
/// The suite's key below HKEY_LOCAL_MACHINE.
inline constexpr char Suite_Key[] = "Software\\Dunmerit Software\\KelMara";
