#pragma once
// Windows, messages and message boxes: the calls of USER32.
//
// A window belongs to the thread that made it: its procedure runs there and nowhere else, it is destroyed
// there, and when the thread ends it is gone, its procedure not asked. Every call may be made from any thread
// of the process; SendMessageA to another thread's window waits until that thread looks for messages or sends
// one itself. No lock is held while a procedure runs. What a procedure throws passes through the calls that
// led to it, and leaves the windows whole; thrown in another thread's stead, it surfaces in the thread that
// ran the procedure, and the sender gets 0.
//
// Of other processes' windows those without a parent are there: IsWindow, IsWindowVisible, IsIconic,
// GetWindowTextA (at most 511 characters), GetWindowThreadProcessId, GetLastActivePopup, ShowWindow and
// SetForegroundWindow work on them and ask nothing of their process, which may be hung. To all other calls
// they are no windows of this process: ERROR_ACCESS_DENIED. Windows of a process or thread that has ended are
// none. Handles are multiples of 4, one window of the machine each, and come again after some hundred
// thousand others.
//
// A forked child has none of these windows, and may make its own. Classes, menus and objects of GDI it has as
// they were at the fork; a class that had windows then cannot be unregistered there.
//
// A handle that is no window: the call fails with ERROR_INVALID_WINDOW_HANDLE. Nothing is painted.

#include <platform/controls.h>
#include <platform/errors.h>
#include <platform/icons.h>
#include <platform/menus.h>
#include <platform/types.h>
#include <platform/window_constants.h>

inline constexpr UINT MB_OK = 0x0;
inline constexpr UINT MB_OKCANCEL = 0x1;
inline constexpr UINT MB_ABORTRETRYIGNORE = 0x2;
inline constexpr UINT MB_YESNOCANCEL = 0x3;
inline constexpr UINT MB_YESNO = 0x4;
inline constexpr UINT MB_RETRYCANCEL = 0x5;
inline constexpr UINT MB_ICONHAND = 0x10;
inline constexpr UINT MB_ICONQUESTION = 0x20;
inline constexpr UINT MB_ICONEXCLAMATION = 0x30;
inline constexpr UINT MB_ICONASTERISK = 0x40;
inline constexpr UINT MB_DEFBUTTON2 = 0x100;
inline constexpr UINT MB_DEFBUTTON3 = 0x200;
inline constexpr UINT MB_SYSTEMMODAL = 0x1000;

inline constexpr int IDOK = 1;
inline constexpr int IDCANCEL = 2;
inline constexpr int IDABORT = 3;
inline constexpr int IDRETRY = 4;
inline constexpr int IDIGNORE = 5;
inline constexpr int IDYES = 6;
inline constexpr int IDNO = 7;

using WNDPROC = LRESULT (*)(HWND window, UINT message, WPARAM wparam, LPARAM lparam);
using WNDENUMPROC = BOOL (*)(HWND window, LPARAM lparam);

/// Of no use yet, and kept as given: icons, cursor and brush.
struct WNDCLASSA {
    UINT style;
    WNDPROC lpfnWndProc;
    int cbClsExtra; // 0
    int cbWndExtra; // 0
    HINSTANCE hInstance;
    HANDLE hIcon;
    HANDLE hCursor;
    HANDLE hbrBackground;
    LPCSTR lpszMenuName;
    LPCSTR lpszClassName;
};
static_assert(sizeof(WNDCLASSA) == 40);

struct CREATESTRUCTA {
    LPVOID lpCreateParams;
    HINSTANCE hInstance;
    HMENU hMenu;
    HWND hwndParent;
    int cy;
    int cx;
    int y;
    int x;
    LONG style;
    LPCSTR lpszName;
    LPCSTR lpszClass;
    DWORD dwExStyle;
};
static_assert(sizeof(CREATESTRUCTA) == 48);

struct WINDOWPOS {
    HWND hwnd;
    HWND hwndInsertAfter;
    int x;
    int y;
    int cx;
    int cy;
    UINT flags;
};
static_assert(sizeof(WINDOWPOS) == 28);

struct WINDOWPLACEMENT {
    UINT length; // 44
    UINT flags;
    UINT showCmd;
    POINT ptMinPosition;
    POINT ptMaxPosition;
    RECT rcNormalPosition; // in the parent's client coordinates, or the screen's
};
static_assert(sizeof(WINDOWPLACEMENT) == 44 && offsetof(WINDOWPLACEMENT, rcNormalPosition) == 28);

struct MSG {
    HWND hwnd;
    UINT message;
    WPARAM wParam;
    LPARAM lParam;
    DWORD time;
    POINT pt;
};
static_assert(sizeof(MSG) == 28);

