#pragma once
// A combo box: an edit (but for CBS_DROPDOWNLIST) and a list, windows of their own that tell it what happens
// by WM_COMMAND, so that a procedure put before it hears them too.
//
// A list that drops down is a child of the desktop, as high as the window was wanted to be, with room for
// some lines at least; the window itself is as high as a line. While it is down it holds the pointer; it
// drops down only while the box can be used, and closes when it, or what it stands in, is hidden, made iconic
// or disabled. When the user chooses, CBN_SELCHANGE comes before the edit has the new text. What code changes
// is not told to the parent.

#include <platform/user/controls/control.h>

class ComboBox : public Control {
  public:
    using Control::Control;
    LRESULT Answer(UINT message, WPARAM wparam, LPARAM lparam) override;
    void Draw(Picture &picture) const override;

    HWND Edit_Part() const { return edit_; }
    HWND List_Part() const { return list_; }
    bool Is_Dropped() const { return dropped_; }
    /// Where the arrow is, in client coordinates; empty with CBS_SIMPLE.
    RECT Arrow() const;

    static constexpr LONG Edge = 2, Arrow_Width = 16;

  private:
    DWORD Kind() const { return Style() & 3; }
    bool Drops() const { return Kind() != CBS_SIMPLE; }
    LONG Height_Without_List() const { return Line_Height() + 8; }
    LRESULT To_List(UINT message, WPARAM wparam = 0, LPARAM lparam = 0) const;
    LRESULT To_Edit(UINT message, WPARAM wparam = 0, LPARAM lparam = 0) const;

    LRESULT Create(const CREATESTRUCTA &create);
    void Lay_Out();
    void Keep_Height(WINDOWPOS *wanted);
    void Take_Font(WPARAM font, LPARAM redraw);
    void Destroy_List();
    RECT Place_Of_List() const;
    LRESULT Give_Place(RECT *out) const;

    LRESULT Answer_About_Lines(UINT message, WPARAM wparam, LPARAM lparam);
    LRESULT Answer_About_Text(UINT message, WPARAM wparam, LPARAM lparam);
    LRESULT Answer_Input(UINT message, WPARAM wparam, LPARAM lparam);
    LRESULT Answer_Window(UINT message, WPARAM wparam, LPARAM lparam);
    LRESULT Set_Edit_Selection(LPARAM packed) const;
    LRESULT Set_Text(LPARAM text);
    std::string Chosen_Text() const; // may throw std::bad_alloc
    LRESULT Give_Chosen_Text(WPARAM size, char *out) const;
    void Show_Choice();

    void Heard(HWND part, UINT notice);
    void Heard_Of_Choice();
    void Heard_Of_Typing(UINT notice);
    void Drop();
    bool Close(UINT notice);
    void Focus_Lost();
    void Key(UINT key);
    void Character(WPARAM typed);
    LRESULT Dialog_Code(const MSG *message) const;

    HWND edit_ = nullptr, list_ = nullptr;
    LONG wanted_height_ = 0; // with the list that drops down
    bool dropped_ = false;
    bool by_key_ = false;  // a key is on its way to the list
    bool by_code_ = false; // the edit's text is being set
};
