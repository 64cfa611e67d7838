#include <platform/user.h>

#include <platform/kernel.h>
#include <platform/kernel/process_end.h>
#include <platform/machine.h>

#include <cstdio>
#include <mutex>

namespace {

constinit std::mutex handler_lock;
constinit MessageBoxHandler installed_handler = nullptr;
constinit void *installed_context = nullptr;

constinit thread_local bool in_handler = false;

struct InHandler {
    InHandler() { in_handler = true; }
    ~InHandler() { in_handler = false; } // also when the handler throws
    InHandler(const InHandler &) = delete;
    InHandler &operator=(const InHandler &) = delete;
};

struct ButtonSet {
    UINT style;
    int buttons[3]; // in their order on the screen; the first is the default
};

constexpr ButtonSet Button_Sets[] = {
    {MB_OK, {IDOK, 0, 0}},
    {MB_OKCANCEL, {IDOK, IDCANCEL, 0}},
    {MB_ABORTRETRYIGNORE, {IDABORT, IDRETRY, IDIGNORE}},
    {MB_YESNOCANCEL, {IDYES, IDNO, IDCANCEL}},
    {MB_YESNO, {IDYES, IDNO, 0}},
    {MB_RETRYCANCEL, {IDRETRY, IDCANCEL, 0}},
};

// The button that Enter would press, 0 for an unknown set. A default beyond the last button is the first.
int Default_Button(UINT style) {
    for (const ButtonSet &set : Button_Sets) {
        if (set.style != (style & 0xF)) continue;
        const UINT place = (style & 0xF00) >> 8;
        return place < 3 && set.buttons[place] ? set.buttons[place] : set.buttons[0];
    }
    return 0;
}

} // namespace

extern "C" {

void Set_Message_Box_Handler(MessageBoxHandler handler, void *context) {
    std::lock_guard guard(handler_lock);
    installed_handler = handler;
    installed_context = context;
}

int MessageBoxA(HWND owner, LPCSTR text, LPCSTR caption, UINT style) {
    const int answer = Default_Button(style);
    if (answer == 0) {
        SetLastError(ERROR_INVALID_MSGBOX_STYLE);
        return 0;
    }
    if (!text) text = "";
    if (!caption) caption = "Error";
    MessageBoxHandler handler;
    void *context;
    {
        std::lock_guard guard(handler_lock);
        handler = installed_handler;
        context = installed_context;
    }
    if (in_handler || Process_Is_Ending()) return answer;
    if (handler) {
        const InHandler mark;
        return handler(owner, text, caption, style, context);
    }
    std::fprintf(stderr, "[%s] %s\n", caption, text);
    return answer;
}
}
