#pragma once
// The numbers that windows are spoken to with: styles, messages, commands, flags. What controls add to them
// stands with the controls.

#include <platform/types.h>

// --- styles -----------------------------------------------------------------------------------------------

inline constexpr DWORD WS_OVERLAPPED = 0x0;
inline constexpr DWORD WS_POPUP = 0x80000000;
inline constexpr DWORD WS_CHILD = 0x40000000;
inline constexpr DWORD WS_MINIMIZE = 0x20000000;
inline constexpr DWORD WS_VISIBLE = 0x10000000;
inline constexpr DWORD WS_DISABLED = 0x08000000;
inline constexpr DWORD WS_CLIPSIBLINGS = 0x04000000;
inline constexpr DWORD WS_CLIPCHILDREN = 0x02000000;
inline constexpr DWORD WS_MAXIMIZE = 0x01000000;
inline constexpr DWORD WS_BORDER = 0x00800000;
inline constexpr DWORD WS_DLGFRAME = 0x00400000;
inline constexpr DWORD WS_CAPTION = WS_BORDER | WS_DLGFRAME;
inline constexpr DWORD WS_VSCROLL = 0x00200000;
inline constexpr DWORD WS_HSCROLL = 0x00100000;
inline constexpr DWORD WS_SYSMENU = 0x00080000;
inline constexpr DWORD WS_THICKFRAME = 0x00040000;
inline constexpr DWORD WS_GROUP = 0x00020000;
inline constexpr DWORD WS_TABSTOP = 0x00010000;
inline constexpr DWORD WS_MINIMIZEBOX = 0x00020000;
inline constexpr DWORD WS_MAXIMIZEBOX = 0x00010000;
inline constexpr DWORD WS_OVERLAPPEDWINDOW =
    WS_CAPTION | WS_SYSMENU | WS_THICKFRAME | WS_MINIMIZEBOX | WS_MAXIMIZEBOX;

inline constexpr DWORD WS_EX_DLGMODALFRAME = 0x1;
inline constexpr DWORD WS_EX_TOPMOST = 0x8;
inline constexpr DWORD WS_EX_WINDOWEDGE = 0x100;
inline constexpr DWORD WS_EX_CLIENTEDGE = 0x200;
inline constexpr DWORD WS_EX_STATICEDGE = 0x20000;

inline constexpr int CW_USEDEFAULT = static_cast<int>(0x80000000u);

// --- messages ---------------------------------------------------------------------------------------------

inline constexpr UINT WM_NULL = 0;
inline constexpr UINT WM_CREATE = 1;
inline constexpr UINT WM_DESTROY = 2;
inline constexpr UINT WM_MOVE = 3;
inline constexpr UINT WM_SIZE = 5;
inline constexpr UINT WM_ACTIVATE = 6;
inline constexpr UINT WM_SETFOCUS = 7;
inline constexpr UINT WM_KILLFOCUS = 8;
inline constexpr UINT WM_ENABLE = 10;
inline constexpr UINT WM_SETREDRAW = 11;
inline constexpr UINT WM_SETTEXT = 12;
inline constexpr UINT WM_GETTEXT = 13;
inline constexpr UINT WM_GETTEXTLENGTH = 14;
inline constexpr UINT WM_CLOSE = 16;
inline constexpr UINT WM_QUIT = 18;
inline constexpr UINT WM_SHOWWINDOW = 24;
inline constexpr UINT WM_CANCELMODE = 31;
inline constexpr UINT WM_SETCURSOR = 32;
inline constexpr UINT WM_SETFONT = 48;
inline constexpr UINT WM_GETFONT = 49;
inline constexpr UINT WM_WINDOWPOSCHANGING = 70;
inline constexpr UINT WM_WINDOWPOSCHANGED = 71;
inline constexpr UINT WM_NCCREATE = 129;
inline constexpr UINT WM_NCDESTROY = 130;
inline constexpr UINT WM_NCHITTEST = 132;
inline constexpr UINT WM_GETDLGCODE = 135;
inline constexpr UINT WM_KEYDOWN = 256;
inline constexpr UINT WM_KEYUP = 257;
inline constexpr UINT WM_CHAR = 258;
inline constexpr UINT WM_COMMAND = 273;
inline constexpr UINT WM_MOUSEMOVE = 512;
inline constexpr UINT WM_LBUTTONDOWN = 513;
inline constexpr UINT WM_LBUTTONUP = 514;
inline constexpr UINT WM_USER = 1024;
inline constexpr UINT WM_APP = 0x8000;

inline constexpr WPARAM WA_INACTIVE = 0;
inline constexpr WPARAM WA_ACTIVE = 1;
inline constexpr WPARAM SIZE_RESTORED = 0;
inline constexpr WPARAM SIZE_MINIMIZED = 1;
inline constexpr WPARAM SIZE_MAXIMIZED = 2;
inline constexpr LRESULT HTTRANSPARENT = -1;
inline constexpr LRESULT HTNOWHERE = 0;
inline constexpr LRESULT HTCLIENT = 1;
inline constexpr LRESULT HTCAPTION = 2;
inline constexpr LRESULT HTBORDER = 18;
inline constexpr WPARAM MK_LBUTTON = 1;

