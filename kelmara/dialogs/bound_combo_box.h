#pragma once
// A combo box whose value is the text that it shows; of a "ComboBoxEx32" the line that is chosen.
//
// A value that no line holds becomes a line of one with the style CBS_DROPDOWN; in others nothing is chosen
// then. It writes when a line is chosen and after each change of its text, by a message that it posts to
// itself; when its text is set by anybody but the binding; and when its place changes. Showing a value writes
// nothing. Values are of at most 254 characters.

#include <kelmara/dialogs/bound_control.h>

// The base's destructor is not virtual, and this one is.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

class KELMARA_API CBoundComboBoxControl : public CBoundControlNotifier {
  public:
    CBoundComboBoxControl();
    CBoundComboBoxControl(const CBoundComboBoxControl &other);
    CBoundComboBoxControl &operator=(const CBoundComboBoxControl &other);
    virtual ~CBoundComboBoxControl();

    void Binding_Changed() override;
    bool AttachTo(HWND window) override;

    /// Writes the text, whether or not the value is valid; nothing without a window.
    void HandleSelectionChange();

  protected:
    long GetWndProc() override;
    static long ExternWndProc(HWND window, unsigned int message, unsigned int wparam, long lparam);

    bool m_Extended = false; // offset 32, frozen: of the class "ComboBoxEx32"

  private:
    friend struct BoundComboBoxLayout;

    KELMARA_INTERNAL long Line_Of(const char *value);
    KELMARA_INTERNAL void Get_Chosen_Line(char *text, int size);
    KELMARA_INTERNAL void Heard(unsigned int message, unsigned int notice);

    bool m_Showing = false; // a value of the binding: what the parts tell of it is no input
};
static_assert(sizeof(CBoundComboBoxControl) == 36);

#pragma GCC diagnostic pop
