#pragma once
// Walks a caller's text and cuts it into tokens.
//
//     CTokenString words(buffer, ',');
//     words.Strip_Spaces(true);
//     while (char *word = words.Next_Token(0)) ...
//
// The text stays the caller's: it is borrowed, terminators are written into it, and it must outlive the walk.
// A copy of a walker goes on in the same text from a position of its own; where another walker or the caller
// has cut the text already, it ends a token too, so that every walk comes to its end. One thread at a time.

#include <kelmara/foundation/auto_deleteable_object.h>

class KELMARA_API CTokenString : public CAutoDeleteableObject {
  public:
    /// `text` may be null: there are no tokens in it.
    CTokenString(char *text, char delimiter);
    CTokenString(const CTokenString &other);
    CTokenString &operator=(const CTokenString &other);
    ~CTokenString() override;

    /// Both are off at first. Stripping in front moves on over spaces; stripping behind overwrites them with
    /// terminators, but never the first character of a token: one of spaces alone keeps one.
    void Strip_Leading_Spaces(bool strip);
    void Strip_Trailing_Spaces(bool strip);
    void Strip_Spaces(bool strip);

    /// The next token, in the caller's text; null when there is none. 0 stands for the constructor's
    /// delimiter, and each call may have another. Two delimiters have an empty token between them; one that
    /// ends the text leaves no empty token behind it.
    char *Next_Token(char delimiter);

    /// The unread rest, uncut and with its trailing spaces; nothing is left after it. At the end an empty
    /// text, for a null text null.
    char *Remainder();

  private:
    friend struct TokenStringLayout;

    KELMARA_INTERNAL void Skip_Leading_Spaces();
    KELMARA_INTERNAL void Cut_Trailing_Spaces(long start, long end);

    char *Text;             // offset 4, borrowed
    char Default_Delimiter; // offset 8
    long Length;            // offset 12, of the text at first
    long Position;          // offset 16, of the next unread byte
    bool Strip_Leading;     // offset 20
    bool Strip_Trailing;    // offset 21
};
static_assert(sizeof(CTokenString) == 24);

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof" // plain fields behind one table pointer
struct TokenStringLayout {
    static_assert(offsetof(CTokenString, Text) == 4 && offsetof(CTokenString, Default_Delimiter) == 8);
    static_assert(offsetof(CTokenString, Length) == 12 && offsetof(CTokenString, Position) == 16);
    static_assert(offsetof(CTokenString, Strip_Leading) == 20 &&
                  offsetof(CTokenString, Strip_Trailing) == 21);
};
#pragma GCC diagnostic pop
