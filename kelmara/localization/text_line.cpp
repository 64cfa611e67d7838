#include <kelmara/localization/text_line.h>

#include <cstring>
#include <initializer_list>

namespace text_line {

namespace {

constexpr char Characters[] = "\r\n\t";
constexpr char Letters[] = "rnt";

// What stands in `to` where `c` stands in `from`, 0 when it does not.
char Counterpart(char c, const char (&from)[4], const char (&to)[4]) {
    for (int i = 0; i < 3; ++i) {
        if (c == from[i]) return to[i];
    }
    return 0;
}

// Cuts a field off the front of `rest`: null when there is none, or it ends with the line.
char *Cut_Field(char *&rest) {
    char *const field = rest + std::strspn(rest, "\t");
    char *const end = std::strchr(field, '\t');
    if (!end) return nullptr;
    *end = 0;
    rest = end + 1;
    return field;
}

} // namespace

std::size_t Escape(const char *text, std::size_t length, char *out, std::size_t room) {
    std::size_t used = 0;
    for (const char *const end = text + length; text != end && *text; ++text) {
        const char letter = Counterpart(*text, Characters, Letters);
        if (room - used <= (letter ? 2u : 1u)) break;
        if (letter) out[used++] = '\\';
        out[used++] = letter ? letter : *text;
    }
    out[used] = 0;
    return used;
}

// No sequence can come into being by the replacement of another: one pass does for all three.
void Unescape(char *text) {
    char *target = text;
    for (; *text; ++text) {
        const char character = *text == '\\' ? Counterpart(text[1], Letters, Characters) : '\0';
        *target++ = character ? character : *text;
        if (character) ++text;
    }
    *target = 0;
}

bool Fields::Split(const char *line) {
    const std::size_t length = line ? std::strlen(line) : 0;
    if (length == 0 || length > Longest) return false;
    std::memcpy(m_Copy, line, length + 1);
    char *rest = m_Copy;
    for (char **const field : {&String, &Identifier, &Type}) {
        *field = Cut_Field(rest);
        if (!*field) return false;
    }
    Comments = rest + std::strspn(rest, "\t");
    return *Comments != 0;
}

} // namespace text_line
