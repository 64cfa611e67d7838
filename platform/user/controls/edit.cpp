#include <platform/user/controls/edit.h>

#include <platform/kernel/code_page.h>

#include <algorithm>
#include <cstring>

namespace {

const BuiltInClass edit_class("Edit", Control_Procedure<Edit>);

// Whose result is the letters of the style's case.
void Change_Case(std::string &text, DWORD style) {
    if (style & ES_UPPERCASE) {
        for (char &each : text) each = static_cast<char>(Upper_Ansi(static_cast<unsigned char>(each)));
    } else if (style & ES_LOWERCASE) {
        for (char &each : text) each = static_cast<char>(Lower_Ansi(static_cast<unsigned char>(each)));
    }
}

} // namespace

bool Edit::Keep(const char *text) {
    return Within_Memory(false, [&] {
        std::string kept = text ? text : "";
        Change_Case(kept, Style());
        text_ = std::move(kept);
        anchor_ = caret_ = 0;
        modified_ = false;
        return true;
    });
}

LRESULT Edit::Set_Text(const char *text) {
    if (!Keep(text)) {
        Notify(EN_ERRSPACE);
        return FALSE;
    }
    Changed();
    if (!Has_Lines()) Tell_Of_Change();
    return TRUE;
}

LRESULT Edit::Give_Text(WPARAM size, char *out) const {
    if (size == 0 || !out) return 0;
    const std::size_t length = std::min<std::size_t>(text_.size(), size - 1);
    std::memcpy(out, text_.data(), length);
    out[length] = 0;
    return static_cast<LRESULT>(length);
}

LRESULT Edit::Give_Selection(DWORD *start, DWORD *end) const {
    if (start) *start = First();
    if (end) *end = Last();
    if (Last() > 0xFFFF) return -1;
    return static_cast<LRESULT>(First() | Last() << 16);
}

// A start of -1 takes the selection away; an end of -1 is the text's.
void Edit::Select(LONG start, LONG end) {
    const auto within = [this](LONG place) {
        return place < 0 ? text_.size()
                         : std::min<std::size_t>(static_cast<std::size_t>(place), text_.size());
    };
    if (start == -1) {
        anchor_ = caret_;
    } else {
        anchor_ = within(start);
        caret_ = within(end);
    }
    Changed();
}

bool Edit::Tell_Of_Change() {
    return Notify(EN_UPDATE) && Notify(EN_CHANGE);
}

// What goes beyond the limit is left out. False when the window has gone.
bool Edit::Replace_Selection(std::string text) {
    const std::size_t others = text_.size() - (Last() - First());
    const std::size_t room = limit_ > others ? limit_ - others : 0;
    const bool cut = text.size() > room;
    if (cut) text.resize(room);
    if (!text.empty() || First() != Last()) {
        Change_Case(text, Style());
        const long error = Code_Of([&]() -> long {
            text_.replace(First(), Last() - First(), text);
            return NO_ERROR;
        });
        if (!Succeed_Or_Tell(error)) return Notify(EN_ERRSPACE);
        anchor_ = caret_ = First() + text.size();
        modified_ = true;
        Changed();
        if (!Tell_Of_Change()) return false;
    }
    return !cut || Notify(EN_MAXTEXT);
}

void Edit::Set_Read_Only(bool read_only) {
    const DWORD style = read_only ? Style() | ES_READONLY : Style() & ~ES_READONLY;
    SetWindowLongA(window_, GWL_STYLE, static_cast<LONG>(style));
    Changed();
}

// Of several lines Tab leads out and Enter is the dialog's, unless ES_WANTRETURN says otherwise. While a
// combo box's list is down, Enter and Esc close it.
LRESULT Edit::Dialog_Code(const MSG *message) const {
    LRESULT code = DLGC_HASSETSEL | DLGC_WANTCHARS | DLGC_WANTARROWS;
    if (!message) return Has_Lines() ? code | DLGC_WANTALLKEYS : code;
    const bool enter = message->wParam == VK_RETURN, escape = message->wParam == VK_ESCAPE;
    if (Has_Lines() && enter && (Style() & ES_WANTRETURN)) code |= DLGC_WANTMESSAGE;
    if (combo_ && (enter || escape) && SendMessageA(combo_, CB_GETDROPPEDSTATE, 0, 0))
        code |= DLGC_WANTMESSAGE;
    return code;
}

LRESULT Edit::Answer_About_Text(UINT message, WPARAM wparam, LPARAM lparam) {
    const auto text = reinterpret_cast<const char *>(lparam);
    switch (message) {
    case WM_NCCREATE:
        return lparam && Keep(reinterpret_cast<const CREATESTRUCTA *>(lparam)->lpszName);
    case WM_SETTEXT:
        return Set_Text(text);
    case WM_GETTEXT:
        return Give_Text(wparam, reinterpret_cast<char *>(lparam));
    case WM_GETTEXTLENGTH:
        return static_cast<LRESULT>(text_.size());
    case EM_GETSEL:
        return Give_Selection(reinterpret_cast<DWORD *>(wparam), reinterpret_cast<DWORD *>(lparam));
    case EM_SETSEL:
        Select(static_cast<LONG>(wparam), lparam);
        return 1;
    case EM_REPLACESEL: {
        std::string inserted;
        if (Within_Memory(false, [&] { return inserted = text ? text : "", true; }))
            Replace_Selection(std::move(inserted));
        else
            Notify(EN_ERRSPACE);
        return 1;
    }
    case EM_LIMITTEXT:
        limit_ = wparam ? std::min<std::size_t>(wparam, No_Limit) : No_Limit;
        return 1;
    case EM_GETLIMITTEXT:
        return static_cast<LRESULT>(limit_);
    case EM_GETMODIFY:
        return modified_;
    case EM_SETMODIFY:
        modified_ = wparam != 0;
        return 0;
    case EM_SETREADONLY:
        Set_Read_Only(wparam != 0);
        return 1;
    case EM_GETLINECOUNT:
        return Has_Lines() ? 1 + static_cast<LRESULT>(std::count(text_.begin(), text_.end(), '\n')) : 1;
    default: // WM_GETDLGCODE
        return Dialog_Code(reinterpret_cast<const MSG *>(lparam));
    }
}

LRESULT Edit::Answer(UINT message, WPARAM wparam, LPARAM lparam) {
    constexpr UINT About_Text[] = {WM_NCCREATE,     WM_SETTEXT,   WM_GETTEXT,    WM_GETTEXTLENGTH,
                                   EM_GETSEL,       EM_SETSEL,    EM_REPLACESEL, EM_LIMITTEXT,
                                   EM_GETLIMITTEXT, EM_GETMODIFY, EM_SETMODIFY,  EM_SETREADONLY,
                                   EM_GETLINECOUNT, WM_GETDLGCODE};
    if (std::find(std::begin(About_Text), std::end(About_Text), message) != std::end(About_Text))
        return Answer_About_Text(message, wparam, lparam);
    return Answer_Input(message, wparam, lparam);
}
