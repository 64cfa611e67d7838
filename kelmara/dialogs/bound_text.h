#pragma once
// A text control whose text is the value.
//
// It writes at every released key but the arrow keys, or when it loses the focus, as the client asks; and
// when its text is set by anybody but the binding. What goes invalid is blanked and disabled, and none of
// that is written. The client's Get_Value_Size less 1 is the input limit while there are a window and a
// client; below 1 there is none. Texts up to 255 characters touch no allocator, longer ones pass whole. A
// negative size is that of nothing to read.

#include <kelmara/dialogs/bound_control.h>

// The base's destructor is not virtual, and this one is.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

class KELMARA_API CBoundTextControl : public CBoundControlNotifier {
  public:
    CBoundTextControl();
    CBoundTextControl(const CBoundTextControl &other);
    CBoundTextControl &operator=(const CBoundTextControl &other);
    virtual ~CBoundTextControl();

    void Binding_Changed() override;
    void Binding_Invalid() override;
    void Install_Client_Interface(IBindingClientInterface *client) override;
    bool AttachTo(HWND window) override;
    /// Takes the input limit away too.
    void Detach() override;

  protected:
    long GetWndProc() override;
    /// Writes the window's text, whether or not the value is valid; of a control without a window an empty
    /// one, unless it is invalid too.
    void Write_Binding();
    static long ExternWndProc(HWND window, unsigned int message, unsigned int wparam, long lparam);

    bool m_Updating = false; // offset 32, frozen: the text is being set from the binding

  private:
    friend struct BoundTextLayout;

    KELMARA_INTERNAL void Show(const char *text);
    KELMARA_INTERNAL void Limit_Input();
    KELMARA_INTERNAL bool Still_Writes(HWND window, bool was_valid) const;
    KELMARA_INTERNAL void Write_If_Asked(HWND window, unsigned int message);
    KELMARA_INTERNAL long Set_By_Others(HWND window, unsigned int wparam, long lparam);

    bool m_Going_Invalid = false; // losing the focus to that writes nothing
};
static_assert(sizeof(CBoundTextControl) == 36);

#pragma GCC diagnostic pop
