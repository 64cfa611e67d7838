#pragma once
// A dialog whose procedure needs no memory of the test's own.

#include <tests/support/window_verbs.h>

class PlainDialog {
  public:
    ~PlainDialog() { DestroyWindow(window_); }
    operator HWND() const { return window_; }
    HWND Add(const char *text, const char *control_class = "Static", int id = 0, DWORD style = 0) const {
        return CreateWindowExA(0, control_class, text, WS_CHILD | WS_VISIBLE | style, 10, 10, 60, 30, window_,
                               reinterpret_cast<HMENU>(id), nullptr, nullptr);
    }

  private:
    HWND window_ = CreateWindowExA(0, "#32770", "Title", WS_POPUP | WS_VISIBLE, 0, 0, 300, 200, nullptr,
                                   nullptr, nullptr, nullptr);
};
