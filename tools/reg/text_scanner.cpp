#include <tools/failure.h>
#include <tools/reg/text_scanner.h>

#include <algorithm>

namespace tools::reg {

namespace {

char Small(char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter + 0x20) : letter;
}

} // namespace

void Scanner::Fail(const std::string &text) const {
    throw FaultInFile(file_, std::max(line_, 1UL), text);
}

bool Scanner::Next_Line() {
    if (left_.empty()) return false;
    const std::size_t end = left_.find('\n');
    ended_ = end != std::string_view::npos;
    rest_ = left_.substr(0, end);
    left_.remove_prefix(ended_ ? end + 1 : left_.size());
    ++line_;
    if (rest_.ends_with('\r')) rest_.remove_suffix(1);
    if (rest_.find('\0') != std::string_view::npos) Fail("a zero byte: this is no registry text");
    if (rest_.find('\r') != std::string_view::npos) Fail("a carriage return inside a line");
    return true;
}

void Scanner::Skip_Blanks() {
    rest_.remove_prefix(std::min(rest_.find_first_not_of(" \t"), rest_.size()));
}

bool Scanner::Take(std::string_view word) {
    const bool here = rest_.size() >= word.size() &&
                      std::equal(word.begin(), word.end(), rest_.begin(),
                                 [](char wanted, char found) { return Small(wanted) == Small(found); });
    if (here) Skip(word.size());
    return here;
}

void Scanner::Require_Only_Comment(const char *behind) {
    Skip_Blanks();
    if (!At_End() && rest_[0] != ';') Fail(std::string("something stands behind ") + behind);
}

std::string Scanner::Quoted() {
    std::string text;
    for (Skip(1); !At_End(); Skip(1)) {
        if (rest_[0] == '"') return Skip(1), text;
        if (rest_[0] == '\\') {
            Skip(1);
            if (At_End() || (rest_[0] != '\\' && rest_[0] != '"'))
                Fail("a backslash in quotes must stand before a backslash or a quote");
        }
        text += rest_[0];
    }
    Fail("the closing quote is missing");
}

int Scanner::Digit() const {
    if (At_End()) return -1;
    const char c = Small(rest_[0]);
    return c >= '0' && c <= '9' ? c - '0' : c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
}

unsigned long Scanner::Hexadecimal() {
    unsigned long number = 0;
    unsigned digits = 0;
    for (; Digit() >= 0; ++digits, Skip(1)) number = number << 4 | static_cast<unsigned long>(Digit());
    if (digits < 1 || digits > 8) Fail("one to eight hexadecimal digits are wanted");
    return number;
}

void Scanner::Continue_Lines() {
    for (Skip_Blanks(); rest_.starts_with('\\'); Skip_Blanks()) {
        Skip(1);
        Skip_Blanks();
        if (!At_End()) Fail("a backslash among bytes must end the line");
        if (!Next_Line()) Fail("the text ends in the middle of a value");
    }
}

std::string Scanner::Bytes() {
    std::string bytes;
    Continue_Lines();
    if (At_End() || rest_[0] == ';') return bytes;
    for (;;) {
        const int high = Digit();
        if (high >= 0) Skip(1);
        const int low = Digit();
        if (high < 0 || low < 0) Fail("two hexadecimal digits are wanted for each byte");
        Skip(1);
        bytes += static_cast<char>(high << 4 | low);
        Continue_Lines();
        if (!Take(",")) return bytes;
        Continue_Lines();
    }
}

} // namespace tools::reg
