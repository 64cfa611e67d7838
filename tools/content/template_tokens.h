#pragma once
// The tokens of a template, as the template engine finds them, with their places; and whole texts expanded by
// it, however long.

#include <kelmara/content/tokenizer.h>

#include <string>
#include <string_view>
#include <vector>

namespace tools {

struct TemplateToken {
    std::size_t place;
    std::string_view text; // with its sigils
    std::string_view name;
    enum End { Closed, Cut, Missing } end; // Cut: at 255 characters, where the next byte is lost

    char Sigil() const { return text.front(); }
};

std::vector<TemplateToken> Find_Tokens(std::string_view text);

/// The expanded text. Fails with 2 and "file:line: ..." for a token that has no value, no end or too long a
/// name, and for a zero byte: the engine would leave out what stands there. Text that a value has too much of
/// is not missed: values are of at most 1,024 bytes.
std::string Expand_Template(CTokenizer &tokenizer, const std::string &text, const std::string &file);

} // namespace tools
