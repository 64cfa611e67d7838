#include <platform/user/controls/list_box.h>

#include <algorithm>
#include <cstring>

namespace {

const BuiltInClass list_class("ListBox", Control_Procedure<ListBox>);
const BuiltInClass combo_list_class("ComboLBox", Control_Procedure<ListBox>);

const char *As_Text(LPARAM lparam) {
    return lparam ? reinterpret_cast<const char *>(lparam) : "";
}

} // namespace

LRESULT ListBox::Insert(int index, const char *text) {
    if (index == -1) index = lines_.Count();
    if (index < 0 || index > lines_.Count()) return LB_ERR;
    const long error = Code_Of([&]() -> long {
        lines_.Insert(index, text);
        return NO_ERROR;
    });
    if (!Succeed_Or_Tell(error)) return LB_ERRSPACE;
    Changed();
    return index;
}

LRESULT ListBox::Add(const char *text) {
    return Insert((Style() & LBS_SORT) ? lines_.Sorted_Place(text) : lines_.Count(), text);
}

LRESULT ListBox::Remove(int index) {
    if (!lines_.Has(index)) return LB_ERR;
    lines_.Remove(index);
    Keep_Room_Filled();
    Changed();
    return lines_.Count();
}

// -1 takes the choice away, and that counts as a failure.
LRESULT ListBox::Choose(int index) {
    if (index != -1 && !lines_.Has(index)) return LB_ERR;
    lines_.chosen = index;
    if (index != -1) Scroll_To(index);
    Changed();
    return index;
}

LRESULT ListBox::Give_Text(int index, char *out) const {
    if (!lines_.Has(index) || !out) return LB_ERR;
    const std::string &text = lines_.At(index).text;
    std::memcpy(out, text.c_str(), text.size() + 1);
    return static_cast<LRESULT>(text.size());
}

LRESULT ListBox::Select_String(int after, const char *text) {
    const int found = lines_.Find(after, text, ListLines::Match::Beginning);
    return found == -1 ? LB_ERR : Choose(found);
}

LRESULT ListBox::Give_Rectangle(int index, RECT *out) const {
    if (!lines_.Has(index) || !out) return LB_ERR;
    const LONG top = (index - top_) * Line_Height();
    *out = {0, top, Client().right, top + Line_Height()};
    return LB_OKAY;
}

int ListBox::Lines_Shown() const {
    return std::max(static_cast<int>(Client().bottom / Line_Height()), 1);
}

void ListBox::Scroll_To(int index) {
    if (index < top_) top_ = index;
    if (index >= top_ + Lines_Shown()) top_ = index - Lines_Shown() + 1;
}

// No line is hidden above while there is room for it below.
void ListBox::Keep_Room_Filled() {
    top_ = std::clamp(top_, 0, std::max(lines_.Count() - Lines_Shown(), 0));
}

LRESULT ListBox::Answer_About_Lines(UINT message, WPARAM wparam, LPARAM lparam) {
    const int index = static_cast<int>(wparam);
    switch (message) {
    case LB_ADDSTRING:
        return Add(As_Text(lparam));
    case LB_INSERTSTRING:
        return Insert(index, As_Text(lparam));
    case LB_DELETESTRING:
        return Remove(index);
    case LB_RESETCONTENT:
        lines_.Clear();
        top_ = 0;
        Changed();
        return 0;
    case LB_SETCURSEL:
        return Choose(index);
    case LB_GETCURSEL:
        return lines_.chosen;
    case LB_GETSEL:
        return lines_.Has(index) ? LRESULT{index == lines_.chosen} : LB_ERR;
    case LB_GETTEXT:
        return Give_Text(index, reinterpret_cast<char *>(lparam));
    case LB_GETTEXTLEN:
        return lines_.Has(index) ? static_cast<LRESULT>(lines_.At(index).text.size()) : LB_ERR;
    case LB_GETCOUNT:
        return lines_.Count();
    case LB_SELECTSTRING:
        return Select_String(index, As_Text(lparam));
    case LB_FINDSTRING:
        return lines_.Find(index, As_Text(lparam), ListLines::Match::Beginning);
    case LB_FINDSTRINGEXACT:
        return lines_.Find(index, As_Text(lparam), ListLines::Match::Whole);
    case LB_GETITEMDATA:
        return lines_.Has(index) ? lines_.At(index).data : LB_ERR;
    case LB_SETITEMDATA:
        if (!lines_.Has(index)) return LB_ERR;
        lines_.At(index).data = lparam;
        return LB_OKAY;
    case LB_GETTOPINDEX:
        return top_;
    case LB_SETTOPINDEX:
        if (!lines_.Has(index)) return LB_ERR;
        top_ = index;
        Keep_Room_Filled();
        Changed();
        return LB_OKAY;
    case LB_GETITEMHEIGHT:
        return Line_Height();
    default: // LB_GETITEMRECT
        return Give_Rectangle(index, reinterpret_cast<RECT *>(lparam));
    }
}

LRESULT ListBox::Answer(UINT message, WPARAM wparam, LPARAM lparam) {
    constexpr UINT About_Lines[] = {LB_ADDSTRING,     LB_INSERTSTRING, LB_DELETESTRING,   LB_RESETCONTENT,
                                    LB_SETCURSEL,     LB_GETSEL,       LB_GETCURSEL,      LB_GETTEXT,
                                    LB_GETTEXTLEN,    LB_GETCOUNT,     LB_SELECTSTRING,   LB_FINDSTRING,
                                    LB_GETITEMDATA,   LB_SETITEMDATA,  LB_GETTOPINDEX,    LB_SETTOPINDEX,
                                    LB_GETITEMHEIGHT, LB_GETITEMRECT,  LB_FINDSTRINGEXACT};
    if (std::find(std::begin(About_Lines), std::end(About_Lines), message) != std::end(About_Lines))
        return Answer_About_Lines(message, wparam, lparam);
    return Answer_Input(message, wparam, lparam);
}
