// Strings against the C++ library's, and folding of letter case against the C library's.

#include <benchmarks/measure.h>

#include <kelmara/foundation/safe_str.h>
#include <kelmara/foundation/string_helpers.h>

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

} // namespace

int main() {
    measure::Use_Plain_Memory();

    measure::Heading("CSafeStr against std::string");
    Make_Copy_And_Drop(10, 1.5);
    Make_Copy_And_Drop(24, 0.25);
    Make_Copy_And_Drop(200, 0.25);

    measure::Heading("letter case against the C library");
    Compare_Equal(20);
    Compare_Equal(200);
    Find_At_The_End(20);
    Find_At_The_End(200);
}
