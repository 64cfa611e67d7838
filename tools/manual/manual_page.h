#pragma once
// Manual pages of the commands, made from the command tree: its help, and what it tells beyond.

#include <tools/command.h>

namespace tools {

/// The page of a command with all that is below it, in the language of man(7).
std::string Manual_Page(CommandTree &tree, const CLI::App &command);

/// "kelmara-reg", and "kelmara" for the root: the name of its page, without the section.
std::string Page_Name(const CLI::App &command);

/// Text for a line of roff, whatever it holds.
std::string Roff_Text(const std::string &text);

} // namespace tools
