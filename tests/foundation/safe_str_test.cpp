#include <kelmara/foundation/safe_str.h>

#include <tests/foundation/guarded_text.h>
#include <tests/support/test_memory.h>

#include <climits>

namespace {

std::string Text_Of(const CSafeStr &string) {
    return static_cast<char *>(string);
}

bool Is_Inline(const CSafeStr &string) {
    return static_cast<char *>(string) == reinterpret_cast<const char *>(&string) + 12;
}

// Letters in an order that shows where a piece is missing or doubled.
std::string Letters(int count) {
    std::string text;
    for (int at = 0; at < count; ++at) text += static_cast<char>('a' + at * 7 % 26 + (at / 26) % 3);
    return text;
}

std::string Drain(CSafeStr &source, char delimiter) {
    std::string tokens;
    for (int rounds = 0; source.Length() > 0 && rounds < 100; ++rounds) {
        CSafeStr token;
        source.Next_Token(token, delimiter);
        tokens += "[" + Text_Of(token) + "]";
    }
    return tokens;
}

} // namespace

TEST(SafeStr, CopiesTextsOfEveryLengthAndReadsNothingBehindThem) {
    const NoLeak no_leak;
    for (int length : {0, 1, 15, 16, 31, 32, 33, 63, 64, 200, 480, 510, 511, 512, 513, 2000}) {
        SCOPED_TRACE(length);
        const std::string text = Letters(length);
        const GuardedText guarded(text);
        const CSafeStr made(guarded), copied(made), from_bytes(reinterpret_cast<unsigned char *>(+guarded));
        for (const CSafeStr *string : {&made, &copied, &from_bytes}) {
            EXPECT_EQ(Text_Of(*string), text);
            EXPECT_EQ(Is_Inline(*string), length <= 511);
            EXPECT_EQ(string->Length(), length);
            EXPECT_EQ(string->Max_Len(), 512);
            EXPECT_EQ(reinterpret_cast<const unsigned long *>(string)[1], 0xCAFEBABE);
        }
        const CSafeStr with_the_page_behind_it(text.c_str());
        EXPECT_EQ(Text_Of(with_the_page_behind_it), text);
    }
    EXPECT_EQ(Text_Of(CSafeStr(INT_MIN)), "-2147483648");
    EXPECT_EQ(Text_Of(CSafeStr(static_cast<const char *>(nullptr))), "");
}

TEST(SafeStr, GrowsToExactlyWhatIsNeededAndNeverBack) {
    const NoLeak no_leak;
    CSafeStr string;
    const long requests = Requests();
    string = Letters(511).c_str();
    EXPECT_EQ(Requests(), requests);
    string = Letters(512).c_str();
    EXPECT_EQ(Last_Request(), 513);
    string += "four";
    EXPECT_EQ(Last_Request(), 517);
    string = "";
    string = Letters(516).c_str();
    EXPECT_EQ(Requests(), requests + 2);
    EXPECT_FALSE(Is_Inline(string));
    EXPECT_EQ(CStrAlloc().Check_Buffer(-1, &string), 0);
    EXPECT_EQ(CStrAlloc().Check_Buffer(INT_MAX, &string), E_OUTOFMEMORY);
    EXPECT_EQ(Text_Of(string), Letters(516));
}

TEST(SafeStr, ConstructorsThrowAnIntWithoutMemory) {
    const NoLeak no_leak;
    const std::string text = Letters(512);
    const CSafeStr long_string(text.c_str());
    const FailingMemory failing(1, true);
    EXPECT_THROW(CSafeStr{text.c_str()}, int);
    EXPECT_THROW(CSafeStr{reinterpret_cast<const unsigned char *>(text.c_str())}, int);
    try {
        const CSafeStr copy(long_string);
        FAIL() << "made without memory";
    } catch (int thrown) {
        EXPECT_EQ(thrown, -1);
    }
}

TEST(SafeStr, EverythingElseThrowsALongAndKeepsTheText) {
    const NoLeak no_leak;
    using Change = void (*)(CSafeStr &);
    static const std::string longer = Letters(1000);
    const Change changes[] = {
        [](CSafeStr &string) { string = longer.c_str(); },
        [](CSafeStr &string) { string += longer.c_str(); },
        [](CSafeStr &string) { string += string; },
        [](CSafeStr &string) { string += 12; },
        [](CSafeStr &string) { string += 'c'; },
        [](CSafeStr &string) { string.Set_Data(longer.data(), 1000); },
        [](CSafeStr &string) { string.Quote_Wrap(); },
    };
    for (int length : {511, 600}) { // inside the object, and in a block that must grow
        for (const Change &change : changes) {
            CSafeStr string(Letters(length).c_str());
            string.Prime_Increment();
            {
                const FailingMemory failing(1);
                try {
                    change(string);
                    ADD_FAILURE() << "change " << &change - changes << " made without memory";
                } catch (long thrown) {
                    EXPECT_EQ(thrown, E_OUTOFMEMORY);
                }
            }
            EXPECT_EQ(Text_Of(string), Letters(length));
            change(string);
            EXPECT_GT(string.Length(), length);
        }
    }
}

