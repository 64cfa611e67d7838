#include <kelmara/dialogs/window_helpers.h>

#include <kelmara/foundation/owned_block.h>

#include <platform/gdi.h>
#include <platform/user.h>

#include <algorithm>
#include <cstring>

namespace {

constexpr int Longest_Filtered = 254; // characters of an edit control's text

HGDIOBJ Font_Of(HWND window) {
    const LRESULT font = SendMessageA(window, WM_GETFONT, 0, 0);
    return font != 0 ? reinterpret_cast<HGDIOBJ>(font) : GetStockObject(ANSI_VAR_FONT);
}

/// A window's font, to measure with. All measures are 0 where there is none to be had.
class WindowFont {
  public:
    explicit WindowFont(HWND window) : m_Window(window), m_Font(Font_Of(window)), m_Context(GetDC(window)) {
        if (!m_Context) return;
        m_Before = SelectObject(m_Context, m_Font);
        if (!GetTextMetricsA(m_Context, &m_Metrics)) m_Metrics = {};
    }
    ~WindowFont() {
        if (m_Before) SelectObject(m_Context, m_Before);
        if (m_Context) ReleaseDC(m_Window, m_Context);
    }
    WindowFont(const WindowFont &) = delete;
    WindowFont &operator=(const WindowFont &) = delete;

    int Width(const char *text) const {
        SIZE size = {};
        if (!m_Context) return 0;
        if (!GetTextExtentPoint32A(m_Context, text, static_cast<int>(std::strlen(text)), &size)) return 0;
        return static_cast<int>(std::max(size.cx, 0L) + m_Metrics.tmOverhang) + GetSystemMetrics(SM_CXBORDER);
    }
    int Height() const { return static_cast<int>(m_Metrics.tmHeight); }

  private:
    const HWND m_Window;
    const HGDIOBJ m_Font; // the window's
    const HDC m_Context;
    HGDIOBJ m_Before = nullptr;
    TEXTMETRICA m_Metrics = {};
};

// Cuts the next word off; null when there is none left.
const char *Next_Word(char *&rest) {
    char *const word = rest + std::strspn(rest, " ");
    if (!*word) return nullptr;
    rest = word + std::strcspn(word, " ");
    if (*rest) *rest++ = 0;
    return word;
}

// 0 where a word cannot be measured.
int Count_Lines(const WindowFont &font, char *text, int room) {
    const int blank = font.Width(" ");
    if (blank == 0) return 0;
    int lines = 1, used = 0;
    while (const char *const word = Next_Word(text)) {
        const int width = font.Width(word);
        if (width == 0) return 0;
        const bool fits = width <= room - used;
        if (!fits) ++lines;
        used = (fits ? used + width : width) + blank;
    }
    return lines;
}

struct EditField {
    char text[Longest_Filtered + 1];
    DWORD start = 0, end = 0; // of the selection
};

void Step_Back(DWORD &position) {
    if (position > 0) --position;
}

// True if anything went.
bool Filter(EditField &field, const char *allowed, const char *forbidden) {
    char *kept = field.text;
    for (const char *next = field.text; *next; ++next) {
        const bool wanted = allowed ? std::strchr(allowed, *next) != nullptr : !std::strchr(forbidden, *next);
        if (wanted) {
            *kept++ = *next;
            continue;
        }
        Step_Back(field.start);
        Step_Back(field.end);
        MessageBeep(1);
    }
    const bool any_gone = *kept != 0;
    *kept = 0;
    return any_gone;
}

} // namespace

void Filter_Edit_Field(HWND edit, const char *allowed, const char *forbidden) {
    if (!allowed == !forbidden) return;
    EditField field;
    if (GetWindowTextA(edit, field.text, sizeof field.text) <= 0) return;
    SendMessageA(edit, EM_GETSEL, reinterpret_cast<WPARAM>(&field.start),
                 reinterpret_cast<LPARAM>(&field.end));
    if (!Filter(field, allowed, forbidden)) return;
    SetWindowTextA(edit, field.text);
    SendMessageA(edit, EM_SETSEL, field.start, static_cast<LPARAM>(field.end));
}

int Text_Width(HWND window, const char *text) {
    return WindowFont(window).Width(text ? text : "");
}

int Text_Height(HWND window) {
    return WindowFont(window).Height();
}

int Textbox_Height(HWND window, const char *text) {
    if (!text || !*text) return 0;
    const std::size_t size = std::strlen(text) + 1;
    const OwnedBlock words(ds_malloc(static_cast<long>(size)));
    if (!words.Get()) return -1;
    std::memcpy(words.Get(), text, size);
    RECT client = {};
    GetClientRect(window, &client);
    const WindowFont font(window);
    const int height = font.Height() * Count_Lines(font, words.Get(), static_cast<int>(client.right));
    return height != 0 || !IsWindow(window) ? height : -1;
}
