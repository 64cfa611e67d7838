#pragma once
// A field for text: a line, or several with ES_MULTILINE, whose breaks are "\r\n".
//
// The limit holds for what is typed and for EM_REPLACESEL, not for WM_SETTEXT; 0 takes it away, and at first
// it is 30,000. Every change raises EN_UPDATE and EN_CHANGE, but WM_SETTEXT does not with ES_MULTILINE, and
// the text that the window is made with never does. What is typed is taken also where it does not fit into
// the field's width.

#include <platform/user/controls/control.h>
#include <platform/user/snapshot/picture.h>

class Edit : public Control {
  public:
    using Control::Control;
    LRESULT Answer(UINT message, WPARAM wparam, LPARAM lparam) override;
    void Draw(Picture &picture) const override;

    /// From here on the edit is a part of a combo box, which gets the keys that move through the list.
    void Belong_To(HWND combo) { combo_ = combo; }

  private:
    static constexpr std::size_t Usual_Limit = 30000, No_Limit = 0x7FFFFFFE;
    static constexpr LONG Margin = 2;

    bool Has_Lines() const { return (Style() & ES_MULTILINE) != 0; }
    bool Is_Read_Only() const { return (Style() & ES_READONLY) != 0; }
    std::size_t First() const { return anchor_ < caret_ ? anchor_ : caret_; }
    std::size_t Last() const { return anchor_ < caret_ ? caret_ : anchor_; }

    LRESULT Answer_About_Text(UINT message, WPARAM wparam, LPARAM lparam);
    LRESULT Answer_Input(UINT message, WPARAM wparam, LPARAM lparam);
    bool Keep(const char *text);
    LRESULT Set_Text(const char *text);
    LRESULT Give_Text(WPARAM size, char *out) const;
    LRESULT Give_Selection(DWORD *start, DWORD *end) const;
    void Select(LONG start, LONG end);
    bool Replace_Selection(std::string text);
    bool Tell_Of_Change();
    void Set_Read_Only(bool read_only);
    LRESULT Dialog_Code(const MSG *message) const;

    void Type(unsigned char typed);
    void Erase(std::size_t from, std::size_t to);
    bool Key(UINT key);
    bool Pass_To_Combo(UINT key) const;
    void Move_To(std::size_t place);
    std::size_t Before(std::size_t place) const;
    std::size_t Behind(std::size_t place) const;
    std::size_t Start_Of_Line(std::size_t place) const;
    std::size_t End_Of_Line(std::size_t place) const;
    std::size_t Up_Or_Down(UINT key) const;
    std::size_t Place_At(LPARAM point) const;
    std::string Shown() const;
    TextLook Look() const;
    RECT Text_Place() const;

    std::string text_;
    std::size_t anchor_ = 0, caret_ = 0;
    std::size_t limit_ = Usual_Limit;
    bool modified_ = false;
    HWND combo_ = nullptr;
};
