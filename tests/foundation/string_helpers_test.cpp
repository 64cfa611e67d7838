#include <kelmara/foundation/string_helpers.h>

#include <tests/foundation/guarded_text.h>
#include <tests/support/test_memory.h>

#include <algorithm>
#include <functional>

namespace {

using Wide = std::vector<WCHAR>;

Wide Widen(const std::string &text, std::size_t room = 0) {
    Wide wide(text.begin(), text.end());
    wide.resize(text.size() + 1 + room);
    return wide;
}

std::string Narrow(const Wide &wide) {
    return std::string(wide.begin(), std::find(wide.begin(), wide.end(), 0));
}

// What `change` makes of a text, with `room` bytes more for it and not one byte beyond them.
std::string Changed(const std::string &text, const std::function<void(char *)> &change,
                    std::size_t room = 0) {
    const GuardedText guarded(text + std::string(room, '#'));
    char *const start = guarded;
    std::memcpy(start, text.c_str(), text.size() + 1);
    change(start);
    return start;
}

std::string Upper(std::string text) {
    for (char &c : text) c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c;
    return text;
}

std::string All_Tokens(const std::string &text, const char *delimiters) {
    std::string buffer = text, tokens;
    int rounds = 0;
    for (char *token = smartok(buffer.data(), delimiters); token && rounds < 100; ++rounds) {
        tokens += "[" + std::string(token) + "]";
        token = smartok(nullptr, delimiters);
    }
    EXPECT_EQ(smartok(nullptr, delimiters), nullptr);
    return tokens;
}

// Every length around the blocks and the limits; 256 and more allocate.
const int Lengths[] = {0, 1, 3, 4, 7, 8, 15, 16, 17, 31, 32, 33, 100, 254, 255, 256, 300};

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
        if (length > 255) {
            EXPECT_EQ(Last_Request(), length + 1);
        }
        EXPECT_EQ(strcmp_ncs(a, GuardedText(text + "!")), -1);
        EXPECT_EQ(strcmp_ncs(GuardedText(Upper(text) + "!"), a), 1);
        for (int place = 0; place < length; ++place) {
            b[place] = 'l';
            EXPECT_EQ(strcmp_ncs(a, b), -1);
            b[place] = '[';
            EXPECT_EQ(strcmp_ncs(b, a), 1) << "behind the capitals";
            b[place] = '\xE0';
            EXPECT_EQ(strcmp_ncs(b, a), 1) << "an unsigned value";
            b[place] = 'K';
        }
    }
}

TEST(StringHelpers, FoldsAToZAndNoOtherByte) {
    for (int x = 1; x < 256; ++x) {
        for (int y = 1; y < 256; ++y) {
            const std::string a(17, static_cast<char>(x)), b(17, static_cast<char>(y)); // by blocks
            const std::string folded_a = Upper(a), folded_b = Upper(b);
            const int order = (folded_a > folded_b) - (folded_a < folded_b);
            ASSERT_EQ(strcmp_ncs(a.c_str(), b.c_str()), order) << x << " " << y;
            ASSERT_EQ(strcmp_ncs(a.c_str() + 15, b.c_str() + 15), order) << x << " " << y; // byte by byte
        }
    }
    const std::string a = Upper("z`{");
    EXPECT_EQ(a, "Z`{");
}

TEST(StringHelpers, FindsFoldedTextInTheTextItself) {
    const NoLeak no_leak;
    for (int length : Lengths) {
        SCOPED_TRACE(length);
        const GuardedText text(std::string(static_cast<std::size_t>(length), '.') + "NeeDle");
        EXPECT_EQ(strstr_ncs(text, GuardedText("nEEdLE")), text + length);
        EXPECT_EQ(strstr_ncs(text, GuardedText("needles")), nullptr);
        EXPECT_EQ(strstr_ncs(text, ""), +text);
        EXPECT_EQ(strstr_ncs(text, GuardedText(std::string(text) + "x")), nullptr);
    }
    const long requests = Requests();
    EXPECT_EQ(strstr_ncs("short", std::string(300, 's').c_str()), nullptr);
    EXPECT_EQ(Requests(), requests) << "a longer sub is told without a copy";
}

