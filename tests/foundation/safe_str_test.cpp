#include <kelmara/foundation/safe_str.h>

#include <tests/foundation/guarded_text.h>
#include <tests/support/test_memory.h>

#include <climits>

namespace {

std::string Text_Of(const CSafeStr &string) {
    return static_cast<char *>(string);
}

bool Is_Inline(const CSafeStr &string) {
    return static_cast<long>(string) == reinterpret_cast<long>(&string) + 12;
}

// In an order that shows where a piece is missing or doubled.
std::string Letters(int count) {
    std::string text;
    for (int at = 0; at < count; ++at) text += static_cast<char>('a' + at * 7 % 26 + at / 26 % 3);
    return text;
}

} // namespace

TEST(SafeStr, CopiesTextsOfEveryLengthAndGrowsToWhatIsNeeded) {
    const NoLeak no_leak;
    for (int length : {0, 1, 32, 33, 200, 511, 512, 513, 2000}) {
        SCOPED_TRACE(length);
        const std::string text = Letters(length);
        const GuardedText guarded(text);
        const CSafeStr made(guarded), copied(made),
            unsigned_too(reinterpret_cast<const unsigned char *>(text.c_str()));
        for (const CSafeStr *string : {&made, &copied, &unsigned_too}) {
            EXPECT_EQ(Text_Of(*string), text);
            EXPECT_EQ(Is_Inline(*string), length <= 511);
            EXPECT_EQ(string->Length(), length);
            EXPECT_EQ((*string)[length], '\0');
            EXPECT_EQ(static_cast<void *>(*string), static_cast<char *>(*string));
            EXPECT_EQ(reinterpret_cast<const unsigned long *>(string)[1], 0xCAFEBABE);
        }
    }
    EXPECT_EQ(Text_Of(CSafeStr(static_cast<const char *>(nullptr))), "");

    CSafeStr string; // grows to exactly what is needed, and never back
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
    EXPECT_EQ(string.Max_Len(), 512);
}

TEST(SafeStr, ConstructorsThrowAnIntAndEverythingElseALong) {
    const NoLeak no_leak;
    static const std::string longer = Letters(1000);
    const std::string text = Letters(512);
    const CSafeStr full(text.c_str());
    {
        const FailingMemory failing(1, true);
        EXPECT_THROW(CSafeStr{text.c_str()}, int);
        EXPECT_THROW(CSafeStr{full}, int);
        EXPECT_EQ(new CSafeStr(full), nullptr);
    }
    {
        const FailingMemory failing(2); // there is memory for the object, but not for its text
        EXPECT_THROW(new CSafeStr(full), int);
    }
    void (*const changes[])(CSafeStr &) = {
        [](CSafeStr &string) { string = longer.c_str(); },
        [](CSafeStr &string) { string += longer.c_str(); },
        [](CSafeStr &string) { string += 12; },
        [](CSafeStr &string) { string += 'c'; },
        [](CSafeStr &string) { string.Set_Data(longer.data(), 1000); },
        [](CSafeStr &string) { string.Quote_Wrap(); },
    };
    for (int length : {511, 600}) { // inside the object, and in a block that must grow
        for (const auto &change : changes) {
            CSafeStr string(Letters(length).c_str());
            string.Prime_Increment();
            {
                const FailingMemory failing(1);
                EXPECT_THROW(change(string), long) << &change - changes;
            }
            EXPECT_EQ(Text_Of(string), Letters(length));
            change(string);
            EXPECT_GT(string.Length(), length);
        }
    }
}

TEST(SafeStr, CursorMovesWithTheText) {
    const NoLeak no_leak;
    CSafeStr string("ab"), unprimed("abc");
    string.Prime_Increment();
    for (char c : Letters(1000)) string += c;
    EXPECT_EQ(Text_Of(string), "ab" + Letters(1000));
    EXPECT_EQ(Last_Request(), 1003);
    unprimed += 'd';
    for (int i = 0; i < 600; ++i) unprimed += '\0'; // which the Cursor passes and the text's length does not
    EXPECT_EQ(Text_Of(unprimed), "abcd");
}

TEST(SafeStr, TakesItselfAndPiecesOfItself) {
    const NoLeak no_leak;
    for (int length : {5, 300, 511, 700}) {
        const std::string text = Letters(length);
        CSafeStr string(text.c_str());
        string = string;
        string += string;
        string += static_cast<char *>(string) + length + 2;
        EXPECT_EQ(Text_Of(string), text + text + text.substr(2));
        string = static_cast<char *>(string) + 2 * length;
        EXPECT_EQ(Text_Of(string), text.substr(2));
        string.Set_Data(static_cast<char *>(string) + 1, 2);
        EXPECT_EQ(Text_Of(string), text.substr(3, 2));
    }
    CSafeStr own("1-2-3"), plus("+"), token("a,b");
    own.Replace_String(CSafeStr("-"), own);
    EXPECT_EQ(Text_Of(own), "11-2-321-2-33");
    own.Replace_String(own, plus);
    EXPECT_EQ(Text_Of(own), "+");
    token.Next_Token(token, ',');
    EXPECT_EQ(Text_Of(token), "");
}

