#pragma once
// Dialogs with controls for tests: what the controls tell their parent is written down, and may be answered.
//
//     TestDialog dialog({0, 0, 200, 100});
//     const HWND name = dialog.Add("Edit", "", {10, 10, 100, 30}, WS_TABSTOP, 7);
//     Click_Window(name);
//     EXPECT_EQ(dialog.Told(), "7:EN_SETFOCUS");

#include <tests/support/window_verbs.h>

class TestDialog {
  public:
    explicit TestDialog(RECT place = {0, 0, 300, 200}, const char *title = "");

    operator HWND() const { return window_; }
    /// A visible child of a control's class.
    HWND Add(const char *control_class, const char *text, RECT place, DWORD style, int id = 0,
             DWORD extended_style = 0);
    /// "id:notice" of what came since the last call, with a blank between them.
    std::string Told();
    /// Runs with each notice.
    std::function<void(int id, UINT notice)> on_notice;

  private:
    std::optional<LRESULT> Hear(UINT message, WPARAM wparam, LPARAM lparam);

    std::string told_;
    TestWindow window_;
};

/// The line's text; "none".
std::string Line_Of(HWND list, int line);
/// All lines of a list or combo box, a blank between them.
std::string Lines_Of(HWND list);
