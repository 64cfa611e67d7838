#include <kelmara/foundation/string_helpers.h>

#include <tests/foundation/guarded_text.h>
#include <tests/support/test_memory.h>

#include <algorithm>
#include <functional>

namespace {

// What `change` makes of a text, with `room` bytes more for it and not one byte beyond them.
std::string Changed(const std::string &text, const std::function<void(char *)> &change,
                    std::size_t room = 0) {
    const GuardedText guarded(text + std::string(room, '#'));
    char *const start = guarded;
    std::memcpy(start, text.c_str(), text.size() + 1);
    change(start);
    return start;
}

std::vector<WCHAR> Widen(const std::string &text) {
    return std::vector<WCHAR>(text.c_str(), text.c_str() + text.size() + 1);
}

std::string Upper(std::string text) {
    for (char &c : text) c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c;
    return text;
}

// Around the blocks and the limits; 256 and more allocate.
const int Lengths[] = {0, 1, 7, 8, 15, 16, 17, 33, 255, 256, 300};

} // namespace

TEST(StringHelpers, ComparesFoldedBytesAtEveryPlaceOfEveryLength) {
    const NoLeak no_leak;
    for (int length : Lengths) {
        SCOPED_TRACE(length);
        const std::string text(static_cast<std::size_t>(length), 'k');
        const GuardedText a(text), b(Upper(text));
        const long requests = Requests();
        EXPECT_EQ(strcmp_ncs(a, b), 0);
        EXPECT_EQ(Requests() - requests, length > 255 ? 2 : 0);
        EXPECT_EQ(strcmp_ncs(a, GuardedText(text + "!")), -1);
        EXPECT_EQ(strcmp_ncs(GuardedText(Upper(text) + "!"), a), 1);
        for (int place = 0; place < length; ++place) {
            for (char greater : {'l', 'L', '[', '\xE0'}) { // '[' stands behind the capitals
                b[place] = greater;
                EXPECT_EQ(strcmp_ncs(a, b), -1);
                EXPECT_EQ(strcmp_ncs(b, a), 1);
            }
            b[place] = 'K';
        }
    }
    EXPECT_EQ(Last_Request(), 301);
    for (int pair = 0; pair < 256 * 256; ++pair) { // behind 16 bytes that are equal when they fold alike
        const char x = static_cast<char>(pair % 256), y = static_cast<char>(pair / 256);
        if (!x || !y) continue;
        const auto a = std::string(16, x) + "1", b = std::string(16, y) + "2";
        const int order = (Upper(a) > Upper(b)) - (Upper(a) < Upper(b));
        ASSERT_EQ(strcmp_ncs(a.c_str(), b.c_str()), order) << pair;           // by blocks
        ASSERT_EQ(strcmp_ncs(a.c_str() + 15, b.c_str() + 15), order) << pair; // by bytes
    }
}

TEST(StringHelpers, FindsFoldedTextAndAnswersZeroWithoutMemory) {
    const NoLeak no_leak;
    for (int length : Lengths) {
        SCOPED_TRACE(length);
        const GuardedText text(std::string(static_cast<std::size_t>(length), '.') + "NeeDle");
        EXPECT_EQ(strstr_ncs(text, GuardedText("nEEdLE")), text + length);
        EXPECT_EQ(strstr_ncs(text, GuardedText("needles")), nullptr);
        EXPECT_EQ(strstr_ncs(text, ""), +text);
    }
    const std::string text(256, 'a'), other(256, 'b');
    const long requests = Requests();
    EXPECT_EQ(strstr_ncs("short", other.c_str()), nullptr);
    EXPECT_EQ(Requests(), requests) << "a longer sub is told without a copy";
    for (const int nth : {1, 2}) {
        const FailingMemory first(nth);
        EXPECT_EQ(strcmp_ncs(text.c_str(), other.c_str()), 0) << nth;
        const FailingMemory second(nth);
        EXPECT_EQ(strstr_ncs(text.c_str(), "a"), nullptr) << nth;
    }
}

TEST(StringHelpers, TellsWideTextsOfOneLengthApart) {
    const std::tuple<std::string, std::string, int> cases[] = {
        {"aBz", "AbZ", 0},
        {"a", "B", -1},
        {"b", "A", 1},
        {"b", "AA", -1},
        {std::string(1023, 'a'), std::string(1023, 'A'), 0},
        {std::string(1024, 'a'), std::string(1024, 'a'), -1}};
    for (const auto &[a, b, order] : cases) EXPECT_EQ(wcscmp_ncs(Widen(a).data(), Widen(b).data()), order);
    const WCHAR high[] = {0x161, 0}, low[] = {'b', 0};
    EXPECT_EQ(wcscmp_ncs(high, low), 1) << "compared whole, not by bytes";
}

