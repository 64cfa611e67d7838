#include <platform/user/controls/list_lines.h>

#include <platform/kernel/code_page.h>

#include <algorithm>

namespace {

bool Comes_Before(std::string_view left, std::string_view right) {
    const auto before = [](char a, char b) {
        return Upper_Ansi(static_cast<unsigned char>(a)) < Upper_Ansi(static_cast<unsigned char>(b));
    };
    return std::lexicographical_compare(left.begin(), left.end(), right.begin(), right.end(), before);
}

} // namespace

void ListLines::Insert(int index, const char *text) {
    Line line{text, 0};
    lines_.insert(lines_.begin() + index, std::move(line));
    if (chosen >= index) ++chosen;
}

void ListLines::Remove(int index) {
    lines_.erase(lines_.begin() + index);
    if (chosen == index)
        chosen = -1;
    else if (chosen > index)
        --chosen;
}

void ListLines::Clear() {
    lines_.clear();
    chosen = -1;
}

int ListLines::Sorted_Place(std::string_view text) const {
    const auto place =
        std::upper_bound(lines_.begin(), lines_.end(), text, [](std::string_view wanted, const Line &line) {
            return Comes_Before(wanted, line.text);
        });
    return static_cast<int>(place - lines_.begin());
}

int ListLines::Find(int after, std::string_view text, Match match) const {
    const int first = Has(after) ? after + 1 : 0;
    for (int i = 0; i < Count(); ++i) {
        const int index = (first + i) % Count();
        std::string_view line = At(index).text;
        if (match == Match::Beginning) line = line.substr(0, text.size());
        if (Equal_Without_Case(line, text)) return index;
    }
    return -1;
}
