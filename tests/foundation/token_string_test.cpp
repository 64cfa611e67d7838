#include <kelmara/foundation/token_string.h>

#include <tests/foundation/guarded_text.h>

namespace {

std::string All_Tokens(CTokenString &walker, char delimiter = 0) {
    std::string tokens;
    int rounds = 0;
    for (char *token; (token = walker.Next_Token(delimiter)) && rounds < 100; ++rounds) {
        tokens += "[" + std::string(token) + "]";
    }
    return tokens;
}

} // namespace

TEST(TokenString, CutsTextsIntoTokens) {
    const struct {
        const char *text, *plain, *leading, *trailing, *both;
    } cases[] = {
        {"", "", "", "", ""},
        {",", "[]", "[]", "[]", "[]"},
        {"a,,b,", "[a][][b]", "[a][][b]", "[a][][b]", "[a][][b]"},
        {" a , b ", "[ a ][ b ]", "[a ][b ]", "[ a][ b]", "[a][b]"},
        {"  ,  ", "[  ][  ]", "[]", "[ ][ ]", "[]"},
        {"a b  ,\t,", "[a b  ][\t]", "[a b  ][\t]", "[a b][\t]", "[a b][\t]"},
    };
    for (const auto &[text, plain, leading, trailing, both] : cases) {
        SCOPED_TRACE(text);
        const char *expected[] = {plain, leading, trailing, both};
        for (int mode = 0; mode < 4; ++mode) {
            const GuardedText buffer(text);
            CTokenString walker(buffer, ',');
            walker.Strip_Leading_Spaces((mode & 1) != 0);
            walker.Strip_Trailing_Spaces((mode & 2) != 0);
            EXPECT_EQ(All_Tokens(walker), expected[mode]) << mode;
            EXPECT_EQ(walker.Next_Token(';'), nullptr);
        }
    }
}

TEST(TokenString, TakesAnotherDelimiterForEachCallAndGivesTheRest) {
    char text[] = "key=a,b;  the rest ";
    CTokenString walker(text, ',');
    walker.Strip_Spaces(true);
    EXPECT_STREQ(walker.Next_Token('='), "key");
    EXPECT_STREQ(walker.Next_Token(0), "a");
    EXPECT_STREQ(walker.Next_Token(';'), "b");
    EXPECT_STREQ(walker.Remainder(), "the rest ");
    EXPECT_EQ(walker.Next_Token(0), nullptr);
    EXPECT_EQ(walker.Remainder(), text + sizeof(text) - 1) << "the terminator";
}

TEST(TokenString, HasNoTokensInANullText) {
    CTokenString walker(nullptr, ',');
    walker.Strip_Spaces(true);
    EXPECT_EQ(walker.Next_Token(0), nullptr);
    EXPECT_EQ(walker.Remainder(), nullptr);
}

TEST(TokenString, CopyWalksOnByItselfAndComesToItsEnd) {
    char text[] = "a,b,c,d";
    CTokenString walker(text, ','), other(nullptr, ';');
    EXPECT_STREQ(walker.Next_Token(0), "a");
    CTokenString copy(walker);
    other = walker;
    EXPECT_EQ(All_Tokens(walker), "[b][c][d]");
    EXPECT_EQ(All_Tokens(copy), "[b][c][d]");
    EXPECT_STREQ(other.Next_Token(0), "b");
    EXPECT_EQ(All_Tokens(other, ';'), "[c][d]");
}
