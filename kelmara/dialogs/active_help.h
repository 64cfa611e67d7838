#pragma once
// Hover help: while the pointer is over a registered control of a dialog, a pane of the dialog shows the
// control's help text. It keeps the last text when the pointer is over none.
//
//     CActiveHelpManager help;
//     help.Initialize(pane);
//     help.AddControl(name_field, "The name you are known by.");
//
// A registered control is subclassed until it is destroyed; its help text belongs to the manager. Destroy the
// windows first: once the manager is gone the procedure of a window that is left answers 0 to every message.
// Where a control is bound to a value as well, bind it before it is added. Windows and manager may be
// destroyed in the middle of the control's messages, which then go on without them; a window that outlives
// its manager that way has its own procedure again. All on the thread that owns the windows.

#include <kelmara/containers/list.h>

#include <platform/user.h>

class CActiveHelpControl;

class KELMARA_API CActiveHelpManager {
  public:
    KELMARA_CLASS_ALLOCATION

    /// Throws as a list's constructor does.
    CActiveHelpManager();
    /// Bit for bit: of two copies that have controls one may be destroyed.
    CActiveHelpManager(const CActiveHelpManager &other);
    CActiveHelpManager &operator=(const CActiveHelpManager &other);
    /// Takes the help off its controls; their procedures stay replaced.
    ~CActiveHelpManager();

    /// The window whose text is the help. The next control under the pointer sets it in any case.
    void Initialize(HWND help_window);

    /// Registers a control, with at most 255 characters of text, null for none; the text is copied. Without
    /// memory nothing is added and the control stays as it was; so too for what is no window of this process,
    /// a window whose GWL_USERDATA word is used for something else, and one that is registered, or was when
    /// its manager went.
    void AddControl(HWND control, const char *help_text);

  protected:
    friend class CActiveHelpControl;
    friend struct ActiveHelpLayout;

    void SetHelp(CActiveHelpControl *control, const char *text);

    HWND m_HelpWindow;             // offset 0
    CActiveHelpControl *m_Current; // offset 4, whose text the pane shows
    CDSList m_HelpControls;        // offset 8, owned
};

/// A registered control. Its address stands in slot 1 of the window's WindowUserData.
class KELMARA_API CActiveHelpControl {
  public:
    KELMARA_CLASS_ALLOCATION

  protected:
    friend class CActiveHelpManager;
    friend struct ActiveHelpLayout;

    CActiveHelpControl(CActiveHelpManager *manager, HWND window, const char *help_text);
    CActiveHelpControl(const CActiveHelpControl &other);
    CActiveHelpControl &operator=(const CActiveHelpControl &other);
    ~CActiveHelpControl();

    static long WndProc(HWND window, unsigned int message, unsigned int wparam, long lparam);

    class Call;

    KELMARA_INTERNAL static CActiveHelpControl *Of(HWND window);
    KELMARA_INTERNAL static bool Has_Help(HWND window);
    KELMARA_INTERNAL void Restore_Procedure();

    CActiveHelpManager *m_Manager; // offset 0
    unsigned long m_Signature;     // offset 4, 0xCAFEBABE
    long m_Depth;                  // offset 8, calls of WndProc under way
    char m_HelpText[256];          // offset 12
    WNDPROC m_OldWndProc;          // offset 268
    HWND m_Hwnd;                   // offset 272
    void *m_UserData;              // offset 276
};
static_assert(sizeof(CActiveHelpControl) == 280);
