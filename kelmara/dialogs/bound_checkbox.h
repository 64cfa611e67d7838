#pragma once
// A checkbox whose value is the word "TRUE" or "FALSE": exactly "TRUE" checks it, anything else does not.
//
// It writes whenever its check is set by anybody but the binding; the indeterminate state counts as checked.

#include <kelmara/dialogs/bound_control.h>

// The base's destructor is not virtual, and this one is.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

class KELMARA_API CBoundCheckboxControl : public CBoundControlNotifier {
  public:
    CBoundCheckboxControl();
    CBoundCheckboxControl(const CBoundCheckboxControl &other);
    CBoundCheckboxControl &operator=(const CBoundCheckboxControl &other);
    virtual ~CBoundCheckboxControl();

    void Binding_Changed() override;

    /// From then on the value is the opposite of the check.
    void OppositeBind();
    /// Writes what the check says, unless the value is invalid or there is no window.
    void Clicked();

  protected:
    long GetWndProc() override;
    static long ExternWndProc(HWND window, unsigned int message, unsigned int wparam, long lparam);

    bool m_Opposite = false; // offset 32, frozen

  private:
    friend struct BoundCheckboxLayout;
};
static_assert(sizeof(CBoundCheckboxControl) == 36);

#pragma GCC diagnostic pop