TEST(SafeStr, ComparesBytesAsUnsignedValuesInThreeWays) {
    const std::tuple<const char *, const char *, int> cases[] = {
        {"", "", 0},    {"a", "b", -1}, {"b", "a", 1},          {"a", "ab", -1},
        {"ab", "a", 1}, {"A", "a", -1}, {"a\x7F", "a\x80", -1}, {"", nullptr, 0}};
    for (const auto &[a, b, order] : cases) {
        SCOPED_TRACE(a);
        const CSafeStr string(a), other(b);
        EXPECT_EQ(string != b, order);
        EXPECT_EQ(string != static_cast<unsigned char *>(other), order); // a buffer
        EXPECT_EQ(string != other, order);
        EXPECT_EQ(string == b, order == 0);
        EXPECT_EQ(string == static_cast<unsigned char *>(other), order == 0);
        EXPECT_EQ(string == other, order == 0);
    }
    EXPECT_EQ(CSafeStr("5") == 5, 1);
    EXPECT_EQ(CSafeStr("05") == 5, 0);
    EXPECT_EQ(CSafeStr("05") != 5, -1);
}

TEST(SafeStr, ChangesItsTextInPlace) {
    const CSafeStr constant("a");
    constant = reinterpret_cast<const unsigned char *>("b");
    constant += "c";
    constant += CSafeStr("d");
    constant += 5;
    CSafeStr other(INT_MIN); // where a number and a character are told apart
    other += 5;
    other += '6';
    other += constant;
    EXPECT_EQ(Text_Of(other), "-214748364856bcd5");
    CSafeStr string;
    string.Set_Data("a\0b\0c", 5);
    EXPECT_EQ(std::memcmp(static_cast<char *>(string), "a\0b\0c\0", 6), 0);
    string.Set_Data("abc", -1);
    EXPECT_EQ(string.Length(), 0);
    string = "az{`AZ\xE0";
    string.Upper();
    for (int count : {0, -1, 8, INT_MAX}) string.Shift_Chars(count);
    EXPECT_EQ(Text_Of(string), "AZ{`AZ\xE0");
    string.Shift_Chars(2);
    EXPECT_EQ(Text_Of(string), "{`AZ\xE0");
    string.Shift_Chars(5);
    string.Quote_Wrap();
    string.Quote_Wrap();
    EXPECT_EQ(Text_Of(string), "\"\"");
    string = Letters(510).c_str();
    string.Quote_Wrap();
    EXPECT_EQ(Last_Request(), 513) << "the quotes, and their end no longer fits";
    EXPECT_EQ(CSafeStr("ABCDE").Get_Char_Code(), 0x41424344);
    EXPECT_EQ(CSafeStr("\xFF\x80").Get_Char_Code(), static_cast<long>(0xFF800000u));
}

TEST(SafeStr, GivesTokensUntilItIsEmptyAndFindsMarkedWords) {
    const std::pair<std::string, std::string> texts[] = {
        {"", ""},
        {"one,,two,", "[one][][two]"},
        {Letters(511) + ",b", "[" + Letters(511) + "][b]"},
        {Letters(512), "[" + Letters(512) + "]"},
        {Letters(512) + ",b", "[" + Letters(512) + "][][b]"}, // the delimiter stays
        {Letters(513) + ",b", "[" + Letters(513) + "][b]"}};
    for (const auto &[text, expected] : texts) {
        CSafeStr source(text.c_str()), token;
        std::string tokens;
        while (source.Length() > 0 && tokens.size() < 999) {
            source.Next_Token(token, ',');
            tokens += "[" + Text_Of(token) + "]";
        }
        EXPECT_EQ(tokens, expected);
    }

    const std::tuple<const char *, int, char, const char *> words[] = {
        {"^ONE and ^TWO", 0, '^', "^ONE"},  {"^ONE and ^TWO", 1, '^', "^TWO"},
        {"^ONE and ^TWO", 2, '^', nullptr}, {"a^b.c^d\te", -3, '^', "^b.c^d"},
        {"a^b.c^d\te", 1, '^', "^d"},       {"^a\r ^", 1, '^', "^"},
        {"text", 0, '\0', nullptr}};
    for (const auto &[text, index, marker, word] : words) {
        CSafeStr token("old");
        EXPECT_EQ(CSafeStr(text).Get_Next_Insert_Token(token, index, marker), word != nullptr) << text;
        EXPECT_EQ(Text_Of(token), word ? word : "") << text;
    }
}

TEST(SafeStr, ReplacesEveryOccurrenceAndComesToAnEnd) {
    const std::tuple<std::string, std::string, std::string, std::string> cases[] = {
        {"aaabbb", "ab", "", ""},
        {"a-b", "", "+", "a-b"},
        {"a-b-c", "-", "--", "a--b--c"},
        {Letters(509) + "-", "-", "12", Letters(509) + "12"},
        {Letters(510) + "-", "-", "12", Letters(510) + "-"},
        {"-" + Letters(2000) + "-", "-", "", Letters(2000)}};
    for (const auto &[text, find, replacement, result] : cases) {
        CSafeStr string(text.c_str());
        string.Replace_String(CSafeStr(find.c_str()), CSafeStr(replacement.c_str()));
        EXPECT_EQ(Text_Of(string), result);
    }
    CSafeStr endless("abb");
    endless.Replace_String(CSafeStr("ab"), CSafeStr("bbaa")); // brings itself back
    EXPECT_LE(endless.Length(), 511);
}