TEST(StringHelpers, LooksCharactersUpAndRemovesThemInPlace) {
    EXPECT_TRUE(Contains_Char("text", "xyz"));
    EXPECT_FALSE(Contains_Char("text", "abc"));
    EXPECT_EQ(Char_In_Set('b', "abc"), 'b');
    EXPECT_EQ(Char_In_Set('d', "abc"), 0);
    EXPECT_TRUE(CharIsNotOneOf('\0', "abc")) << "the set's terminator is none of it";
    char text[] = "abcabc";
    EXPECT_TRUE(Strip_String(text, "bc"));
    EXPECT_STREQ(text, "aabc");
    EXPECT_FALSE(Strip_String(text, "BC"));
    EXPECT_TRUE(Strip_String(text, ""));
    EXPECT_TRUE(Strip_String(text, text + 1));
    EXPECT_STREQ(text, "a");
    EXPECT_EQ(Changed("\"a\"\"b\"", Strip_Quotes), "ab");
    EXPECT_EQ(Changed("\"\"\"", Strip_Quotes), "");
    EXPECT_EQ(Changed("&a&&b", [](char *place) { Strip_Char(place, '&'); }), "ab");
    EXPECT_EQ(Changed("", Quote_String, 2), "\"\"");
    EXPECT_EQ(Changed("\"a", Quote_String, 2), "\"\"a\"");
}

TEST(StringHelpers, ReplacesTheFirstOccurrenceInBothWidths) {
    const NoLeak no_leak;
    const std::tuple<std::string, std::string, std::string, std::string> cases[] = {
        {"a-b-c", "-", "+++", "a+++b-c"},
        {"a-b", "a-b", "", ""},
        {"abc", "B", "x", "abc"},
        {"abc", "", "x", "abc"}};
    for (const auto &[text, find, replacement, result] : cases) {
        const auto room = static_cast<long>(std::max(find.size(), replacement.size()));
        const auto size = static_cast<long>(text.size()) + room;
        std::string narrow = text + std::string(static_cast<std::size_t>(room), '\0');
        std::vector<WCHAR> wide = Widen(narrow);
        const bool replaced = result != text;
        EXPECT_EQ(Replace_String(narrow.data(), find.c_str(), replacement.c_str()), replaced);
        EXPECT_TRUE(!replaced || Last_Request() == size);
        EXPECT_EQ(Replace_String(wide.data(), Widen(find).data(), Widen(replacement).data()), replaced);
        EXPECT_TRUE(!replaced || Last_Request() == 2 * size);
        EXPECT_STREQ(narrow.c_str(), result.c_str());
        EXPECT_TRUE(std::equal(result.c_str(), result.c_str() + result.size() + 1, wide.begin()));
    }
    char own[16] = "a-b";
    EXPECT_TRUE(Replace_String(own, own + 1, own));
    EXPECT_STREQ(own, "aa-b");
}

TEST(StringHelpers, NormalisesWhiteSpaceOutsideQuotes) {
    const auto with = [](char c) { return [c](char *text) { Tokenize_Whitespace(text, c); }; };
    EXPECT_EQ(Changed("a b\t\r\nc", with('_')), "a_b__c");
    EXPECT_EQ(Changed("a \"b \t\n\r\" c\"open ", with('\0')), "a\"b \t\r\"c\"open ");
    const std::string spaced = "a " + std::string(252, 'x'); // one short of the limit
    EXPECT_EQ(Changed(spaced + "  ", with('_')), "a_" + std::string(252, 'x') + "_ ");
    EXPECT_EQ(Changed(spaced + "\n  end", with('\0')), "a" + std::string(252, 'x') + "  end");
}

TEST(StringHelpers, TokenisesWithQuotesAndEmptyTokens) {
    const std::tuple<std::string, const char *, const char *> cases[] = {
        {"one,,two", ",", "[one][][two]"},
        {"a;b,", ",;", "[a][b][]"},
        {"", ",", "[]"},
        {"\"a,b\",\"c,d", ",", "[\"a,b\"][\"c,d]"},
        {"a\"b", "\"", "[a\"b]"}};
    for (auto [text, delimiters, expected] : cases) {
        std::string tokens;
        for (char *token = smartok(text.data(), delimiters); token && tokens.size() < 99;
             token = smartok(nullptr, delimiters)) {
            tokens += "[" + std::string(token) + "]";
        }
        EXPECT_EQ(tokens, expected);
    }
    char text[] = "a b;c", other[] = "x y";
    EXPECT_STREQ(smartok(text, " "), "a");
    EXPECT_STREQ(smartok(nullptr, ";"), "b") << "the delimiters may change";
    EXPECT_STREQ(smartok(other, " "), "x") << "a new text ends the old scan";
}

TEST(StringHelpers, SplitsOffTheTail) {
    const std::tuple<std::string, char, bool, const char *, const char *> cases[] = {
        {"c:\\d\\file", '\\', true, "c:\\d\\file", "file"},
        {"c:\\d\\file", '\\', false, "c:\\d", "file"},
        {"\\a\\", '\\', false, "\\a", ""},
        {"", '\\', false, "", ""},
        {"\\", '\\', false, "\\", "\\"},
        {"\\file", '\\', false, "\\file", "\\file"},
        {"file", '\0', false, "file", "file"}};
    for (auto [text, c, keep, left, tail] : cases) {
        EXPECT_STREQ(Tail_String(text.data(), c, keep), tail);
        EXPECT_STREQ(text.c_str(), left);
    }
}
