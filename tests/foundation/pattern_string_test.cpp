#include <kelmara/foundation/pattern_string.h>

#include <tests/foundation/guarded_text.h>

namespace {

struct OpenPatternString : CPatternString {
    using CPatternString::Apply_Pattern;
    using CPatternString::CPatternString;
    using CPatternString::Scan_Past;
    using CPatternString::Scan_To;
};

constexpr int Fails = -1;

// How many characters of the text the pattern passes over.
int Reach(const std::string &text, const std::string &pattern) {
    const GuardedText guarded(text);
    const char *end = OpenPatternString(guarded).Apply_Pattern(GuardedText(pattern));
    return end ? static_cast<int>(end - guarded) : Fails;
}

void Expect_Reach(const std::string &text, const std::vector<std::pair<std::string, int>> &reaches) {
    for (const auto &[pattern, reach] : reaches) {
        EXPECT_EQ(Reach(text, pattern), reach) << "\"" << pattern << "\" on \"" << text << "\"";
    }
}

TEST(Patterns, MatchCharactersAndStepOverThem) {
    Expect_Reach("abc", {{"ab", 2}, {"aB", Fails}, {"abcd", Fails}, {"", 0}, {"^^", Fails}, {"ab^", 2}});
    Expect_Reach("abc", {{"a^xb^\"c", 3}}); // directives that are none
    Expect_Reach("", {{"abc", 0}});
    // Of two carets the second one begins the next element.
    Expect_Reach("^^a", {{"^^", 1}, {"^^^a", 2}, {"^^*Ta", 2}, {"^^^", 2}, {"^^^^", Fails}});
    Expect_Reach("abcd", {{"^*L003", 3}, {"^*L005", 4}, {"^*L000", 0}, {"^*L+03d", 4}, {"^*L1x9b", 2}});
    Expect_Reach("abcd", {{"^*L 2 c", 3}, {"^*Lxyz", 0}, {"ab^*L-02", 2}});
    Expect_Reach("a|" + std::string(1000, 'b'), {{"^*L001|", 2}, {"^*L999b", 1000}});
}

TEST(Patterns, ScanToATargetOutsideQuotes) {
    Expect_Reach("a,b", {{"^*T,", 1}, {"^*T;", Fails}, {"^*0|T;", 3}, {"^*T;|0", 3}, {"^*Ta", 0}});
    Expect_Reach("a,b", {{"^*T,,^*T;|0", 3}, {"^*T,;", Fails}});        // goes on behind the list
    Expect_Reach("a,b", {{"^*(", Fails}, {"^*(|0", 3}, {"^*x|T,", 1}}); // options that are none
    Expect_Reach("a,b", {{"^*W|L|T,", Fails}, {"^*0|L|T,", 1}});
    for (const char *text : {"ab c", "ab\tc"}) Expect_Reach(text, {{"^*W", 2}});
    Expect_Reach("a|0LW^\xE9", {{"^*T||T0", 1}, {"^*T0", 2}, {"^*TL", 3}, {"^*TW", 4}, {"^*T^", 5}});
    Expect_Reach("a|0LW^\xE9", {{"^*T\xE9", 6}});
    Expect_Reach("\"a,b\",c", {{"^*Q|T,", 5}, {"^*T,|Q", 5}, {"^*T,", 2}, {"^*Q|T\"", 4}});
    Expect_Reach("\"a,b,c", {{"^*Q|T,", Fails}, {"^*Q|T,|0", 6}, {"^>Q|T\"", 1}});
}

TEST(Patterns, ScanPastTargetsAndAreTakenForWhatTheyHave) {
    Expect_Reach(" \t a)(", {{"^>W", 3}, {"^>Wa^>T(|T)", Fails}, {"^>Wa^>T(|T)|0", 6}, {"^>x", 0}});
    Expect_Reach(" \t a)(", {{"^>W|L|Ta", 4}, {"^>L003", Fails}}); // L is nothing here
    Expect_Reach("   ", {{"^>W", Fails}, {"^>0|W", 3}, {"   ^>W", Fails}, {"   ^>0", 3}, {"   ^*W", Fails}});
    Expect_Reach("abcd", {{"^*", Fails}, {"^>", 0}, {"^*T", Fails}, {"^*0|T", 4}, {"^>T", 0}});
    Expect_Reach("abcd", {{"^*Tb|", 1}, {"^*L", 0}, {"^*L1", 1}, {"^*L03", 3}, {"ab^", 2}});
    std::string every_character;
    for (int c = 1; c < 511; ++c) {
        if (c != 256) every_character += std::string("|T") + static_cast<char>(c);
    }
    Expect_Reach("any", {{"^*x" + every_character, 0}, {"^>0" + every_character, 3}});
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
    copy.Reset();
    fields = copy;
    EXPECT_EQ(fields.Skip("B"), 0);
    EXPECT_EQ(fields.Skip("12-34"), 5) << "from where it was";
}

TEST(PatternStrings, CutWhatDoesNotFit) {
    CPatternString text("0123456789,");
    const std::pair<int, const char *> cases[] = {{11, "0123456789"}, {10, "012345678"}, {3, "01"}, {1, ""},
                                                  {0, "????"},        {-5, "????"}};
    for (const auto &[size, expected] : cases) {
        char out[16] = "????";
        text.Reset();
        EXPECT_EQ(text.Next("^*T,", out, size), 10) << size;
        EXPECT_STREQ(out, expected) << size;
        EXPECT_EQ(text.Skip(","), 1) << "the position is behind the whole field";
    }
    text.Reset();
    EXPECT_EQ(text.Next("^*T,", nullptr, 16), 10);
    EXPECT_EQ(text.Skip(nullptr), 0) << "null is the empty pattern";
    EXPECT_FALSE(CPatternString(nullptr).More());
}

TEST(PatternStrings, LendTheirScansToDerivedOnes) {
    const OpenPatternString scanner("");
    const char *const text = "\"a,\";b", *const end = text + 6;
    EXPECT_EQ(scanner.Scan_To(text, ",;", true, false), text + 4);
    EXPECT_EQ(scanner.Scan_To(text, nullptr, false, true), end);
    EXPECT_EQ(scanner.Scan_Past(text, nullptr, false), text);
    EXPECT_EQ(scanner.Scan_Past(text, "\",;ab", false), nullptr);
    EXPECT_EQ(scanner.Scan_Past(end, nullptr, true), end);
}

} // namespace
