#pragma once
// A window as its process has it, the tree that they stand in, and what controls are made on.
//
// All fields are read and written under the tree's lock, from any thread, except `contents`, which belongs to
// the window's own thread. The lock is never held while a procedure runs: Send_To and Call_Procedure end the
// process when it is. A window that is destroyed leaves the tree at once; the object lives on while a call
// holds it (WindowPointer), so that a procedure may go on with its contents after its window is gone.

#include <platform/user.h>

#include <platform/gdi.h>
#include <platform/user/shared_windows.h>

#include <memory>
#include <string>
#include <vector>

class ThreadQueue;

struct WindowClass {
    std::string name; // as it was registered
    WNDPROC procedure = nullptr;
    HINSTANCE instance = nullptr;
    UINT style = 0;
    bool built_in = false;
};

/// What a control keeps with its window. Made by its procedure, gone with the window object.
class WindowContents {
  public:
    virtual ~WindowContents() = default;
};

struct Window {
    HWND handle = nullptr;
    std::shared_ptr<const WindowClass> window_class;
    std::shared_ptr<ThreadQueue> queue; // its thread's; null for the desktop
    WNDPROC procedure = nullptr;

    DWORD style = 0; // the state bits as the procedure knows them: Style() tells what they are
    DWORD extended_style = 0;
    LONG id = 0;
    LONG user_data = 0;
    HINSTANCE instance = nullptr;
    std::string text;
    HMENU menu = nullptr;
    int menu_height = 0; // of the bar, between caption and client area

    RECT rectangle = {};               // in the parent's client coordinates, or the screen's
    RECT normal = {};                  // the same when it is neither iconic nor zoomed
    RECT told_client = {};             // the client area, likewise, of which WM_SIZE and WM_MOVE told last
    bool zoomed_before_iconic = false; // of a window with a parent; others have it in their row
    RECT invalid = {};

    Window *parent = nullptr; // the desktop for a window without one
    Window *owner = nullptr;
    std::vector<Window *> children; // from the front

    std::shared_ptr<SharedWindows> shared; // with `row`
    WindowRow *row = nullptr;              // of a window without a parent

    bool in_destruction = false;
    bool told_of_destruction = false;
    bool gone = false;

    std::unique_ptr<WindowContents> contents;

    /// With the state bits as they are, whoever set them last.
    DWORD Style() const;
    /// State_Bits and Zoomed_Before_Iconic, likewise.
    DWORD State() const;
    /// For the procedure and for all others.
    void Set_State_Bits(DWORD bits);
    void Set_Zoomed_Before_Iconic(bool zoomed);
    bool Is(DWORD style_bit) const { return (Style() & style_bit) != 0; }
    bool Is_Top_Level() const { return row != nullptr; }
    bool Is_Visible_In_All() const;
};

using WindowPointer = std::shared_ptr<Window>;

/// The tree's lock. Locks of one thread nest.
class TreeLock {
  public:
    TreeLock();
    ~TreeLock();
    TreeLock(const TreeLock &) = delete;
    TreeLock &operator=(const TreeLock &) = delete;
    static bool Held_By_This_Thread();
};

/// A window of this process; null, with ERROR_INVALID_WINDOW_HANDLE, or ERROR_ACCESS_DENIED for another
/// process's. Takes the lock itself; the caller takes it before looking at what it gets.
WindowPointer Find_Window_Or_Tell(HWND handle);
/// The same, silent.
WindowPointer Find_Window(HWND handle);
/// The desktop, made at first need. May throw std::bad_alloc.
Window &Desktop();
/// The same, its rectangle brought to the settings' screen.
Window &Desktop_Of_The_Screen();

// --- the tree: the caller holds the lock ------------------------------------------------------------------

Window &Root_Of(Window &window);
bool Is_Descendant(const Window &window, const Window &ancestor);
HWND Handle_Of(const Window *window);
/// Descendants, each before its own children, from the front.
void Collect_Descendants(const Window &window, std::vector<HWND> &found);
void Link(Window &window, Window &parent); // at the front
void Unlink(Window &window);
/// Behind `after`; at the front for null.
void Restack(Window &window, const Window *after);
/// The client area's corner on the screen.
POINT Client_Origin(const Window &window);
POINT Window_Origin(const Window &window);

// --- messages ---------------------------------------------------------------------------------------------

/// SendMessageA to a window that is at hand; 0 when it has gone.
LRESULT Send_To(const WindowPointer &window, UINT message, WPARAM wparam, LPARAM lparam);
/// Runs the procedure in the calling thread, which is the window's.
LRESULT Call_Procedure(const WindowPointer &window, UINT message, WPARAM wparam, LPARAM lparam);

template <class Pointer>
LPARAM As_Parameter(Pointer pointer) {
    return reinterpret_cast<LPARAM>(pointer);
}

// --- what controls are made on ----------------------------------------------------------------------------

/// A class that every process has from the start. Written as a static object beside the control's procedure:
///     const BuiltInClass button_class("Button", Button_Procedure);
/// Its procedure leaves to DefWindowProcA what it does not answer itself.
class BuiltInClass {
  public:
    BuiltInClass(const char *name, WNDPROC procedure);

  private:
    friend struct WindowClasses;
    const char *name_;
    WNDPROC procedure_;
    BuiltInClass *next_;
};

/// A control's own state, by its window's own thread; null before it has any, and for another kind's.
template <class Contents>
Contents *Contents_Of(HWND handle) {
    const WindowPointer window = Find_Window(handle);
    return window ? dynamic_cast<Contents *>(window->contents.get()) : nullptr;
}

/// Tells the parent of a control about an event: WM_COMMAND with its identifier.
void Notify_Parent(HWND control, UINT notice);
