#include <platform/kernel/command_line.h>

#include <algorithm>

namespace {

constexpr char Blanks[] = " \t";

bool Is_Blank(char c) {
    return c == ' ' || c == '\t';
}

// Takes one argument off the front, which is no blank.
std::string Take_Argument(std::string_view &text) {
    std::string argument;
    bool quoted = false;
    while (!text.empty() && (quoted || !Is_Blank(text[0]))) {
        const std::size_t slashes = std::min(text.find_first_not_of('\\'), text.size());
        text.remove_prefix(slashes);
        const bool quote = text.starts_with('"');
        argument.append(quote ? slashes / 2 : slashes, '\\');
        if (!quote && slashes > 0) continue;
        const bool doubled = quote && quoted && text.starts_with("\"\"");
        if (!quote || slashes % 2 != 0 || doubled)
            argument += text[0];
        else
            quoted = !quoted;
        text.remove_prefix(slashes % 2 == 0 && doubled ? 2 : 1);
    }
    return argument;
}

} // namespace

std::string_view First_Word(std::string_view line, std::string_view &rest) {
    const bool quoted = line.starts_with('"');
    if (quoted) line.remove_prefix(1);
    const std::size_t end = std::min(quoted ? line.find('"') : line.find_first_of(Blanks), line.size());
    rest = line.substr(std::min(end + (quoted ? 1 : 0), line.size()));
    return line.substr(0, end);
}

std::vector<std::string> Arguments_Of(std::string_view text) {
    std::vector<std::string> arguments;
    for (;;) {
        text.remove_prefix(std::min(text.find_first_not_of(Blanks), text.size()));
        if (text.empty()) return arguments;
        arguments.push_back(Take_Argument(text));
    }
}
