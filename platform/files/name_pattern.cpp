#include <platform/files/name_pattern.h>

#include <platform/kernel/code_page.h>

#include <vector>

namespace {

// What the signs of a pattern mean, by their surroundings. No name has these characters.
enum Sign : char {
    Anything = '*',       // any characters, or none
    Up_To_Last_Dot = '<', // the same, but not the name's last dot
    One_If_There = '>',   // one character; none in front of a dot and at the end
    Dot_Or_End = '"',
};

// How a sign stands to the rest of a name: what it may do with the character in front.
struct Step {
    bool may_pass; // it can match nothing here
    bool may_eat;  // it can match the next character
    bool stays;    // and go on matching
};

bool Is_Dot(std::string_view rest) {
    return !rest.empty() && rest[0] == '.';
}

bool Is_Last_Dot(std::string_view rest) {
    return Is_Dot(rest) && rest.find('.', 1) == std::string_view::npos;
}

Step Step_Of(char sign, std::string_view rest) {
    switch (sign) {
    case Anything:
        return {true, true, true};
    case Up_To_Last_Dot:
        return {true, !Is_Last_Dot(rest), true};
    case One_If_There:
        return {rest.empty() || Is_Dot(rest), !Is_Dot(rest), false};
    case Dot_Or_End:
        return {rest.empty(), Is_Dot(rest), false};
    default:
        return {false, Equal_Without_Case({&sign, 1}, rest.substr(0, 1)), false};
    }
}

} // namespace

// "*" before a dot reaches up to the last one, "?" is a character if there is one, and a dot before either
// may be missing. A dot at the end is no part of a name; "*" before it takes names without one.
NamePattern::NamePattern(std::string_view pattern) : signs_(pattern) {
    const bool ends_in_dot = signs_.ends_with('.');
    signs_.erase(signs_.find_last_not_of(". ") + 1);
    if (signs_ == "*.*") signs_ = "*";
    for (std::size_t i = 0; i < signs_.size(); ++i) {
        if (i > 0 && signs_[i] == '.' && signs_[i - 1] == '*') signs_[i - 1] = Up_To_Last_Dot;
        if (signs_[i] != '*' && signs_[i] != '?') continue;
        if (signs_[i] == '?') signs_[i] = One_If_There;
        if (i > 0 && signs_[i - 1] == '.') signs_[i - 1] = Dot_Or_End;
    }
    if (ends_in_dot && signs_.ends_with('*')) signs_.back() = Up_To_Last_Dot;
}

// Walks all ways through the signs at once: `at` tells which of them the name can have reached.
bool NamePattern::Matches(std::string_view name) const {
    std::vector<bool> at(signs_.size() + 1);
    at[0] = true;
    for (;; name.remove_prefix(1)) {
        std::vector<bool> next(at.size());
        for (std::size_t i = 0; i < signs_.size(); ++i) {
            if (!at[i]) continue;
            const Step step = Step_Of(signs_[i], name);
            if (step.may_pass) at[i + 1] = true;
            if (step.may_eat && !name.empty()) next[step.stays ? i : i + 1] = true;
        }
        if (name.empty()) return at.back();
        at = std::move(next);
    }
}
