#pragma once
// The connect dialog with one control of each kind, and its layout. Texts are references until it speaks a
// language.

#include <kelmara/dialogs/auto_position.h>

#include <string>

namespace connect {

enum : int {
    User_Label = 20,
    User,
    Account_Label,
    Account,
    Remember,
    Device_Box,
    Modem,
    Isdn,
    Dsl,
    Network,
    Number_Box,
    Numbers,
    Dial_From_Label,
    Dial_From,
    Area_Code,
    Properties
};

class Dialog {
  public:
    Dialog();
    ~Dialog() { DestroyWindow(window_); }
    Dialog(const Dialog &) = delete;
    Dialog &operator=(const Dialog &) = delete;
    operator HWND() const { return window_; }

    HWND Item(int id) const { return GetDlgItem(window_, id); }
    /// Where it stands in the dialog's client area.
    RECT Place_Of(int id) const;
    std::string Text_Of(int id) const;

    /// Each text in that language, and the layout after it.
    void Speak(const std::string &language);
    /// Makes the client area that large, and lays it out.
    void Resize_To(int width, int height);
    /// Ends the road where controls overlap, leave the dialog or their group box, or cut their texts.
    void Check_Layout() const;

  private:
    void Manage_Layout();

    HWND window_;
    CAutoPositionManager layout_;
};

} // namespace connect
