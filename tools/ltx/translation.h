#pragma once
// A text that is a translation: beside each string it may tell, in lines that are comments to everybody else,
// of which source text it was made and what is still to be done about it.
//
//     #new                                    not translated yet: the text is the source's
//     #changed from: Dial                     the source had this text when the translation was made
//     #source: Dial now                       the source's text
//     Wählen	KMSTR_DIAL	0	button
//     #no longer there: KMSTR_HANG_UP: Auflegen
//     #its comments: button
//
// A translator changes the string and deletes its "#new" or "#changed from" line. What a line cannot hold as
// it is stands in the escaped form behind "#source (escaped):" and its like. All other comments are the
// translator's own, and stay with the string below them.

#include <tools/ltx/strings_file.h>

#include <optional>

namespace tools::ltx {

struct TranslatedString {
    TableString string;
    std::vector<std::string> comments; // lines above it
    bool is_new = false;
    std::optional<std::string> changed_from, source;
};

struct Translation {
    std::vector<std::string> head; // comment lines down to the last empty one above the strings
    std::vector<TranslatedString> strings;
    std::vector<std::string> rest; // lines behind the last string

    std::string Text() const;
};

/// Of a text or table without faults.
Translation Translation_Of(const StringsFile &file);

/// The lines for a string that the source has no more: all that it was.
std::vector<std::string> Gone_Marks(const TableString &string);

} // namespace tools::ltx
