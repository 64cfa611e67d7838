#include <platform/user/controls/edit.h>

#include <platform/user/hands/keys.h>

#include <algorithm>

// A break of two characters counts as one.
std::size_t Edit::Before(std::size_t place) const {
    if (place == 0) return 0;
    const bool is_break = place >= 2 && text_[place - 1] == '\n' && text_[place - 2] == '\r';
    return place - (is_break ? 2 : 1);
}

std::size_t Edit::Behind(std::size_t place) const {
    if (place >= text_.size()) return text_.size();
    return place + (text_.compare(place, 2, "\r\n") == 0 ? 2 : 1);
}

std::size_t Edit::Start_Of_Line(std::size_t place) const {
    if (!Has_Lines() || place == 0) return 0;
    const std::size_t found = text_.rfind('\n', place - 1);
    return found == std::string::npos ? 0 : found + 1;
}

std::size_t Edit::End_Of_Line(std::size_t place) const {
    const std::size_t found = Has_Lines() ? text_.find('\n', place) : std::string::npos;
    if (found == std::string::npos) return text_.size();
    return found > place && text_[found - 1] == '\r' ? found - 1 : found;
}

std::size_t Edit::Up_Or_Down(UINT key) const {
    if (!Has_Lines()) return key == VK_UP ? Before(caret_) : Behind(caret_);
    const std::size_t start = Start_Of_Line(caret_), end = End_Of_Line(caret_);
    if (key == VK_UP ? start == 0 : end == text_.size()) return caret_;
    const std::size_t there = key == VK_UP ? Start_Of_Line(Before(start)) : Behind(end);
    return std::min(there + (caret_ - start), End_Of_Line(there));
}

// With Shift the selection goes along.
void Edit::Move_To(std::size_t place) {
    caret_ = place;
    if (!Is_Key_Down(VK_SHIFT)) anchor_ = place;
    Changed();
}

void Edit::Erase(std::size_t from, std::size_t to) {
    if (Is_Read_Only()) {
        MessageBeep(0);
        return;
    }
    if (First() == Last()) {
        if (from == to) return;
        anchor_ = from;
        caret_ = to;
    }
    Replace_Selection({});
}

void Edit::Type(unsigned char typed) {
    if (typed == VK_BACK) return Erase(Before(caret_), caret_);
    const bool is_break = typed == '\r' && Has_Lines();
    if (typed < 32 && !is_break) return;
    const bool refused = Is_Read_Only() || ((Style() & ES_NUMBER) && (typed < '0' || typed > '9'));
    if (refused) {
        MessageBeep(0);
        return;
    }
    // A break goes in whole or not at all.
    const std::size_t others = text_.size() - (Last() - First());
    if (is_break && limit_ < others + 2)
        Notify(EN_MAXTEXT);
    else
        Replace_Selection(is_break ? std::string("\r\n") : std::string(1, static_cast<char>(typed)));
}

bool Edit::Pass_To_Combo(UINT key) const {
    constexpr UINT Of_The_List[] = {VK_UP, VK_DOWN, VK_PRIOR, VK_NEXT, VK_F4, VK_RETURN, VK_ESCAPE};
    if (!combo_ || std::find(std::begin(Of_The_List), std::end(Of_The_List), key) == std::end(Of_The_List))
        return false;
    SendMessageA(combo_, WM_KEYDOWN, key, 0);
    return true;
}

bool Edit::Key(UINT key) {
    if (Pass_To_Combo(key)) return true;
    switch (key) {
    case VK_LEFT:
        Move_To(Before(caret_));
        return true;
    case VK_RIGHT:
        Move_To(Behind(caret_));
        return true;
    case VK_UP:
    case VK_DOWN:
        Move_To(Up_Or_Down(key));
        return true;
    case VK_HOME:
        Move_To(Start_Of_Line(caret_));
        return true;
    case VK_END:
        Move_To(End_Of_Line(caret_));
        return true;
    case VK_DELETE:
        Erase(caret_, Behind(caret_));
        return true;
    default:
        return false;
    }
}

// By the pieces that the picture shows; without memory, where the caret is.
std::size_t Edit::Place_At(LPARAM point) const {
    const POINT at = Point_Of(point);
    return Within_Memory(caret_, [&] {
        const std::string shown = Shown();
        const LONG left = Text_Place().left, width = Text_Place().right - left;
        const TextLook look = Look();
        const auto lines = Lines_Of_Text(shown, width, look);
        const auto last = static_cast<LONG>(lines.size()) - 1;
        const std::string_view line =
            lines[static_cast<std::size_t>(std::clamp<LONG>(at.y / Line_Height(), 0, last))];
        const LONG x = at.x - left - Shift_In(width, Text_Width(look.font, line), look.across);
        std::size_t behind = 0;
        while (behind < line.size() && Text_Width(look.font, line.substr(0, behind + 1)) <= x) ++behind;
        return static_cast<std::size_t>(line.data() - shown.data()) + behind;
    });
}

LRESULT Edit::Answer_Input(UINT message, WPARAM wparam, LPARAM lparam) {
    switch (message) {
    case WM_CHAR:
        Type(static_cast<unsigned char>(wparam));
        return 0;
    case WM_KEYDOWN:
        Key(wparam);
        return 0;
    case WM_LBUTTONDOWN:
        if (!Has_Focus()) SetFocus(window_);
        Move_To(Place_At(lparam));
        return 0;
    case WM_SETFOCUS:
        Changed();
        Notify(EN_SETFOCUS);
        return 0;
    case WM_KILLFOCUS:
        Changed();
        Notify(EN_KILLFOCUS);
        return 0;
    default:
        return Control::Answer(message, wparam, lparam);
    }
}
