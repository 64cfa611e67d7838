#include <kelmara/foundation/token_string.h>

#include <tests/foundation/guarded_text.h>

static std::string All_Tokens(CTokenString &walker, char delimiter = 0) {
    std::string tokens;
    char *token;
    for (int rounds = 0; (token = walker.Next_Token(delimiter)) && rounds < 9; ++rounds) {
        tokens += "[" + std::string(token) + "]";
    }
    return tokens;
}

TEST(TokenString, CutsTextsIntoTokens) {
    const std::tuple<const char *, bool, bool, const char *> cases[] = {
        {"", false, false, ""},
        {"a,,b,", true, true, "[a][][b]"},
        {" a , b ", false, false, "[ a ][ b ]"},
        {" a , b ", true, false, "[a ][b ]"},
        {" a , b ", false, true, "[ a][ b]"},
        {"  ,  ", false, true, "[ ][ ]"}, // never the first character
        {"  ,  ", true, true, "[]"}};     // and spaces alone are no token
    for (const auto &[text, leading, trailing, tokens] : cases) {
        const GuardedText buffer(text);
        CTokenString walker(buffer, ',');
        walker.Strip_Leading_Spaces(leading);
        walker.Strip_Trailing_Spaces(trailing);
        EXPECT_EQ(All_Tokens(walker), tokens);
    }
}

TEST(TokenString, TakesAnotherDelimiterForEachCallAndCopiesWalkOnByThemselves) {
    char text[] = "key=a,b;  the rest ";
    CTokenString walker(text, ','), none(nullptr, ','), other(nullptr, ';');
    walker.Strip_Spaces(true);
    EXPECT_STREQ(walker.Next_Token('='), "key");
    EXPECT_STREQ(walker.Next_Token(0), "a");
    CTokenString copy(walker);
    other = walker;
    EXPECT_STREQ(walker.Next_Token(';'), "b");
    EXPECT_STREQ(walker.Remainder(), "the rest ");
    EXPECT_EQ(walker.Next_Token(0), nullptr);
    EXPECT_EQ(walker.Remainder(), text + sizeof(text) - 1) << "the terminator";
    for (CTokenString *later : {&copy, &other}) EXPECT_EQ(All_Tokens(*later, ';'), "[b][the rest]");
    none.Strip_Spaces(true);
    EXPECT_EQ(none.Next_Token(0), nullptr);
    EXPECT_EQ(none.Remainder(), nullptr);
}
