#pragma once
// Makes the suite's string tables from the texts of their languages: a line for each string, which is string,
// identifier, type and comments, with tabs between them, in UTF-8 with no character beyond U+00FF.

#include <string>

/// From `<language>.txt` in a folder of the host to `.ltx` files in the suite's "Localization" folder, a host
/// path too: one for each language, and those that the library looks for in English. What is there is
/// replaced at once, file by file. Empty on success, otherwise what went wrong, as a sentence.
std::string Make_String_Tables(const std::string &text_folder, const std::string &localization_folder);
