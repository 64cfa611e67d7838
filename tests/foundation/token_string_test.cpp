#include <kelmara/foundation/token_string.h>

#include <tests/foundation/guarded_text.h>

namespace {

std::string All_Tokens(CTokenString &walker, char delimiter = 0) {
    std::string tokens;
    int rounds = 0;
    for (char *token; (token = walker.Next_Token(delimiter)) && rounds < 9; ++rounds) {
        tokens += "[" + std::string(token) + "]";
    }
    return tokens;
}

} // namespace

TEST(TokenString, CutsTextsIntoTokens) {
    const auto tokens = [](const char *text, bool leading, bool trailing) {
        const GuardedText buffer(text);
        CTokenString walker(buffer, ',');
        walker.Strip_Leading_Spaces(leading);
        walker.Strip_Trailing_Spaces(trailing);
        return All_Tokens(walker);
    };
    EXPECT_EQ(tokens("", false, false), "");
    EXPECT_EQ(tokens("a,,b,", true, true), "[a][][b]");
    EXPECT_EQ(tokens(" a , b ", false, false), "[ a ][ b ]");
    EXPECT_EQ(tokens(" a , b ", true, false), "[a ][b ]");
    EXPECT_EQ(tokens(" a , b ", false, true), "[ a][ b]");
    EXPECT_EQ(tokens("  ,  ", false, true), "[ ][ ]") << "never the first character";
    EXPECT_EQ(tokens("  ,  ", true, true), "[]") << "and spaces alone are no token";
}

TEST(TokenString, TakesAnotherDelimiterForEachCallAndGivesTheRest) {
    char text[] = "key=a,b;  the rest ";
    CTokenString walker(text, ','), none(nullptr, ',');
    walker.Strip_Spaces(true);
    EXPECT_STREQ(walker.Next_Token('='), "key");
    EXPECT_STREQ(walker.Next_Token(0), "a");
    EXPECT_STREQ(walker.Next_Token(';'), "b");
    EXPECT_STREQ(walker.Remainder(), "the rest ");
    EXPECT_EQ(walker.Next_Token(0), nullptr);
    EXPECT_EQ(walker.Remainder(), text + sizeof(text) - 1) << "the terminator";
    none.Strip_Spaces(true);
    EXPECT_EQ(none.Next_Token(0), nullptr);
    EXPECT_EQ(none.Remainder(), nullptr);
}

TEST(TokenString, CopyWalksOnByItselfAndComesToItsEnd) {
    char text[] = "a,b,c,d";
    CTokenString walker(text, ','), other(nullptr, ';');
    EXPECT_STREQ(walker.Next_Token(0), "a");
    CTokenString copy(walker);
    other = walker;
    EXPECT_EQ(All_Tokens(walker), "[b][c][d]");
    EXPECT_EQ(All_Tokens(copy), "[b][c][d]");
    EXPECT_EQ(All_Tokens(other, ';'), "[b][c][d]");
}