TEST(StringHelpers, AnswersZeroWithoutMemoryOnTheLongPath) {
    const NoLeak no_leak;
    const std::string text(256, 'a'), other(256, 'b');
    for (int nth : {1, 2}) {
        {
            const FailingMemory failing(nth);
            EXPECT_EQ(strcmp_ncs(text.c_str(), other.c_str()), 0);
            EXPECT_EQ(failing.Refused(), 1);
        }
        const FailingMemory failing(nth);
        EXPECT_EQ(strstr_ncs(text.c_str(), "a"), nullptr);
        EXPECT_EQ(failing.Refused(), 1);
    }
    const FailingMemory failing(1, true);
    EXPECT_EQ(strcmp_ncs(text.c_str() + 1, other.c_str() + 1), -1) << "255 characters need none";
}

TEST(StringHelpers, TellsWideTextsOfOneLengthApart) {
    const auto compare = [](const std::string &a, const std::string &b) {
        return wcscmp_ncs(Widen(a).data(), Widen(b).data());
    };
    EXPECT_EQ(compare("", ""), 0);
    EXPECT_EQ(compare("aBz", "AbZ"), 0);
    EXPECT_EQ(compare("a", "B"), -1);
    EXPECT_EQ(compare("b", "A"), 1);
    EXPECT_EQ(compare("b", "AA"), -1) << "different lengths";
    EXPECT_EQ(compare(std::string(1023, 'a'), std::string(1023, 'A')), 0);
    EXPECT_EQ(compare(std::string(1024, 'a'), std::string(1024, 'a')), -1);
    const WCHAR high[] = {0x161, 0}, low[] = {'a', 0};
    EXPECT_EQ(wcscmp_ncs(high, low), 1) << "compared whole, not by bytes";
}

TEST(StringHelpers, LooksCharactersUpInSets) {
    EXPECT_TRUE(Contains_Char("text", "xyz"));
    EXPECT_FALSE(Contains_Char("text", "abc"));
    EXPECT_FALSE(Contains_Char("", "abc"));
    EXPECT_FALSE(Contains_Char("text", ""));
    EXPECT_EQ(Char_In_Set('b', "abc"), 'b');
    EXPECT_EQ(Char_In_Set('d', "abc"), 0);
    EXPECT_FALSE(CharIsNotOneOf('b', "abc"));
    EXPECT_TRUE(CharIsNotOneOf('b', ""));
    EXPECT_TRUE(CharIsNotOneOf('\0', "abc")) << "the set's terminator is none of it";
}

TEST(StringHelpers, RemovesAndWrapsInPlace) {
    const auto strip = [](const char *sub) { return [sub](char *text) { Strip_String(text, sub); }; };
    EXPECT_EQ(Changed("abcabc", strip("bc")), "aabc");
    EXPECT_EQ(Changed("abc", strip("abc")), "");
    EXPECT_EQ(Changed("abc", strip("BC")), "abc");
    char text[] = "abc";
    EXPECT_FALSE(Strip_String(text, "x"));
    EXPECT_TRUE(Strip_String(text, ""));
    EXPECT_TRUE(Strip_String(text, text + 1));
    EXPECT_STREQ(text, "a");

    EXPECT_EQ(Changed("\"a\"\"b\"", Strip_Quotes), "ab");
    EXPECT_EQ(Changed("\"\"\"", Strip_Quotes), "");
    EXPECT_EQ(Changed("&a&&b", [](char *c) { Strip_Char(c, '&'); }), "ab");
    EXPECT_EQ(Changed("ab", [](char *c) { Strip_Char(c, '\0'); }), "ab");
    EXPECT_EQ(Changed("", Quote_String, 2), "\"\"");
    EXPECT_EQ(Changed("\"a", Quote_String, 2), "\"\"a\"");
}

