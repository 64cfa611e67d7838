#include <kelmara/foundation/pattern_string.h>

#include <climits>
#include <cstdlib>

namespace {

class TargetSet {
  public:
    TargetSet() = default;
    explicit TargetSet(const char *targets) {
        if (!targets) return;
        while (*targets) Add(*targets++);
    }

    void Add(char target) {
        Word(target) |= Bit(target);
        empty_ = false;
    }
    bool Has(char c) const { return (words_[Index(c)] & Bit(c)) != 0; }
    bool Is_Empty() const { return empty_; }

  private:
    static unsigned Index(char c) { return static_cast<unsigned char>(c) / 32u; }
    static unsigned Bit(char c) { return 1u << (static_cast<unsigned char>(c) % 32u); }
    unsigned &Word(char c) { return words_[Index(c)]; }

    unsigned words_[8] = {};
    bool empty_ = true;
};

struct ScanOptions {
    TargetSet targets;
    bool quotes = false;
    bool end_ok = false;
};

const char *Find_Unquoted_Target(const char *text, const TargetSet &targets) {
    bool in_quotes = false;
    for (; *text; ++text) {
        if (*text == '"') in_quotes = !in_quotes;
        if (!in_quotes && targets.Has(*text)) break;
    }
    return text;
}

const char *Find_Target(const char *text, const ScanOptions &options) {
    if (options.targets.Is_Empty() && !options.end_ok) return nullptr;
    if (options.quotes) {
        text = Find_Unquoted_Target(text, options.targets);
    } else {
        while (*text && !options.targets.Has(*text)) ++text;
    }
    return *text || options.end_ok ? text : nullptr;
}

const char *Pass_Targets(const char *text, const ScanOptions &options) {
    while (options.targets.Has(*text)) ++text; // the terminator is in no set
    return *text || options.end_ok ? text : nullptr;
}

// Gives the pattern behind the list; null when an option makes it fail.
const char *Take_Option_List(const char *pattern, char scan, ScanOptions &options) {
    while (const char option = *pattern) {
        ++pattern;
        if (option == 'T') {
            if (*pattern) options.targets.Add(*pattern++);
        } else if (option == 'W') {
            options.targets.Add(' ');
            options.targets.Add('\t');
        } else if (option == '0') {
            options.end_ok = true;
        } else if (option == 'Q') {
            options.quotes = true;
        } else if (option == 'L' && scan == '*' && !options.targets.Is_Empty()) {
            return nullptr;
        }
        if (*pattern != '|') break;
        ++pattern;
    }
    return pattern;
}

// Of a text that passes 2 GB, what a result can say.
int Distance(const char *from, const char *to) {
    const auto distance = reinterpret_cast<unsigned long>(to) - reinterpret_cast<unsigned long>(from);
    return distance < INT_MAX ? static_cast<int>(distance) : INT_MAX;
}

// By hand, since most fields are shorter than a call takes.
void Copy_Cut(const char *text, int length, char *out, int size) {
    const int copied = length < size ? length : size - 1;
    for (int i = 0; i < copied; ++i) out[i] = text[i];
    out[copied] = 0;
}

const char *Step(const char *text, int count) {
    for (; count > 0 && *text; --count) ++text;
    return text;
}

// Apart from its caller, which calls no other library and so needs no base register.
[[gnu::noinline]] int Step_Count(const char *pattern) {
    char number[4];
    Copy_Cut(pattern, static_cast<int>(Step(pattern, 3) - pattern), number, sizeof number);
    return std::atoi(number);
}

const char *Apply_Elements(const char *text, const char *pattern) {
    while (*pattern) {
        if (*pattern != '^' || pattern[1] == '^') {
            if (*text++ != *pattern++) return nullptr;
            continue;
        }
        const char directive = *++pattern;
        if (directive) ++pattern;
        if (directive == '*' && *pattern == 'L') {
            text = Step(text, Step_Count(++pattern));
            pattern = Step(pattern, 3);
        } else if (directive == '*' || directive == '>') {
            ScanOptions options;
            pattern = Take_Option_List(pattern, directive, options);
            if (!pattern) return nullptr;
            text = directive == '*' ? Find_Target(text, options) : Pass_Targets(text, options);
            if (!text) return nullptr;
        }
    }
    return text;
}

const char *Pattern_End(const char *position, const char *pattern) {
    return *position && pattern ? Apply_Elements(position, pattern) : position;
}

} // namespace

CPatternString::CPatternString(const char *text) : Start(text ? text : ""), Position(Start) {
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof" // one base, one virtual table: GCC lays it out in order
    static_assert(offsetof(CPatternString, Start) == 4 && offsetof(CPatternString, Position) == 8);
#pragma GCC diagnostic pop
}

CPatternString::CPatternString(const CPatternString &other) = default;
CPatternString &CPatternString::operator=(const CPatternString &other) = default;
CPatternString::~CPatternString() = default;

void CPatternString::Reset() {
    Position = Start;
}

bool CPatternString::More() const {
    return *Position != 0;
}

int CPatternString::Next(const char *pattern, char *out, int size) {
    const char *end = Pattern_End(Position, pattern);
    if (!end) return 0;
    const int length = Distance(Position, end);
    if (out && size > 0) Copy_Cut(Position, length, out, size);
    Position = end;
    return length;
}

int CPatternString::Skip(const char *pattern) {
    const char *const start = Position;
    if (const char *end = Pattern_End(start, pattern)) Position = end;
    return Distance(start, Position);
}

char *CPatternString::Apply_Pattern(const char *pattern) const {
    return const_cast<char *>(Pattern_End(Position, pattern));
}

char *CPatternString::Scan_To(const char *text, const char *targets, bool quotes, bool end_ok) const {
    return const_cast<char *>(Find_Target(text, {TargetSet(targets), quotes, end_ok}));
}

char *CPatternString::Scan_Past(const char *text, const char *targets, bool end_ok) const {
    return const_cast<char *>(Pass_Targets(text, {TargetSet(targets), false, end_ok}));
}
