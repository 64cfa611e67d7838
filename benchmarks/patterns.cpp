// Patterns against the host's ways of taking a telephone number apart into its four fields.

#include <benchmarks/measure.h>

#include <kelmara/kelmara.h>

#include <cstring>
#include <regex>

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

} // namespace

int main() {
    measure::Use_Plain_Memory();
    RegexSplitter splitter;
    const auto by_regex = [&](const char *text, Fields &fields) { return splitter.Split(text, fields); };
    Expect_Fields("patterns", Split_By_Patterns);
    Expect_Fields("sscanf", Split_By_Scanf);
    Expect_Fields("std::regex", by_regex);

    measure::Heading("a telephone number into four fields");
    Compare_On("+1 (555) 123-4567, std::regex", "+1 (555) 123-4567", by_regex, 0.25);
    Compare_On("+1 (555) 123-4567, sscanf", "+1 (555) 123-4567", Split_By_Scanf, 1.0);
    Compare_On("+1 (555) 1234567, which has three, std::regex", "+1 (555) 1234567", by_regex, 0.25);
    Compare_On("+1 (555) 1234567, which has three, sscanf", "+1 (555) 1234567", Split_By_Scanf, 1.0);
}