TEST(SafeStr, CursorMovesWithTheText) {
    const NoLeak no_leak;
    CSafeStr string("ab");
    string.Prime_Increment();
    for (char c : Letters(1000)) string += c;
    EXPECT_EQ(Text_Of(string), "ab" + Letters(1000));
    EXPECT_EQ(Last_Request(), 1003);

    CSafeStr moved("abc");
    moved.Prime_Increment();
    moved += Letters(600).c_str();
    moved += 'X'; // the Cursor is out of date: the text ends behind it
    EXPECT_EQ(Text_Of(moved), "abcX");

    CSafeStr unprimed("abc");
    unprimed += 'd';
    for (int i = 0; i < 600; ++i) unprimed += '\0';
    EXPECT_EQ(Text_Of(unprimed), "abcd");
    CSafeStr copied(unprimed);
    copied += 'e';
    EXPECT_EQ(Text_Of(copied), "abcde") << "a copy has no Cursor yet";
}

TEST(SafeStr, TakesItselfAndPiecesOfItselfAsArguments) {
    const NoLeak no_leak;
    for (int length : {5, 300, 511, 700}) {
        SCOPED_TRACE(length);
        const std::string text = Letters(length);
        CSafeStr string(text.c_str());
        string = string;
        EXPECT_EQ(Text_Of(string), text);
        string += string;
        EXPECT_EQ(Text_Of(string), text + text);
        string += static_cast<char *>(string) + length + 2;
        EXPECT_EQ(Text_Of(string), text + text + text.substr(2));
        string = static_cast<char *>(string) + 2 * length;
        EXPECT_EQ(Text_Of(string), text.substr(2));
        string.Set_Data(static_cast<char *>(string) + 1, 2);
        EXPECT_EQ(Text_Of(string), text.substr(3, 2));
    }
}

TEST(SafeStr, ChangesAConstString) {
    const CSafeStr string("a");
    string = "b";
    string += "c";
    string += CSafeStr("d");
    string += 5;
    EXPECT_EQ(Text_Of(string), "bcd5");
    string = -7;
    EXPECT_EQ(Text_Of(string), "-7");
    CSafeStr other("x"); // where a number and a character are told apart
    other += 5;
    other += '6';
    other += string;
    EXPECT_EQ(Text_Of(other), "x56-7");
}

TEST(SafeStr, ComparesBytesAsUnsignedValuesInThreeWays) {
    const struct {
        const char *a, *b;
        int order;
    } cases[] = {{"", "", 0},    {"a", "a", 0},  {"a", "b", -1},         {"b", "a", 1},    {"a", "ab", -1},
                 {"ab", "a", 1}, {"A", "a", -1}, {"a\x7F", "a\x80", -1}, {"\xFF", "a", 1}, {"", nullptr, 0}};
    for (const auto &[a, b, order] : cases) {
        SCOPED_TRACE(a);
        const CSafeStr string(a), other(b);
        std::string buffer = b ? b : "";
        const auto *bytes = reinterpret_cast<const unsigned char *>(b);
        EXPECT_EQ(string != b, order);
        EXPECT_EQ(string != bytes, order);
        EXPECT_EQ(string != buffer.data(), order);
        EXPECT_EQ(string != other, order);
        EXPECT_EQ(string == b, order == 0);
        EXPECT_EQ(string == bytes, order == 0);
        EXPECT_EQ(string == buffer.data(), order == 0);
        EXPECT_EQ(string == other, order == 0);
    }
    EXPECT_EQ(CSafeStr("5") == 5, 1);
    EXPECT_EQ(CSafeStr("05") == 5, 0);
    EXPECT_EQ(CSafeStr("05") != 5, -1);
}

TEST(SafeStr, ChangesItsTextInPlace) {
    CSafeStr string("a\0b");
    string.Set_Data("a\0b\0c", 5);
    EXPECT_EQ(std::memcmp(static_cast<char *>(string), "a\0b\0c\0", 6), 0);
    EXPECT_EQ(string.Length(), 1);
    string.Set_Data("abc", -1);
    EXPECT_EQ(string.Length(), 0);

    string = "az{`AZ\xE0";
    string.Upper();
    EXPECT_EQ(Text_Of(string), "AZ{`AZ\xE0");
    for (int count : {0, -1, 8, INT_MAX}) string.Shift_Chars(count);
    string.Shift_Chars(2);
    EXPECT_EQ(Text_Of(string), "{`AZ\xE0");
    string.Shift_Chars(5);
    EXPECT_EQ(Text_Of(string), "");

    EXPECT_EQ(CSafeStr("ABCDE").Get_Char_Code(), 0x41424344);
    EXPECT_EQ(CSafeStr("\xFF\x80").Get_Char_Code(), static_cast<long>(0xFF800000u));

    string.Quote_Wrap();
    EXPECT_EQ(Text_Of(string), "\"\"");
    string = "\"open";
    string.Quote_Wrap();
    EXPECT_EQ(Text_Of(string), "\"open");
    CSafeStr full(Letters(511).c_str());
    full.Quote_Wrap();
    EXPECT_EQ(Text_Of(full), "\"" + Letters(511) + "\"");
}

