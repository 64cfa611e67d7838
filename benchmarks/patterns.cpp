// Patterns against the host's ways of taking a telephone number apart into its four fields.

#include <benchmarks/growth.h>

#include <kelmara/kelmara.h>

#include <cstring>
#include <regex>
#include <string>

namespace {

constexpr int Field_Size = 255;

struct Fields {
    char field[4][Field_Size];
};

bool Split_By_Patterns(const char *text, Fields &fields) {
    CPatternString number(text + 1);
    number.Skip("^*(");
    if (!number.More()) return false;
    if (number.Next("^*W|T(", fields.field[0], Field_Size) == 0) return false;
    number.Skip("^>W|T(");
    if (number.Next("^*T)", fields.field[1], Field_Size) == 0) return false;
    number.Skip("^>W|T)");
    if (number.Next("^*T-|W", fields.field[2], Field_Size) == 0) return false;
    number.Skip("^>W|T-");
    return number.Next("^*0|W", fields.field[3], Field_Size) != 0;
}

bool Split_By_Scanf(const char *text, Fields &fields) {
    return std::sscanf(text, "+%254[^ \t(]%*[ \t(]%254[^)]%*[ \t)]%254[^- \t]%*[- \t]%254[^ \t]",
                       fields.field[0], fields.field[1], fields.field[2], fields.field[3]) == 4;
}

class RegexSplitter {
  public:
    bool Split(const char *text, Fields &fields) {
        if (!std::regex_search(text, match_, number_)) return false;
        for (std::size_t i = 0; i < 4; ++i) {
            const std::csub_match &part = match_[i + 1];
            const std::size_t length = std::min<std::size_t>(Field_Size - 1, part.length());
            std::memcpy(fields.field[i], part.first, length);
            fields.field[i][length] = 0;
        }
        return true;
    }

  private:
    const std::regex number_{R"(^\+([^ \t(]+)[ \t(]+([^)]+)[ \t)]+([^- \t]+)[- \t]+([^ \t]+))",
                             std::regex::optimize};
    std::cmatch match_;
};

template <class Split>
void Expect_Fields(const char *way, Split split) {
    Fields fields;
    const char *const expected[] = {"1", "555", "123", "4567"};
    bool right = split("+1 (555) 123-4567", fields);
    for (int i = 0; i < 4; ++i) right = right && std::strcmp(fields.field[i], expected[i]) == 0;
    if (right && !split("+1 (555) 1234567", fields)) return;
    std::fprintf(stderr, "%s: takes the number apart wrongly\n", way);
    std::exit(1);
}

template <class Peer>
void Compare_On(const char *what, const char *number, Peer peer, double limit) {
    Fields ours, theirs;
    measure::Compare(
        what,
        [&] {
            measure::Keep(Split_By_Patterns(measure::Hidden(number), ours));
            measure::Keep(ours);
        },
        [&] {
            measure::Keep(peer(measure::Hidden(number), theirs));
            measure::Keep(theirs);
        },
        limit);
}

template <class Peer>
void Measure_Beside(const char *peer_name, Peer peer, double limit) {
    measure::Heading("patterns", peer_name);
    Compare_On("a telephone number into its four fields", "+1 (555) 123-4567", peer, limit);
    Compare_On("one of three fields, which is refused", "+1 (555) 1234567", peer, limit);
}

void Measure_Growth() {
    measure::Growth_Heading("patterns");
    measure::Growth fields("take n characters apart", 1.1), one("scan over n characters to one of 3", 1.1);
    for (const long size : measure::Sizes(100000)) {
        std::string text(static_cast<std::size_t>(size), 'x');
        text += ';';
        one.At(size, [&] {
            CPatternString scanner(text.c_str());
            measure::Keep(scanner.Skip(measure::Hidden("^*T;|T,|W")));
        });
        for (std::size_t at = 9; at < text.size(); at += 10) text[at] = ';';
        fields.At(size, [&] {
            char field[Field_Size];
            CPatternString scanner(text.c_str());
            while (scanner.More()) {
                scanner.Next("^*T;|0", field, Field_Size);
                scanner.Skip("^>T;|0");
            }
            measure::Keep(field);
        });
    }
}

} // namespace

int main() {
    measure::Use_Plain_Memory();
    RegexSplitter splitter;
    const auto by_regex = [&](const char *text, Fields &fields) { return splitter.Split(text, fields); };
    Expect_Fields("patterns", Split_By_Patterns);
    Expect_Fields("sscanf", Split_By_Scanf);
    Expect_Fields("std::regex", by_regex);

    Measure_Beside("std::regex", by_regex, 0.25);
    Measure_Beside("sscanf", Split_By_Scanf, 1.0);
    Measure_Growth();
}
