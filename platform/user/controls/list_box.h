#pragma once
// A list of lines of which the user chooses one. Keys and clicks that choose a line raise LBN_SELCHANGE with
// LBS_NOTIFY, also when it was chosen before; messages that choose one do not.

#include <platform/user/controls/control.h>
#include <platform/user/controls/list_lines.h>

class ListBox : public Control {
  public:
    using Control::Control;
    LRESULT Answer(UINT message, WPARAM wparam, LPARAM lparam) override;
    void Draw(Picture &picture) const override;

    /// From here on the list is a part of a combo box: notices go there, and a press outside closes it.
    void Belong_To(HWND combo) { combo_ = combo; }
    int First_Shown() const { return top_; }
    LONG Height_Of_Line() const { return Line_Height(); }

  private:
    LRESULT Answer_Input(UINT message, WPARAM wparam, LPARAM lparam);
    LRESULT Answer_About_Lines(UINT message, WPARAM wparam, LPARAM lparam);
    LRESULT Insert(int index, const char *text);
    LRESULT Add(const char *text);
    LRESULT Remove(int index);
    LRESULT Choose(int index);
    LRESULT Give_Text(int index, char *out) const;
    LRESULT Select_String(int after, const char *text);
    LRESULT Give_Rectangle(int index, RECT *out) const;
    void Key(UINT key);
    void Character(char typed);
    void Pointer_Down(LPARAM point);
    void Pointer_Up(LPARAM point);
    void Choose_By_Hand(int index);
    bool Tell(UINT notice);
    int Lines_Shown() const;
    int Line_At(LPARAM point) const;
    void Scroll_To(int index);
    void Keep_Room_Filled();

    ListLines lines_;
    HWND combo_ = nullptr;
    int top_ = 0;
    bool held_ = false;
};
