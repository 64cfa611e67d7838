#pragma once
// Message boxes, and what other processes show: the calls of USER32.

#include <platform/errors.h>
#include <platform/types.h>

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

extern "C" {

/// Shows a message and gives back the button that was chosen. Without a handler (machine.h) the message goes
/// to standard error and the default button is the answer. Null texts count as empty, a null caption as
/// "Error". 0 and ERROR_INVALID_MSGBOX_STYLE for a set of buttons that does not exist. In a process that is
/// ending, and from within a handler, nothing is shown and the default button is the answer.
PLATFORM_API int MessageBoxA(HWND owner, LPCSTR text, LPCSTR caption, UINT style);

/// Until a program waits for its user's input. No program of the machine has windows to wait for it at, and
/// of a console program Windows says at once what is said here: WAIT_FAILED, ERROR_NOT_GUI_PROCESS, or
/// ERROR_INVALID_HANDLE for what is no process.
PLATFORM_API DWORD WaitForInputIdle(HANDLE process, DWORD milliseconds);
}