// --- keys: letters and digits have their capital character's number
// ------------------------------------------

inline constexpr UINT VK_BACK = 8;
inline constexpr UINT VK_TAB = 9;
inline constexpr UINT VK_RETURN = 13;
inline constexpr UINT VK_SHIFT = 16;
inline constexpr UINT VK_CONTROL = 17;
inline constexpr UINT VK_ESCAPE = 27;
inline constexpr UINT VK_SPACE = 32;
inline constexpr UINT VK_PRIOR = 33;
inline constexpr UINT VK_NEXT = 34;
inline constexpr UINT VK_END = 35;
inline constexpr UINT VK_HOME = 36;
inline constexpr UINT VK_LEFT = 37;
inline constexpr UINT VK_UP = 38;
inline constexpr UINT VK_RIGHT = 39;
inline constexpr UINT VK_DOWN = 40;
inline constexpr UINT VK_DELETE = 46;
inline constexpr UINT VK_F4 = 115;
inline constexpr UINT VK_PACKET = 231; // any other character

// --- what calls are given ---------------------------------------------------------------------------------

inline constexpr int GWL_WNDPROC = -4;
inline constexpr int GWL_ID = -12;
inline constexpr int GWL_STYLE = -16;
inline constexpr int GWL_EXSTYLE = -20;
inline constexpr int GWL_USERDATA = -21;

inline constexpr UINT GW_HWNDFIRST = 0;
inline constexpr UINT GW_HWNDLAST = 1;
inline constexpr UINT GW_HWNDNEXT = 2;
inline constexpr UINT GW_HWNDPREV = 3;
inline constexpr UINT GW_OWNER = 4;
inline constexpr UINT GW_CHILD = 5;

inline constexpr int SW_HIDE = 0;
inline constexpr int SW_SHOWNORMAL = 1;
inline constexpr int SW_SHOWMINIMIZED = 2;
inline constexpr int SW_SHOWMAXIMIZED = 3;
inline constexpr int SW_SHOWNOACTIVATE = 4;
inline constexpr int SW_SHOW = 5;
inline constexpr int SW_MINIMIZE = 6;
inline constexpr int SW_SHOWMINNOACTIVE = 7;
inline constexpr int SW_SHOWNA = 8;
inline constexpr int SW_RESTORE = 9;

inline constexpr UINT SWP_NOSIZE = 0x1;
inline constexpr UINT SWP_NOMOVE = 0x2;
inline constexpr UINT SWP_NOZORDER = 0x4;
inline constexpr UINT SWP_NOREDRAW = 0x8;
inline constexpr UINT SWP_NOACTIVATE = 0x10;
inline constexpr UINT SWP_FRAMECHANGED = 0x20;
inline constexpr UINT SWP_SHOWWINDOW = 0x40;
inline constexpr UINT SWP_HIDEWINDOW = 0x80;
inline constexpr UINT SWP_NOSENDCHANGING = 0x400;

inline const HWND HWND_TOP = nullptr;
inline const HWND HWND_BOTTOM = reinterpret_cast<HWND>(1);
inline const HWND HWND_TOPMOST = reinterpret_cast<HWND>(-1);
inline const HWND HWND_NOTOPMOST = reinterpret_cast<HWND>(-2);

inline constexpr UINT WPF_RESTORETOMAXIMIZED = 2;

inline constexpr UINT PM_NOREMOVE = 0;
inline constexpr UINT PM_REMOVE = 1;

inline constexpr DWORD QS_KEY = 0x1;
inline constexpr DWORD QS_MOUSEMOVE = 0x2;
inline constexpr DWORD QS_MOUSEBUTTON = 0x4;
inline constexpr DWORD QS_POSTMESSAGE = 0x8;
inline constexpr DWORD QS_SENDMESSAGE = 0x40;
inline constexpr DWORD QS_ALLEVENTS = 0xBF;
inline constexpr DWORD QS_ALLINPUT = 0xFF;
inline constexpr DWORD QS_ALLPOSTMESSAGE = 0x100;

inline constexpr int SM_CXSCREEN = 0;
inline constexpr int SM_CYSCREEN = 1;
inline constexpr int SM_CXVSCROLL = 2;
inline constexpr int SM_CYHSCROLL = 3;
inline constexpr int SM_CYCAPTION = 4;
inline constexpr int SM_CXBORDER = 5;
inline constexpr int SM_CYBORDER = 6;
inline constexpr int SM_CXDLGFRAME = 7;
inline constexpr int SM_CYDLGFRAME = 8;
inline constexpr int SM_CXICON = 11;
inline constexpr int SM_CYICON = 12;
inline constexpr int SM_CYMENU = 15;
inline constexpr int SM_CXFRAME = 32;
inline constexpr int SM_CYFRAME = 33;
inline constexpr int SM_CXEDGE = 45;
inline constexpr int SM_CYEDGE = 46;
inline constexpr int SM_CXSMICON = 49;
inline constexpr int SM_CYSMICON = 50;

inline constexpr DWORD GR_GDIOBJECTS = 0;
inline constexpr DWORD GR_USEROBJECTS = 1;