extern "C" {

/// Shows a message and gives back the button that was chosen. Without a handler (machine.h) the message goes
/// to standard error and the default button is the answer. Null texts count as empty, a null caption as
/// "Error". 0 and ERROR_INVALID_MSGBOX_STYLE for a set of buttons that does not exist. In a process that is
/// ending, and from within a handler, nothing is shown and the default button is the answer.
PLATFORM_API int MessageBoxA(HWND owner, LPCSTR text, LPCSTR caption, UINT style);

/// Until a program waits for its user's input for the first time, a thread of it for a message with none
/// there: 0, and WAIT_TIMEOUT when it takes longer, INFINITE being a minute: a program that never waits holds
/// nobody up for ever. 0 at once for the own process. WAIT_FAILED and ERROR_NOT_GUI_PROCESS for a program
/// that has no windows or queues, or has ended meanwhile; one that CreateProcessA of this process started has
/// 10 seconds to make the first. ERROR_INVALID_HANDLE for what is no process.
PLATFORM_API DWORD WaitForInputIdle(HANDLE process, DWORD milliseconds);

// --- classes ----------------------------------------------------------------------------------------------

/// Makes a class of this process known. Names have no letter case and at most 255 characters. 0 on failure:
/// ERROR_CLASS_ALREADY_EXISTS, ERROR_INVALID_PARAMETER.
PLATFORM_API ATOM RegisterClassA(const WNDCLASSA *window_class);
/// FALSE on failure: ERROR_CLASS_DOES_NOT_EXIST, ERROR_CLASS_HAS_WINDOWS. The machine's own classes stay.
PLATFORM_API BOOL UnregisterClassA(LPCSTR name, HINSTANCE instance);
/// The name as it was registered, cut to `size` bytes with its terminator. Its length there, 0 on failure.
PLATFORM_API int GetClassNameA(HWND window, LPSTR name, int size);

// --- coming and going -------------------------------------------------------------------------------------

/// Makes a window: WM_NCCREATE, WM_CREATE, WM_SIZE, WM_MOVE, and what ShowWindow sends with WS_VISIBLE. Null
/// on failure, with nothing left: a procedure said no, ERROR_CANNOT_FIND_WND_CLASS,
/// ERROR_TLW_WITH_WSCHILD for a child without a parent, ERROR_INVALID_WINDOW_HANDLE for the parent,
/// ERROR_NOT_ENOUGH_MEMORY, ERROR_NOT_ENOUGH_QUOTA beyond 512 windows without a parent on the machine, or
/// when a process that is stopped keeps the others from their table for 5 seconds. For a child, `menu` is its
/// identifier; otherwise the window's bar or null (ERROR_INVALID_MENU_HANDLE), and the window is owned by
/// `parent`'s topmost one.
PLATFORM_API HWND CreateWindowExA(DWORD extended_style, LPCSTR class_name, LPCSTR text, DWORD style, int x,
                                  int y, int width, int height, HWND parent, HMENU menu, HINSTANCE instance,
                                  LPVOID parameter);
/// The windows that it owns go first; then WM_DESTROY to it and to its children, WM_NCDESTROY to the children
/// and to it. May be called from the window's own procedure and in the middle of its destruction, which then
/// goes on alone. FALSE and ERROR_ACCESS_DENIED for another thread's.
PLATFORM_API BOOL DestroyWindow(HWND window);
/// FALSE with ERROR_INVALID_WINDOW_HANDLE for what is none; with another last error when what the machine's
/// processes know of each other's windows cannot be had, and it is none of this process's.
PLATFORM_API BOOL IsWindow(HWND window);

// --- procedures and words ---------------------------------------------------------------------------------

/// What a window does with a message that its procedure leaves alone: 0 for those that the machine has no
/// answer to.
PLATFORM_API LRESULT DefWindowProcA(HWND window, UINT message, WPARAM wparam, LPARAM lparam);
/// Null `procedure`: 0.
PLATFORM_API LRESULT CallWindowProcA(WNDPROC procedure, HWND window, UINT message, WPARAM wparam,
                                     LPARAM lparam);
/// One of the GWL_ words; 0 and ERROR_INVALID_INDEX for others.
PLATFORM_API LONG GetWindowLongA(HWND window, int index);
/// What stood there before. The style's state bits (visible, iconic, zoomed, child) stay as they are.
PLATFORM_API LONG SetWindowLongA(HWND window, int index, LONG value);
/// The thread that made the window, and its process at `process_id`, which may be null; 0, nothing stored.
PLATFORM_API DWORD GetWindowThreadProcessId(HWND window, DWORD *process_id);

// --- family -----------------------------------------------------------------------------------------------

/// The parent of a child, the owner of a popup, otherwise null.
PLATFORM_API HWND GetParent(HWND window);
/// Null for none, and for an unknown `relation`. Without a parent, neighbours are those of this process.
PLATFORM_API HWND GetWindow(HWND window, UINT relation);
/// The first direct child with that identifier; null and ERROR_CONTROL_ID_NOT_FOUND.
PLATFORM_API HWND GetDlgItem(HWND parent, int id);
PLATFORM_API int GetDlgCtrlID(HWND window);
/// Whether `window` is a descendant of `parent`.
PLATFORM_API BOOL IsChild(HWND parent, HWND window);
/// All descendants as they are at the call, each before its own children, from the front; those that are
/// destroyed meanwhile are left out. Ends when `procedure` gives FALSE, which is then the result. With a null
/// parent, the windows of this process that have none, without their descendants.
PLATFORM_API BOOL EnumChildWindows(HWND parent, WNDENUMPROC procedure, LPARAM lparam);
PLATFORM_API HWND GetDesktopWindow();

// --- messages ---------------------------------------------------------------------------------------------

/// To a window of this process; from its procedure the result. 0 and the last error when there is none.
PLATFORM_API LRESULT SendMessageA(HWND window, UINT message, WPARAM wparam, LPARAM lparam);
/// Null window: the calling thread's own queue. FALSE beyond 10,000 waiting: ERROR_NOT_ENOUGH_QUOTA.
PLATFORM_API BOOL PostMessageA(HWND window, UINT message, WPARAM wparam, LPARAM lparam);
/// To a thread of this process that has looked for messages or made a window; ERROR_INVALID_THREAD_ID.
PLATFORM_API BOOL PostThreadMessageA(DWORD thread_id, UINT message, WPARAM wparam, LPARAM lparam);
PLATFORM_API void PostQuitMessage(int exit_code);
/// Waits for a posted message: of `window` and its descendants if not null, and with a number from `first`
/// to `last` unless both are 0; WM_QUIT comes behind the others, whatever the filter. Messages that other
/// threads send are answered on the way. FALSE for WM_QUIT, -1 for a window that is none, or without memory.
PLATFORM_API BOOL GetMessageA(MSG *message, HWND window, UINT first, UINT last);
/// The same without waiting: FALSE and nothing stored when there is none. Removed only with PM_REMOVE.
PLATFORM_API BOOL PeekMessageA(MSG *message, HWND window, UINT first, UINT last, UINT remove);
/// Posts the WM_CHAR of a key that was pressed; FALSE for other messages and keys.
PLATFORM_API BOOL TranslateMessage(const MSG *message);
PLATFORM_API LRESULT DispatchMessageA(const MSG *message);
/// What a dialog's loop does with a message: keys that move through the dialog are answered (Tab, the arrows,
/// Enter and Esc), others translated and dispatched. Enter is WM_COMMAND of the push button with the focus,
/// else of the default one, nothing if that is disabled, else of IDOK; Esc of IDCANCEL. FALSE, nothing done,
/// for messages that are not to `dialog` or one of its descendants.
PLATFORM_API BOOL IsDialogMessageA(HWND dialog, MSG *message);
/// WaitForSingleObject for the first of `count` (at most 63) objects, in their order, WAIT_OBJECT_0 or
/// WAIT_ABANDONED + its index, or until something is in the calling thread's queue, WAIT_OBJECT_0 + count. Of
/// objects that come to be had at once one alone is taken. With QS_POSTMESSAGE or QS_ALLPOSTMESSAGE in `mask`
/// that is a posted message, input included; with QS_KEY, QS_MOUSEMOVE or QS_MOUSEBUTTON a message of that
/// kind; with QS_SENDMESSAGE a sent one. Sent ones are answered on the way without it. Unlike on Windows a
/// message counts until it is taken out, also when it was looked at before: a loop that takes one for each
/// wait leaves none lying. Timers and painting there are none. WAIT_FAILED: ERROR_INVALID_PARAMETER for `all`
/// and for more objects, ERROR_INVALID_HANDLE when one of the handles, wherever it stands, is not open. Where
/// the host does not let a thread sleep on several words (Linux before 5.16, or what forbids it) the objects
/// are looked at every 2 ms.
PLATFORM_API DWORD MsgWaitForMultipleObjects(DWORD count, const HANDLE *handles, BOOL all, DWORD milliseconds,
                                             DWORD mask);

// --- text -------------------------------------------------------------------------------------------------

/// By WM_GETTEXT: at most `size` bytes with the terminator, cut to fit; the length. 0 and an empty text when
/// there is none. The title of another process's window comes from what the machine knows of it.
PLATFORM_API int GetWindowTextA(HWND window, LPSTR text, int size);
/// The same from what the machine knows of the window, whoever's it is: no procedure is asked and no thread
/// waited for. 0 and an empty text on failure, with the last error: ERROR_INVALID_WINDOW_HANDLE when there
/// surely is no such window. A text that is merely empty leaves the last error alone.
PLATFORM_API int InternalGetWindowTextA(HWND window, LPSTR text, int size);
/// By WM_GETTEXTLENGTH.
PLATFORM_API int GetWindowTextLengthA(HWND window);
/// By WM_SETTEXT; null is empty.
PLATFORM_API BOOL SetWindowTextA(HWND window, LPCSTR text);

// --- showing ----------------------------------------------------------------------------------------------

/// Whether it was visible before. What follows for another process's window, its messages and rectangle,
/// comes to pass when its thread looks for messages.
PLATFORM_API BOOL ShowWindow(HWND window, int command);
/// The window itself and all that it stands in.
PLATFORM_API BOOL IsWindowVisible(HWND window);
PLATFORM_API BOOL IsIconic(HWND window);
PLATFORM_API BOOL IsZoomed(HWND window);
/// Whether it was disabled before. WM_ENABLE when that changes; a window that is disabled loses the focus.
PLATFORM_API BOOL EnableWindow(HWND window, BOOL enable);
PLATFORM_API BOOL IsWindowEnabled(HWND window);

// --- place ------------------------------------------------------------------------------------------------

/// In screen coordinates.
PLATFORM_API BOOL GetWindowRect(HWND window, RECT *rectangle);
/// From 0, 0: what the frame and scroll bars of its style leave; empty for an iconic one.
PLATFORM_API BOOL GetClientRect(HWND window, RECT *rectangle);
/// Both wrap around at the ends of what a LONG holds.
PLATFORM_API BOOL ScreenToClient(HWND window, POINT *point);
PLATFORM_API BOOL ClientToScreen(HWND window, POINT *point);
/// Moves, sizes, restacks, shows and hides: WM_WINDOWPOSCHANGING, whose receiver may change what is wanted,
/// and WM_WINDOWPOSCHANGED if anything changed, from which DefWindowProcA sends WM_MOVE and WM_SIZE. Sizes
/// below 0 count as 0, coordinates and sizes beyond 32,767 either way as that, here and wherever windows are
/// made or placed. `after`: HWND_TOP, HWND_BOTTOM, or a sibling, which it then stands behind; FALSE for what
/// is no window. HWND_TOPMOST and HWND_NOTOPMOST count as HWND_TOP: nothing stays before the others. A window
/// that is put somewhere or shown is activated, and so comes to the front, unless it is active already.
PLATFORM_API BOOL SetWindowPos(HWND window, HWND after, int x, int y, int width, int height, UINT flags);
PLATFORM_API BOOL MoveWindow(HWND window, int x, int y, int width, int height, BOOL repaint);
/// FALSE and ERROR_INVALID_PARAMETER unless `length` is 44.
PLATFORM_API BOOL GetWindowPlacement(HWND window, WINDOWPLACEMENT *placement);
/// Where the window stands when it is neither iconic nor zoomed, and then ShowWindow by `showCmd`.
PLATFORM_API BOOL SetWindowPlacement(HWND window, const WINDOWPLACEMENT *placement);
/// Adds to what is to be painted anew, all for null (Invalid_Rectangle of machine.h tells). A null window is
/// refused.
PLATFORM_API BOOL InvalidateRect(HWND window, const RECT *rectangle, BOOL erase);

// --- focus and foreground ---------------------------------------------------------------------------------

/// The window of this thread that keys go to; null takes it away. WM_KILLFOCUS, WM_SETFOCUS, and what makes
/// its topmost window, if that is this thread's, the active one; not the foreground's, unless the thread has
/// that or nobody. What had it before; null on failure, for a window that is disabled or iconic or stands in
/// one.
PLATFORM_API HWND SetFocus(HWND window);
PLATFORM_API HWND GetFocus();
/// The active window of the calling thread.
PLATFORM_API HWND GetActiveWindow();
/// The window becomes the one that the machine's user works with; always allowed. WM_ACTIVATE to what it
/// takes that from and to it, when their threads look for messages.
PLATFORM_API BOOL SetForegroundWindow(HWND window);
PLATFORM_API HWND GetForegroundWindow();
/// Of the window and the popups that it owns, the one that was active last; the window itself otherwise.
PLATFORM_API HWND GetLastActivePopup(HWND window);

// --- the system -------------------------------------------------------------------------------------------

/// Counted (Message_Beep_Count of machine.h).
PLATFORM_API BOOL MessageBeep(UINT type);
/// One of the SM_ measures, 0 for others. The screen is 1024 by 768, or as the settings "screen_width" and
/// "screen_height" say.
PLATFORM_API int GetSystemMetrics(int index);
/// Objects of a kind (GR_) that this process has: those of GDI, or windows, menus and icons. 0 on failure:
/// ERROR_INVALID_HANDLE unless `process` is what GetCurrentProcess gives, ERROR_INVALID_PARAMETER.
PLATFORM_API DWORD GetGuiResources(HANDLE process, DWORD kind);
}
