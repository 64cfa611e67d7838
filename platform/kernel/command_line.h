#pragma once
// Command lines as Windows and its C runtime take them apart.

#include <string>
#include <string_view>
#include <vector>

/// The word in front: in quotes, or up to a blank. `rest` gets what follows. Nothing but quotes counts in it.
std::string_view First_Word(std::string_view line, std::string_view &rest);

/// The words of what follows. Blanks and tabs part them but for those in quotes; a doubled quote within
/// quotes is a quote; backslashes count for themselves, but in front of a quote each pair is one, and an odd
/// one makes the quote a character.
std::vector<std::string> Arguments_Of(std::string_view text);