TEST(SafeStr, GivesTokensUntilItIsEmpty) {
    const NoLeak no_leak;
    const struct {
        std::string text, tokens;
    } cases[] = {
        {"", ""},
        {"one", "[one]"},
        {"one,,two,", "[one][][two]"},
        {Letters(511) + ",b", "[" + Letters(511) + "][b]"},
        {Letters(512) + ",b", "[" + Letters(512) + "][][b]"}, // a delimiter at index 512 stays for the next
        {Letters(513) + ",b", "[" + Letters(513) + "][b]"},
        {Letters(512), "[" + Letters(512) + "]"},
    };
    for (const auto &[text, tokens] : cases) {
        CSafeStr string(text.c_str());
        EXPECT_EQ(Drain(string, ','), tokens) << text;
    }
    CSafeStr string("abc"), token;
    string.Next_Token(token, '\0');
    EXPECT_EQ(Text_Of(token), "abc");
    token += 'd';
    EXPECT_EQ(Text_Of(token), "abcd") << "a token is primed";
    token.Next_Token(token, 'b');
    EXPECT_EQ(Text_Of(token), "");

    CSafeStr source((Letters(600) + ",b").c_str());
    const FailingMemory failing(1);
    EXPECT_THROW(source.Next_Token(token, ','), long);
    EXPECT_EQ(Text_Of(source), Letters(600) + ",b");
}

TEST(SafeStr, FindsMarkedWords) {
    const struct {
        const char *text;
        int index;
        char marker;
        bool found;
        const char *token;
    } cases[] = {{"^ONE and ^TWO", 0, '^', true, "^ONE"},
                 {"^ONE and ^TWO", 1, '^', true, "^TWO"},
                 {"^ONE and ^TWO", 2, '^', false, ""},
                 {"^ONE", -3, '^', true, "^ONE"},
                 {"a^b.c^d\te", 0, '^', true, "^b.c^d"},
                 {"a^b.c^d\te", 1, '^', true, "^d"},
                 {"lone ^", 0, '^', true, "^"},
                 {"x^a\r\n", 0, '^', true, "^a"},
                 {"", 0, '^', false, ""},
                 {"text", 0, '\0', false, ""}};
    for (const auto &[text, index, marker, found, word] : cases) {
        CSafeStr string(text), token("old");
        EXPECT_EQ(string.Get_Next_Insert_Token(token, index, marker), found) << text << index;
        EXPECT_EQ(Text_Of(token), word);
        EXPECT_EQ(Text_Of(string), text);
    }
}

TEST(SafeStr, ReplacesEveryOccurrenceAndComesToAnEnd) {
    const struct {
        std::string text, find, replacement, result;
    } cases[] = {
        {"a-b-c", "-", "+", "a+b+c"},
        {"a-b-c", "-", "", "abc"},
        {"nothing", "-", "+", "nothing"},
        {"aaabbb", "ab", "", ""}, // searched again from the start each time
        {"caab", "ab", "b", "cb"},
        {"a-b", "", "+", "a-b"},
        {"a-b-c", "-", "--", "a--b--c"}, // holds what is searched for: once each
        {"a-b", "-", "-", "a-b"},
        {Letters(510) + "-", "-", "12", Letters(510) + "-"}, // 512 characters would not fit
        {Letters(509) + "-", "-", "12", Letters(509) + "12"},
        {"-" + Letters(2000) + "-", "-", "", Letters(2000)},
        {std::string(511, '-'), "-", std::string(400, '+'), std::string(511, '-')},
    };
    for (const auto &[text, find, replacement, result] : cases) {
        CSafeStr string(text.c_str());
        string.Replace_String(CSafeStr(find.c_str()), CSafeStr(replacement.c_str()));
        EXPECT_EQ(Text_Of(string), result);
    }
    CSafeStr endless("abb"); // brings itself back in other ways than by holding what is searched for
    endless.Replace_String(CSafeStr("ab"), CSafeStr("bbaa"));
    EXPECT_LE(endless.Length(), 511);

    CSafeStr padded(Letters(400).c_str());
    padded.Replace_String(CSafeStr(Letters(400).c_str()), CSafeStr("x"));
    EXPECT_EQ(std::string(static_cast<char *>(padded) + 1, 511), std::string(511, '\0'));

    CSafeStr own("ab"), plus("+"), dash("-");
    own.Replace_String(plus, own);
    own.Replace_String(own, plus);
    EXPECT_EQ(Text_Of(own), "+");
    dash = "1-2-3";
    dash.Replace_String(CSafeStr("-"), dash);
    EXPECT_EQ(Text_Of(dash), "11-2-321-2-33");
}

TEST(SafeStr, GivesItsOwnMemoryBackWhenItCannotBeMade) {
    const NoLeak no_leak;
    const std::string text = Letters(600);
    delete static_cast<CAutoDeleteableObject *>(new CSafeStr(text.c_str()));
    {
        const FailingMemory failing(1);
        EXPECT_EQ(new CSafeStr(text.c_str()), nullptr);
    }
    const FailingMemory failing(2);
    EXPECT_THROW(new CSafeStr(text.c_str()), int);
}
