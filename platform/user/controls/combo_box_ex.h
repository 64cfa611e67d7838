#pragma once
// ComboBoxEx32: a window that is filled by a combo box, its child with the same identifier. Lines go by
// records; the messages of a combo box go on to it, and its notices come from this window.

#include <platform/user/controls/control.h>

class ComboBoxEx : public Control {
  public:
    using Control::Control;
    LRESULT Answer(UINT message, WPARAM wparam, LPARAM lparam) override;
    void Draw(Picture &) const override {}

    HWND Combo_Part() const { return combo_; }

  private:
    LRESULT To_Combo(UINT message, WPARAM wparam = 0, LPARAM lparam = 0) const;
    LRESULT Create(const CREATESTRUCTA &create);
    void Fit(int width, int height);
    void Take_Font(WPARAM font, LPARAM redraw);
    void Keep_Up_With(const WINDOWPOS &place);
    HWND Edit_Part() const;
    LRESULT Insert(const COMBOBOXEXITEM &item) const;
    LRESULT Give(COMBOBOXEXITEM &item) const;
    LRESULT Set(const COMBOBOXEXITEM &item) const;
    LRESULT Replace_Text(int line, const char *text) const;
    LRESULT Answer_Window(UINT message, WPARAM wparam, LPARAM lparam);

    HWND combo_ = nullptr;
    bool fitting_ = false;
};
