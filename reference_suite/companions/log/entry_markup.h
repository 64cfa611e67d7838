#pragma once
// The text of a log entry as a piece of HTML that cannot reach beyond itself: no line end, no tag left open,
// and nothing but the few tags that log_companion.h names.

#include <string>
#include <string_view>

/// `text` is code page 1252, and so is the result.
std::string Markup_Of(std::string_view text);
