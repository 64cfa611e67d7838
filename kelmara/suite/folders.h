#pragma once
// Where the suite is installed: its folders, as the installation left them in the suite's registry key.
// May be asked by any thread; allocates nothing.

#include <kelmara/api.h>

/// The path of a folder, to `out` of at least 260 bytes: 1 "Plugins", 2 "Prefs Folders", 3 "Templates",
/// 4 "Content", 5 "Scripts", 6 "ScriptIncludes", 7 "Bin", 8 "Root", 9 "Database", 10 "Localization". The text
/// is what the installation wrote, with a backslash at the end if it wrote one. Empty for any other number,
/// for a value that is missing, and for one that does not fit with its terminator. A null `out` is ignored.
KELMARA_API void GetKelMaraFolderPath(int folder, char *out);
