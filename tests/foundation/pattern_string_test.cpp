#include <kelmara/foundation/pattern_string.h>

#include <tests/support/test_memory.h>

#include <cstring>
#include <memory>
#include <random>

namespace {

// A block of exactly the text's size: the sanitizer sees a read behind it.
std::unique_ptr<char[]> Exact(const std::string &text) {
    std::unique_ptr<char[]> block(new char[text.size() + 1]);
    std::memcpy(block.get(), text.c_str(), text.size() + 1);
    return block;
}

struct OpenPatternString : CPatternString {
    using CPatternString::Apply_Pattern;
    using CPatternString::CPatternString;
    using CPatternString::Scan_Past;
    using CPatternString::Scan_To;
};

constexpr int Fails = -1;

// How many characters of the text the pattern passes over.
int Reach(const std::string &text, const std::string &pattern) {
    const auto block = Exact(text);
    const char *end = OpenPatternString(block.get()).Apply_Pattern(Exact(pattern).get());
    return end ? static_cast<int>(end - block.get()) : Fails;
}

struct PatternCase {
    std::string text, pattern;
    int reach;
};

void Expect_Reach(const std::vector<PatternCase> &cases) {
    for (const auto &[text, pattern, reach] : cases) {
        EXPECT_EQ(Reach(text, pattern), reach) << "\"" << pattern << "\" on \"" << text << "\"";
    }
}

TEST(Patterns, MatchCharactersExactly) {
    Expect_Reach({{"abc", "ab", 2},
                  {"abc", "aB", Fails},
                  {"ab", "abc", Fails},
                  {"abc", "", 0},
                  {"", "abc", 0},
                  {"*|>T", "*|>T", 4},
                  {"^a", "^^", 1},
                  {"a", "^^", Fails},
                  {"^", "^^", 1},
                  {"^a", "^^a", 1}, // the second caret begins "^a", which is nothing
                  {"^^a", "^^^a", 2},
                  {"^ab,", "^^*T,", 3},   // the second caret begins the scan
                  {"abc", "a^xb^\"c", 3}, // directives that are none
                  {"abc", "ab^", 2}});
}

TEST(Patterns, ScanToATarget) {
    Expect_Reach({{"a,b", "^*T,", 1},
                  {"ab", "^*T,", Fails},
                  {"ab", "^*0|T,", 2},
                  {"ab", "^*T,|0", 2},
                  {",", "^*T,", 0},
                  {"ab c", "^*W", 2},
                  {"ab\tc", "^*W", 2},
                  {"a|b", "^*T||T,", 1}, // a bar as a target
                  {"a0,", "^*T0", 1},    // and a zero, which is no option then
                  {"a^,", "^*T^", 1},
                  {"a\xE9,", "^*T\xE9", 1},
                  {"a,b", "^*T,,^*T;|0", 3}, // goes on behind the list
                  {"a,b", "^*T,;", Fails},
                  {"a(b", "^*(", Fails}, // no option letter: an empty set
                  {"a(b", "^*(|0", 3},
                  {"a(b,", "^*x|T,", 3},
                  {"a,b", "^*W|L|T,", Fails}, // L with a target
                  {"a,b", "^*0|L|T,", 1},     // and without
                  {"aL,", "^*TL", 1}});
}

TEST(Patterns, LeaveOutQuotedTargets) {
    Expect_Reach({{"\"a,b\",c", "^*Q|T,", 5},
                  {"\"a,b\",c", "^*T,|Q", 5},
                  {"\"a,b\",c", "^*T,", 2},
                  {"\"a,b,c", "^*Q|T,", Fails},
                  {"\"a,b,c", "^*Q|T,|0", 6},
                  {"a\"b\"", "^*Q|T\"", 3}, // only the closing quote is a target
                  {"a\"b,\"", "^>Q|Ta", 1}});
}

TEST(Patterns, ScanPastTargets) {
    Expect_Reach({{" \t a", "^>W", 3},
                  {"a", "^>W", 0},
                  {"   ", "^>W", Fails},
                  {"   ", "^>0|W", 3},
                  {") (a", "^>W|T(|T)", 3},
                  {"a", "^>x", 0},
                  {"  a", "^>W|L|Ta|0", 3}, // L is nothing here
                  {"003", "^>L003", 3},
                  {"  ", "  ^>W", Fails}, // at the end of the text within a pattern
                  {"  ", "  ^>0", 2},
                  {"  ", "  ^*W", Fails}});
}

TEST(Patterns, StepOverCharacters) {
    Expect_Reach({{"abcd", "^*L003", 3},
                  {"ab", "^*L003", 2},
                  {"abcd", "^*L000", 0},
                  {"abcd", "^*L 2 c", 2 + 1}, // reads " 2 ", then matches "c"
                  {"abcd", "^*L+03d", 4},
                  {"abcd", "^*L1x9b", 2},
                  {"abcd", "^*Lxyz", 0},
                  {"abcd", "ab^*L-02", 2},
                  {"a|", "^*L001|", 2}, // a step has no list
                  {std::string(1000, 'a'), "^*L999a", 1000}});
}

TEST(Patterns, ThatStopShortAreTakenForWhatTheyHave) {
    Expect_Reach({{"ab", "^*", Fails},
                  {"ab", "^>", 0},
                  {"ab", "^*T", Fails},
                  {"ab", "^*0|T", 2},
                  {"ab", "^>T", 0},
                  {"ab", "^*Tb|", 1},
                  {"ab", "^*L", 0},
                  {"ab", "^*L1", 1},
                  {"abcdefghijklmnop", "^*L12", 12}});
    std::string every_character;
    for (int round = 0; round < 2; ++round) {
        for (int c = 1; c < 256; ++c) every_character += std::string("|T") + static_cast<char>(c);
    }
    EXPECT_EQ(Reach("any", "^*" + every_character.substr(1)), 0);
    EXPECT_EQ(Reach("any", "^>0" + every_character), 3) << "no target is lost";
}

TEST(Patterns, StayWithinTheTextWhateverTheySay) {
    std::mt19937 random(7);
    const auto Any_Text = [&](const std::string &characters) {
        std::string text;
        for (auto left = random() % 14; left > 0; --left) text += characters[random() % characters.size()];
        return text;
    };
    for (int i = 0; i < 20000; ++i) {
        const std::string text = Any_Text("ab,^\" -1");
        const std::string pattern = Any_Text("^^^**>>TTWLQ0||-1a,b");
        const int reach = Reach(text, pattern);
        ASSERT_TRUE(reach >= Fails && reach <= static_cast<int>(text.size())) << text << " by " << pattern;
    }
}

TEST(PatternStrings, HandOutFieldByField) {
    CPatternString fields("12-34");
    char out[16] = "before";
    EXPECT_EQ(fields.Next("^*T-", out, sizeof out), 2);
    EXPECT_STREQ(out, "12");
    EXPECT_EQ(fields.Skip("^>T-"), 1);
    CPatternString copy = fields;
    EXPECT_EQ(fields.Next("^*T-", out, sizeof out), 0);
    EXPECT_STREQ(out, "12") << "a failure leaves it alone";
    EXPECT_EQ(fields.Next("^*0|T-", out, sizeof out), 2);
    EXPECT_STREQ(out, "34");
    EXPECT_FALSE(fields.More());
    EXPECT_EQ(fields.Next("literal", out, sizeof out), 0);
    EXPECT_STREQ(out, "") << "an empty success at the end of the text";

    EXPECT_TRUE(copy.More());
    EXPECT_EQ(copy.Skip("34"), 2);
    fields.Reset();
    EXPECT_EQ(fields.Skip("12-34"), 5);
    copy.Reset();
    fields = copy;
    EXPECT_EQ(fields.Skip("B"), 0);
    EXPECT_EQ(fields.Skip("1"), 1) << "and the position where it was";
}

TEST(PatternStrings, CutWhatDoesNotFit) {
    CPatternString text("0123456789,");
    const struct {
        int size;
        const char *out;
    } cases[] = {{11, "0123456789"}, {10, "012345678"}, {3, "01"}, {1, ""}, {0, "????"}, {-5, "????"}};
    for (const auto &[size, expected] : cases) {
        char out[16] = "????";
        text.Reset();
        EXPECT_EQ(text.Next("^*T,", out, size), 10) << size;
        EXPECT_STREQ(out, expected) << size;
        EXPECT_EQ(text.Skip(","), 1) << "the position is behind the whole field";
    }
    text.Reset();
    EXPECT_EQ(text.Next("^*T,", nullptr, 16), 10);
}

TEST(PatternStrings, TakeNullForEmpty) {
    CPatternString nothing(nullptr);
    EXPECT_FALSE(nothing.More());
    EXPECT_EQ(nothing.Skip("^*T,"), 0);
    CPatternString text("a");
    char out[4] = "?";
    EXPECT_EQ(text.Next(nullptr, out, sizeof out), 0);
    EXPECT_STREQ(out, "") << "the empty pattern succeeds";
    EXPECT_TRUE(text.More());
}

TEST(PatternStrings, LendTheirScansToDerivedOnes) {
    OpenPatternString scanner("");
    const char *const text = "\"a,\";b";
    EXPECT_EQ(scanner.Scan_To(text, ",;", false, false), text + 2);
    EXPECT_EQ(scanner.Scan_To(text, ",;", true, false), text + 4);
    EXPECT_EQ(scanner.Scan_To(text, "!", false, false), nullptr);
    EXPECT_EQ(scanner.Scan_To(text, "!", false, true), text + 6);
    EXPECT_EQ(scanner.Scan_To(text, nullptr, false, true), text + 6);
    EXPECT_EQ(scanner.Scan_Past(text, "\"a", false), text + 2);
    EXPECT_EQ(scanner.Scan_Past(text, nullptr, false), text);
    EXPECT_EQ(scanner.Scan_Past(text, "\",;ab", false), nullptr);
    EXPECT_EQ(scanner.Scan_Past(text, "\",;ab", true), text + 6);
    const char *const end = text + 6;
    EXPECT_EQ(scanner.Scan_To(end, "a", false, false), nullptr);
    EXPECT_EQ(scanner.Scan_Past(end, nullptr, false), nullptr);
    EXPECT_EQ(scanner.Scan_Past(end, nullptr, true), end);
}

TEST(PatternStrings, AreDeletedThroughTheirBase) {
    const NoLeak no_leak;
    CAutoDeleteableObject *object = new CPatternString("text");
    delete object;
}

} // namespace
