#pragma once
// A line of the suite's log file, taken apart. Any bytes may stand in it.

#include <optional>
#include <string>
#include <string_view>

namespace tools {

struct LogEntry {
    std::string time;    // "2024-01-31 12:34:56.789"
    std::string program; // file name
    unsigned long process = 0;
    std::string markup; // HTML as it stands
    std::string text;   // what a reader of it sees, without blanks around
};

/// Nothing for a line that is no entry, as the head of the file.
std::optional<LogEntry> Read_Log_Line(std::string_view line);

/// HTML without its tags, its characters in code page 1252; line breaks are line feeds.
std::string Text_Of_Markup(std::string_view markup);

} // namespace tools
