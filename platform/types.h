#pragma once
// The types that every call of the machine is written in: 32 bits wide where Windows has 32 bits.
//
// A `long`, a pointer and a handle are 4 bytes here. Wide characters are `unsigned short`, never `wchar_t`.

#include <cstddef>
#include <cstdint>

#if defined(BUILDING_KELMARA_PLATFORM)
#define PLATFORM_API __attribute__((visibility("default")))
#else
#define PLATFORM_API
#endif

static_assert(sizeof(long) == 4 && sizeof(void *) == 4, "the machine has 32-bit words: build with -m32");

using BOOL = int;
using BYTE = unsigned char;
using WORD = unsigned short;
using DWORD = unsigned long;
using UINT = unsigned int;
using LONG = long;
using WCHAR = unsigned short;
using LPVOID = void *;
using LPCSTR = const char *;
using LPSTR = char *;
using LPDWORD = DWORD *;

inline constexpr BOOL TRUE = 1;
inline constexpr BOOL FALSE = 0;
inline constexpr int MAX_PATH = 260; // bytes of a path, terminator included

/// A handle is a small number, a multiple of 4; null and INVALID_HANDLE_VALUE are none.
using HANDLE = void *;
inline const HANDLE INVALID_HANDLE_VALUE = reinterpret_cast<HANDLE>(-1L);

struct HKEY__;
struct HINSTANCE__;
struct HWND__;
using HKEY = HKEY__ *;
using HINSTANCE = HINSTANCE__ *;
using HMODULE = HINSTANCE;
using HWND = HWND__ *;
using FARPROC = void (*)();

struct HBITMAP__;
struct HDC__;
struct HFONT__;
struct HICON__;
struct HMENU__;
struct HPALETTE__;
using HBITMAP = HBITMAP__ *;
using HDC = HDC__ *;
using HGDIOBJ = void *;
using HFONT = HFONT__ *;
using HICON = HICON__ *;
using HMENU = HMENU__ *;
using HPALETTE = HPALETTE__ *;
using ATOM = WORD;
using WPARAM = UINT;
using LPARAM = LONG;
using LRESULT = LONG;

struct POINT {
    LONG x;
    LONG y;
};

struct SIZE {
    LONG cx;
    LONG cy;
};

/// Pixels; right and bottom lie outside.
struct RECT {
    LONG left;
    LONG top;
    LONG right;
    LONG bottom;
};
static_assert(sizeof(POINT) == 8 && sizeof(SIZE) == 8 && sizeof(RECT) == 16);

struct SECURITY_ATTRIBUTES {
    DWORD nLength;
    void *lpSecurityDescriptor;
    BOOL bInheritHandle;
};
static_assert(sizeof(SECURITY_ATTRIBUTES) == 12);

struct FILETIME {
    DWORD dwLowDateTime;
    DWORD dwHighDateTime;
};
static_assert(sizeof(FILETIME) == 8);

struct _GUID {
    unsigned long Data1;
    unsigned short Data2;
    unsigned short Data3;
    unsigned char Data4[8];
};
using GUID = _GUID;
static_assert(sizeof(GUID) == 16);
