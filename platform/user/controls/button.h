#pragma once
// Push buttons, check boxes, radio buttons and group boxes.
//
// An automatic kind sets its own check by sending itself BM_SETCHECK before it tells its parent, so that a
// procedure put before it sees every change that the user makes. A radio button that gets the focus without a
// click and is not checked counts as clicked.

#include <platform/user/controls/control.h>

class Button : public Control {
  public:
    using Control::Control;
    LRESULT Answer(UINT message, WPARAM wparam, LPARAM lparam) override;
    void Draw(Picture &picture) const override;

  private:
    DWORD Kind() const { return Style() & BS_TYPEMASK; }
    bool Is_Push() const { return Kind() <= BS_DEFPUSHBUTTON; }
    bool Is_Radio() const { return Kind() == BS_RADIOBUTTON || Kind() == BS_AUTORADIOBUTTON; }
    LRESULT Dialog_Code() const;
    LRESULT State() const;
    void Set_Check(WPARAM check);
    void Set_Kind(WPARAM kind);
    void Set_Pushed(bool pushed);
    void Click_By_Code();
    void Clicked();
    void Check_In_Group();
    void Pointer_Down();
    void Pointer_Up(LPARAM point);
    void Gain_Focus();
    void Lose_Focus();
    LRESULT Answer_Input(UINT message, WPARAM wparam, LPARAM lparam);

    void Draw_Push(Picture &picture) const;
    void Draw_Mark(Picture &picture, const RECT &box) const;
    void Draw_With_Mark(Picture &picture) const;
    void Draw_Group(Picture &picture) const;

    WPARAM check_ = 0;
    bool pushed_ = false;
    bool held_ = false; // by the pointer
    bool in_click_ = false;
};
