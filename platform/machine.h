#pragma once
// The machine itself: where it lives, its settings, and what a host or a test may lay hands on.
//
// A machine is a folder of the host. The environment's KELMARA_MACHINE names it; without it
// $XDG_DATA_HOME/kelmara (~/.local/share/kelmara) serves. It is made at first need, readable by its owner
// alone; a folder that belongs to somebody else, or holds other things, is refused. Processes with the same
// folder are on the same machine. Texts handed out are the machine's own and stay valid until the process
// enters another one. All calls may be made from any thread, except Enter_Machine and the installing of
// handlers: those belong before the threads.

#include <platform/types.h>

extern "C" {

/// The machine's folder as a host path, made if it is not there. Null when it cannot be made or is refused;
/// its code is the last error, and the reason is said on standard error, unless it is the last one that was.
/// What may pass is tried again with the next call; a refusal (ERROR_ACCESS_DENIED) stays, and so does that
/// no folder is named.
PLATFORM_API const char *Machine_Folder();

/// Why there is no machine in the folder that the environment names, and can be none: ERROR_ACCESS_DENIED
/// when it is a link, another user's, or open to be written by others, or its number is no file of this
/// user's own. 0 when nothing stands in the way, or this process is on a machine. Nothing is made and nothing
/// said.
PLATFORM_API LONG Machine_Refusal();

/// From here on this process is on the machine in that folder, made if need be. Handles to named objects
/// that it holds keep to the old machine. False and no change when the folder cannot be had;
/// the last error is ERROR_ACCESS_DENIED for one that is refused.
PLATFORM_API bool Enter_Machine(const char *folder);

/// Tells the machine that this process is on from others that it enters. A machine that nobody has asked for
/// yet counts if it is there, whole and this user's; otherwise 0, and nothing is made and nothing said.
PLATFORM_API unsigned long Machine_In_Force();

/// Gives up what this process has open by name: what nobody else has is gone from the machine, as it is at a
/// process's end. Handles stay usable, but a name leads to what this process had under it. For a process that
/// is about to end by a signal, and for one that only looks on.
PLATFORM_API void Leave_Machine();

/// Deletes the machine in that folder with everything that it has. Nobody may be on it any more, this process
/// included: what it still holds of the machine dies. False and no change for a folder that is no machine of
/// this user.
PLATFORM_API bool Remove_Machine(const char *folder);

/// A setting of `machine.conf`, lines of "name = value" with "#" before remarks, at a line's start or behind
/// a blank; names without regard to case, the last line of a name counts. Copied to `out` with its
/// terminator. False, and `out` untouched, when it is not set or does not fit. Other lines are skipped, and
/// reported once; a file of more than a megabyte is left aside.
PLATFORM_API bool Get_Machine_Setting(const char *name, char *out, unsigned long size);

/// Lets `value` stand for the setting in this process; null goes back to the file.
PLATFORM_API void Override_Machine_Setting(const char *name, const char *value);

/// Where a Windows path lies on the host; "c:\..." is below `drive_c` in the machine's folder, "z:\..." the
/// host's own root, and "d:\..." below `drive_d` when that folder is there or machine.conf has a setting
/// "drive_d". Letter case, doubled and forward slashes do not matter; relative paths count from the process's
/// current directory. Parts that do not exist keep the spelling they are given. False, `out` untouched, when
/// the path is empty or its drive is not there (ERROR_PATH_NOT_FOUND), has characters that no name can have
/// (ERROR_INVALID_NAME), begins with two separators (ERROR_BAD_NETPATH) or does not fit
/// (ERROR_FILENAME_EXCED_RANGE).
PLATFORM_API bool Host_Path(const char *windows_path, char *out, unsigned long size);

/// The way back. What lies on no other drive is on z:. What code page 1252 does not have becomes '?', and so
/// does what no Windows name can have; such a path does not lead back.
PLATFORM_API bool Windows_Path(const char *host_path, char *out, unsigned long size);

/// The path of an open registry key with the names as they are stored: "HKEY_LOCAL_MACHINE\Software\Classes",
/// also for HKEY_CLASSES_ROOT, which is the same key. `*size` in: the buffer's size; out: characters without
/// the terminator. A code as the registry's calls give; ERROR_MORE_DATA leaves the buffer as it was and
/// `*size` what is needed, terminator included.
PLATFORM_API LONG Registry_Key_Path(HKEY key, char *path, DWORD *size);

/// Answers message boxes instead of standard error; null restores that. `context` is handed through.
using MessageBoxHandler = int (*)(HWND owner, const char *text, const char *caption, UINT style,
                                  void *context);
PLATFORM_API void Set_Message_Box_Handler(MessageBoxHandler handler, void *context);

/// Takes what OutputDebugStringA is given; null is silence again.
using DebugOutputSink = void (*)(const char *text, void *context);
PLATFORM_API void Set_Debug_Output_Sink(DebugOutputSink sink, void *context);

/// Handles of every kind that this process has open, registry keys among them: what a test brings back to
/// where it was.
PLATFORM_API unsigned long Open_Handle_Count();

/// Windows of this process that have not been destroyed, objects of gdi.h that have not been given back,
/// menus and icons: what a test brings back to where it was.
PLATFORM_API unsigned long Window_Count();
PLATFORM_API unsigned long Gdi_Object_Count();
PLATFORM_API unsigned long Menu_Count();
PLATFORM_API unsigned long Icon_Count();

/// How often MessageBeep has sounded in this process.
PLATFORM_API unsigned long Message_Beep_Count();

/// What of a window is to be painted anew, in its client coordinates; false when nothing is. With `validate`
/// it counts as painted.
PLATFORM_API bool Invalid_Rectangle(HWND window, RECT *rectangle, bool validate);

// --- the hands of the machine's user
// ------------------------------------------------------------------------
//
// They work on windows of the calling thread, in the way a person does: what they do is put in the thread's
// queue, and before a call returns the queue has been worked off, each message dispatched as a program's loop
// would do it; where a window has controls that Tab stops at, by way of IsDialogMessageA. Keys go to the
// window with the focus, the pointer to what lies uppermost at its place. Places are on the screen. False
// when nothing could take what was done. A call from within a message that the hands brought about is
// refused.

/// Each character as its key, pressed and let go. False for null.
PLATFORM_API bool Type_Text(const char *text);
/// Presses a key (VK_) and lets it go, or does one of the two. A key that is held counts with the next ones.
PLATFORM_API bool Press_Key(UINT key);
PLATFORM_API bool Hold_Key(UINT key);
PLATFORM_API bool Release_Key(UINT key);

/// Moves the pointer: WM_SETCURSOR with what WM_NCHITTEST gave and the number of WM_MOUSEMOVE, and
/// WM_MOUSEMOVE itself inside a client area. A button's messages come in the same way.
PLATFORM_API bool Point_At(LONG x, LONG y);
/// At its middle; false when something else lies there, and nothing is done.
PLATFORM_API bool Point_At_Window(HWND window);
/// Points there, presses the left button and lets it go. The window's topmost one becomes the active one.
/// False when what lies there is disabled in all, or there is nothing.
PLATFORM_API bool Click_At(LONG x, LONG y);
/// At its middle; false when it is disabled or hidden, or something else lies there.
PLATFORM_API bool Click_Window(HWND window);
/// Clicks a line of a list box or combo box, for which it is scrolled and its list dropped as needed.
PLATFORM_API bool Choose_Line(HWND list, int line);

/// Writes a picture of the window with its frame, menu and controls, and the list of a combo box that is
/// down, as SVG to a host path. For windows of the calling thread; false, with the last error, when it is
/// none or the file cannot be written.
PLATFORM_API bool Snapshot_Window(HWND window, const char *host_path);
}
