#pragma once
// A scanner that reads a text from left to right, one small pattern at a time.
//
//     CPatternString number("206) 555");
//     char area[8];
//     number.Next("^*T)", area, sizeof area); // "206", gives 3; stands on the bracket
//     number.Skip("^>T)|W");                  // past the bracket and the space
//
// The text is borrowed: the caller keeps it alive and unchanged, and it is only read. A copy walks the same
// text from where the original stands. An object belongs to one thread at a time.
//
// A pattern is a sequence of elements, each going on where the one before ended:
//
//     x        any character but the caret: exactly that character
//     ^^       a caret; the second one goes on to begin the next element
//     ^*Lnnn   step over as many characters as the three say, at most to the end of the text; never fails
//     ^*list   scan to the next character of a target set, and stop on it
//     ^>list   scan past all characters of a target set, and stop on the first other one
//     ^x       any other x: nothing
//
// A list is one option, or several with bars between them, and says what a scan does:
//
//     Tx       x is a target
//     W        space and tab are targets
//     0        the end of the text will do; without it a scan that gets there fails
//     Q        ^* only: targets inside double quotes do not count (a closing quote does)
//     L        ^* only, not as the first option: the pattern fails if there is a target by now
//     other    nothing
//
// At the end of the text every pattern succeeds and passes over nothing. A pattern that stops short is taken
// for what it has: a lone caret and a T without its character do nothing, a list ends where the pattern does,
// and a step reads the characters that are there. A target counts once however often it is listed, so a list
// of any length fits. The step's number may have white space and a sign in front and stops at the first other
// character; one below 0 steps over nothing.

#include <kelmara/foundation/auto_deleteable_object.h>

class KELMARA_API CPatternString : public CAutoDeleteableObject {
  public:
    /// Stands at the start of `text`. A null text counts as an empty one, a null pattern in the calls below
    /// as an empty pattern.
    explicit CPatternString(const char *text);
    CPatternString(const CPatternString &other);
    CPatternString &operator=(const CPatternString &other);
    ~CPatternString() override;

    void Reset();

    /// False at the end of the text.
    bool More() const;

    /// Applies the pattern and copies what it passed over to `out`, at most `size` - 1 bytes and a
    /// terminator. The full length of what was passed over, also when the copy was cut; 0 for an empty
    /// success and for a failure, which leaves the position and `out` alone. With a null `out` or a `size`
    /// below 1 nothing is copied.
    int Next(const char *pattern, char *out, int size);

    /// Next without a copy.
    int Skip(const char *pattern);

  protected:
    /// Where the pattern would end; null when it fails.
    char *Apply_Pattern(const char *pattern) const;

    /// The first character of `text` that is in `targets`, outside of double quotes if `quotes` is set. When
    /// there is none, the end of the text if `end_ok`, else null. Null `targets` are an empty set.
    char *Scan_To(const char *text, const char *targets, bool quotes, bool end_ok) const;

    /// The first character of `text` that is not in `targets`; at the end of the text as Scan_To.
    char *Scan_Past(const char *text, const char *targets, bool end_ok) const;

  private:
    const char *Start;    // offset 4
    const char *Position; // offset 8
};
static_assert(sizeof(CPatternString) == 12);
