// Strings against the C++ library's, and folding of letter case against the C library's.

#include <benchmarks/growth.h>

#include <kelmara/foundation/safe_str.h>
#include <kelmara/foundation/string_helpers.h>
#include <kelmara/foundation/token_string.h>

#include <cstring>
#include <string>
#include <strings.h>

using measure::Compare;
using measure::Hidden;
using measure::Keep;

namespace {

// Letters and digits without a period.
std::string Text(int length, char first_letter) {
    std::string text;
    unsigned long state = 12345;
    while (static_cast<int>(text.size()) < length) {
        state = state * 1103515245 + 12345;
        const unsigned long pick = state >> 16 & 31;
        text += pick < 26 ? static_cast<char>(first_letter + pick) : static_cast<char>('0' + pick - 26);
    }
    return text;
}

// What bounds it: up to 15 characters std::string has no allocation either, and knows the length that a copy
// must find; from 16 on it makes two blocks. Ours is bound by the stores, 32 bytes of text at a time.
void Make_Copy_And_Drop(int length, double limit) {
    const std::string source = Text(length, 'a');
    const char *text = source.c_str();
    const std::string what = "make, copy and drop " + std::to_string(length) + " characters";
    Compare(
        what.c_str(),
        MEASURED {
            const CSafeStr made(Hidden(text));
            const CSafeStr copied(made);
            Keep(made);
            Keep(copied);
        },
        MEASURED {
            const std::string made(Hidden(text));
            const std::string copied(made);
            Keep(made);
            Keep(copied);
        },
        limit);
}

// What bounds it: the length of both texts is needed before a byte is compared, because it decides whether
// the work is done in place or in blocks from the memory services. That is two passes over the texts in the C
// library, each a call, where strcasecmp has one pass and none; then 16 bytes of each are folded and compared
// at a time.
void Compare_Equal(int length) {
    const std::string small = Text(length, 'a'), capital = Text(length, 'A');
    const char *a = small.c_str(), *b = capital.c_str();
    const std::string what = "strcmp_ncs, equal, " + std::to_string(length) + " characters";
    Compare(
        what.c_str(), MEASURED { Keep(strcmp_ncs(Hidden(a), Hidden(b))); },
        MEASURED { Keep(strcasecmp(Hidden(a), Hidden(b))); }, 2.0);
}

// What bounds it: the same two lengths, a folded copy of both texts on the stack, and the C library's strstr
// in them, which takes most of the time; strcasestr folds byte by byte as it goes.
void Find_At_The_End(int length) {
    const std::string text = Text(length, 'a'), capital = Text(length, 'A');
    const std::string sub = capital.substr(capital.size() - 6);
    const char *a = text.c_str(), *b = sub.c_str();
    const std::string what = "strstr_ncs, 6 at the end of " + std::to_string(length) + " characters";
    Compare(
        what.c_str(), MEASURED { Keep(strstr_ncs(Hidden(a), Hidden(b))); },
        MEASURED { Keep(strcasestr(Hidden(a), Hidden(b))); }, 2.0);
}

// A text of n characters, every tenth of which is a comma.
std::string Fields(long length) {
    std::string text = Text(static_cast<int>(length), 'a');
    for (std::size_t at = 9; at < text.size(); at += 10) text[at] = ',';
    return text;
}

void Measure_Growth() {
    measure::Growth_Heading("strings");
    measure::Growth copy("copy a string of n characters", 1.1), fold("strcmp_ncs of n characters", 1.1);
    measure::Growth replace("replace n / 10 characters, each by two", 1.1);
    measure::Growth by_character("append n characters one by one", 1.2);
    measure::Growth tokens("Next_Token, all of n characters", 2.0);
    measure::Growth walk("CTokenString, all of n characters", 1.1), cut("smartok, all of n characters", 1.1);
    for (const long size : measure::Sizes(100000)) {
        const std::string text = Fields(size), capital = Text(static_cast<int>(size), 'A');
        const std::string small = Text(static_cast<int>(size), 'a');
        const CSafeStr made(text.c_str()), comma(","), two("; ");
        copy.At(size, [&] { Keep(CSafeStr(made)); });
        fold.At(size, [&] { Keep(strcmp_ncs(Hidden(small.c_str()), capital.c_str())); });
        replace.At(size, [&] {
            CSafeStr changed;
            changed.Set_Data(std::string(text.size() * 2, ' ').c_str(), static_cast<int>(text.size() * 2));
            changed = made;
            changed.Replace_String(comma, two);
            Keep(changed);
        });
        by_character.At(size, [&] {
            CSafeStr grown;
            grown.Prime_Increment();
            for (const char c : text) grown += c;
            Keep(grown);
        });
        tokens.At(size, [&] {
            CSafeStr rest(made), token;
            while (static_cast<char *>(rest)[0]) rest.Next_Token(token, ',');
            Keep(token);
        });
        std::string buffer;
        walk.At(size, [&] {
            buffer = text;
            CTokenString words(buffer.data(), ',');
            while (const char *word = words.Next_Token(0)) Keep(word);
        });
        cut.At(size, [&] {
            buffer = text;
            for (const char *word = smartok(buffer.data(), ","); word; word = smartok(nullptr, ","))
                Keep(word);
        });
    }
}

} // namespace

int main() {
    measure::Use_Plain_Memory();

    measure::Heading("strings", "std::string");
    Make_Copy_And_Drop(10, 1.5);
    Make_Copy_And_Drop(24, 0.25);
    Make_Copy_And_Drop(200, 0.25);

    measure::Heading("strings", "strcasecmp");
    Compare_Equal(20);
    Compare_Equal(200);
    measure::Heading("strings", "strcasestr");
    Find_At_The_End(20);
    Find_At_The_End(200);

    Measure_Growth();
}
