#include <kelmara/foundation/token_string.h>

#include <climits>
#include <cstring>

CTokenString::CTokenString(char *text, char delimiter)
    : Text(text),
      Default_Delimiter(delimiter),
      Length(text ? static_cast<long>(strnlen(text, LONG_MAX)) : 0),
      Position(0),
      Strip_Leading(false),
      Strip_Trailing(false) {}

CTokenString::CTokenString(const CTokenString &other) = default;
CTokenString &CTokenString::operator=(const CTokenString &other) = default;
CTokenString::~CTokenString() = default;

void CTokenString::Strip_Leading_Spaces(bool strip) {
    Strip_Leading = strip;
}

void CTokenString::Strip_Trailing_Spaces(bool strip) {
    Strip_Trailing = strip;
}

void CTokenString::Strip_Spaces(bool strip) {
    Strip_Leading = Strip_Trailing = strip;
}

void CTokenString::Skip_Leading_Spaces() {
    while (Position < Length && Text[Position] == ' ') ++Position;
}

void CTokenString::Cut_Trailing_Spaces(long start, long end) {
    while (end - 1 > start && Text[end - 1] == ' ') Text[--end] = '\0';
}

char *CTokenString::Next_Token(char delimiter) {
    if (delimiter == 0) delimiter = Default_Delimiter;
    if (Strip_Leading) Skip_Leading_Spaces();
    if (Position >= Length) return nullptr;

    const long start = Position;
    while (Position < Length && Text[Position] != delimiter && Text[Position] != 0) ++Position;
    const long end = Position;
    if (Position < Length) Text[Position++] = '\0';
    if (Strip_Trailing) Cut_Trailing_Spaces(start, end);
    return Text + start;
}

char *CTokenString::Remainder() {
    if (Strip_Leading) Skip_Leading_Spaces();
    char *const rest = Text + Position;
    Position = Length;
    return rest;
}
