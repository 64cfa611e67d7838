// The class of dialogs: it keeps a font for its controls' sake, and the focus while another window is active.
// The focus goes on to a control where there is one, and to close it is to press Cancel.

#include <platform/user/window.h>

#include <platform/kernel/outcome.h>

#include <utility>

namespace {

struct DialogContents final : WindowContents {
    LPARAM font = 0;
    HWND focus = nullptr;
};

bool Begin(HWND window) {
    return Within_Memory(false, [window] {
        const WindowPointer found = Find_Window(window);
        if (found && !found->contents) found->contents = std::make_unique<DialogContents>();
        return found != nullptr;
    });
}

void Keep_Focus(HWND window, DialogContents &dialog) {
    const HWND focus = GetFocus();
    dialog.focus = focus && IsChild(window, focus) ? focus : nullptr;
}

HWND First_Stop(HWND window) {
    constexpr LONG Takes_Keys = WS_TABSTOP | WS_VISIBLE;
    for (HWND each = GetWindow(window, GW_CHILD); each; each = GetWindow(each, GW_HWNDNEXT)) {
        const LONG style = GetWindowLongA(each, GWL_STYLE);
        if ((style & Takes_Keys) == Takes_Keys && !(style & WS_DISABLED)) return each;
    }
    return window;
}

void Give_Focus_Back(HWND window, DialogContents &dialog) {
    const HWND kept = std::exchange(dialog.focus, nullptr);
    const bool there = kept && IsChild(window, kept) && IsWindowEnabled(kept);
    SetFocus(there ? kept : First_Stop(window));
}

// Posted: what answers may destroy the dialog.
void Press_Cancel(HWND window) {
    const HWND cancel = GetDlgItem(window, IDCANCEL);
    if (cancel && !IsWindowEnabled(cancel))
        MessageBeep(MB_OK);
    else
        PostMessageA(window, WM_COMMAND, IDCANCEL | BN_CLICKED << 16, As_Parameter(cancel));
}

LRESULT Dialog_Procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    if (message == WM_NCCREATE && !Begin(window)) return FALSE;
    auto *dialog = Contents_Of<DialogContents>(window);
    if (!dialog) return DefWindowProcA(window, message, wparam, lparam);
    switch (message) {
    case WM_SETFONT:
        dialog->font = static_cast<LPARAM>(wparam);
        return 0;
    case WM_GETFONT:
        return dialog->font;
    case WM_ACTIVATE:
        if ((wparam & 0xFFFF) == WA_INACTIVE)
            Keep_Focus(window, *dialog);
        else if (!IsIconic(window))
            Give_Focus_Back(window, *dialog);
        return 0;
    case WM_SETFOCUS:
        Give_Focus_Back(window, *dialog);
        return 0;
    case WM_CLOSE:
        Press_Cancel(window);
        return 0;
    default:
        return DefWindowProcA(window, message, wparam, lparam);
    }
}

const BuiltInClass dialog_class("#32770", Dialog_Procedure);

} // namespace