TEST(StringHelpers, ReplacesTheFirstOccurrenceInBothWidths) {
    const NoLeak no_leak;
    const struct {
        const char *text, *find, *replacement;
        bool replaced;
        const char *result;
    } cases[] = {
        {"a-b-c", "-", "+++", true, "a+++b-c"}, {"a-b", "a-b", "", true, ""},
        {"abc", "c", "C", true, "abC"},         {"abc", "B", "x", false, "abc"},
        {"abc", "", "x", false, "abc"},         {"", "a", "b", false, ""},
        {"a-", "-", "a-a-", true, "aa-a-"},
    };
    for (const auto &[text, find, replacement, replaced, result] : cases) {
        SCOPED_TRACE(text);
        const std::size_t room = std::strlen(replacement);
        const long sum = static_cast<long>(std::strlen(text) + std::max(std::strlen(find), room));
        bool answer = false;
        const auto replace = [&, find = find, replacement = replacement](char *place) {
            answer = Replace_String(place, find, replacement);
        };
        EXPECT_EQ(Changed(text, replace, room), result);
        EXPECT_EQ(answer, replaced);
        if (replaced) {
            EXPECT_EQ(Last_Request(), sum);
        }

        Wide wide = Widen(text, room);
        EXPECT_EQ(Replace_String(wide.data(), Widen(find).data(), Widen(replacement).data()), replaced);
        EXPECT_EQ(Narrow(wide), result);
        if (replaced) {
            EXPECT_EQ(Last_Request(), 2 * sum);
        }

        const FailingMemory failing(1);
        EXPECT_EQ(Changed(text, replace, room), text);
        EXPECT_FALSE(answer);
    }
    char own[16] = "a-b";
    EXPECT_TRUE(Replace_String(own, own + 1, own));
    EXPECT_STREQ(own, "aa-b");
}

TEST(StringHelpers, NormalisesWhiteSpaceOutsideQuotes) {
    const auto with = [](char c) { return [c](char *text) { Tokenize_Whitespace(text, c); }; };
    EXPECT_EQ(Changed("a b\t\r\nc", with('_')), "a_b__c");
    EXPECT_EQ(Changed("a \"b \t\n\r\" c", with('\0')), "a\"b \t\r\"c");
    EXPECT_EQ(Changed("\"open end ", with('\0')), "\"open end ");
    const std::string spaced = "a " + std::string(252, 'x');
    EXPECT_EQ(Changed(spaced + "  ", with('_')), "a_" + std::string(252, 'x') + "_ ");
    EXPECT_EQ(Changed(spaced + "\n  end", with('\0')), "a" + std::string(252, 'x') + "  end");
}

TEST(StringHelpers, TokenisesWithQuotesAndEmptyTokens) {
    EXPECT_EQ(smartok(nullptr, ","), nullptr);
    const struct {
        const char *text, *delimiters, *tokens;
    } cases[] = {
        {"one,,two", ",", "[one][][two]"},
        {"a,", ",", "[a][]"},
        {"", ",", "[]"},
        {",", ",", "[][]"},
        {"a;b,c", ",;", "[a][b][c]"},
        {"\"a,b\",c", ",", "[\"a,b\"][c]"},
        {"\"a,b", ",", "[\"a,b]"},
        {"a\"b", "\"", "[a\"b]"},
        {"abc", "", "[abc]"},
    };
    for (const auto &[text, delimiters, tokens] : cases) {
        EXPECT_EQ(All_Tokens(text, delimiters), tokens) << text;
    }
    char text[] = "a b;c", other[] = "x y";
    EXPECT_STREQ(smartok(text, " "), "a");
    EXPECT_STREQ(smartok(nullptr, ";"), "b") << "the delimiters may change";
    EXPECT_STREQ(smartok(other, " "), "x") << "a new text ends the old scan";
    EXPECT_STREQ(smartok(nullptr, " "), "y");
}

TEST(StringHelpers, SplitsOffTheTail) {
    const struct {
        const char *text;
        char c;
        const char *tail, *head;
    } cases[] = {
        {"c:\\dir\\file", '\\', "file", "c:\\dir"},
        {"file", '\\', "file", "file"},
        {"\\file", '\\', "\\file", "\\file"},
        {"\\a\\", '\\', "", "\\a"},
        {"", '\\', "", ""},
        {"\\", '\\', "\\", "\\"},
        {"file", '\0', "file", "file"},
    };
    for (const auto &[text, c, tail, head] : cases) {
        std::string buffer = text;
        EXPECT_STREQ(Tail_String(buffer.data(), c, true), tail);
        EXPECT_EQ(buffer, text);
        EXPECT_STREQ(Tail_String(buffer.data(), c, false), tail);
        EXPECT_STREQ(buffer.c_str(), head);
    }
}
