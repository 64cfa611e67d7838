#pragma once
// Handles, last error, mutexes, shared memory, modules and the process: the calls of KERNEL32.
//
// Every call may be made from any thread. A call that fails says why by GetLastError on the same thread; one
// that succeeds leaves the last error alone, except CreateMutexA and CreateFileMappingA, which set it to 0
// or ERROR_ALREADY_EXISTS. Named objects belong to the machine (see machine.h): every process on it meets
// the same object under the same name, and the name is gone with the last process that held it, killed ones
// included. A process starts others by a fresh program; one that forks without it does not take part.

#include <platform/errors.h>
#include <platform/types.h>

extern "C" {

// --- handles and the last error ---------------------------------------------------------------------------

PLATFORM_API DWORD GetLastError();
PLATFORM_API void SetLastError(DWORD code);

/// Closes any handle of this header. A handle that is not open: FALSE, ERROR_INVALID_HANDLE.
PLATFORM_API BOOL CloseHandle(HANDLE handle);

// --- mutexes ----------------------------------------------------------------------------------------------

inline constexpr DWORD INFINITE = 0xFFFFFFFF;
inline constexpr DWORD WAIT_OBJECT_0 = 0;
inline constexpr DWORD WAIT_ABANDONED = 0x80;
inline constexpr DWORD WAIT_TIMEOUT = 0x102;
inline constexpr DWORD WAIT_FAILED = 0xFFFFFFFF;

/// A mutex that its owning thread may take again, and must release as often. `name` null: of this process
/// alone. Last error 0 for a fresh one; ERROR_ALREADY_EXISTS for one that was there, and `initial_owner` is
/// then ignored. Null on failure: ERROR_INVALID_HANDLE when the name is that of another kind of object,
/// ERROR_REVISION_MISMATCH when a process of another layout version or word size made it,
/// ERROR_FILENAME_EXCED_RANGE for a name of 260 characters or more. Names keep their letter case; "Global\"
/// and "Local\" in front mean nothing.
PLATFORM_API HANDLE CreateMutexA(const SECURITY_ATTRIBUTES *security, BOOL initial_owner, LPCSTR name);

/// FALSE and ERROR_NOT_OWNER when the calling thread does not own it.
PLATFORM_API BOOL ReleaseMutex(HANDLE mutex);

/// Waits until the calling thread owns the mutex: WAIT_OBJECT_0, or WAIT_ABANDONED when the last owner
/// ended, by thread or process, without releasing it; the caller owns it all the same, and the next one
/// gets WAIT_OBJECT_0 again. WAIT_TIMEOUT after `milliseconds`, which may be 0 or INFINITE. WAIT_FAILED for
/// anything that cannot be waited for.
PLATFORM_API DWORD WaitForSingleObject(HANDLE handle, DWORD milliseconds);

// --- shared memory ----------------------------------------------------------------------------------------

inline constexpr DWORD PAGE_READONLY = 2;
inline constexpr DWORD PAGE_READWRITE = 4;
inline constexpr DWORD FILE_MAP_COPY = 1;
inline constexpr DWORD FILE_MAP_WRITE = 2;
inline constexpr DWORD FILE_MAP_READ = 4;
inline constexpr DWORD FILE_MAP_ALL_ACCESS = 0xF001F;

/// Memory that views of this and other processes share. Only memory without a file is to be had: `file` is
/// INVALID_HANDLE_VALUE. Fresh: zero-filled, last error 0. Known by its name already: last error
/// ERROR_ALREADY_EXISTS, the size that it has. Null on failure, as CreateMutexA; ERROR_COMMITMENT_LIMIT when
/// the memory is not to be had, all of it reserved here and now.
PLATFORM_API HANDLE CreateFileMappingA(HANDLE file, const SECURITY_ATTRIBUTES *security, DWORD protection,
                                       DWORD size_high, DWORD size_low, LPCSTR name);

/// `bytes` 0 maps all from the offset on; the offset is a multiple of 65,536. The view lives until
/// UnmapViewOfFile, whether or not the mapping's handle is closed before. Null on failure.
PLATFORM_API LPVOID MapViewOfFile(HANDLE mapping, DWORD access, DWORD offset_high, DWORD offset_low,
                                  DWORD bytes);

/// `view` is exactly what MapViewOfFile gave; otherwise FALSE, ERROR_INVALID_ADDRESS.
PLATFORM_API BOOL UnmapViewOfFile(const void *view);

// --- modules ----------------------------------------------------------------------------------------------

inline constexpr DWORD DONT_RESOLVE_DLL_REFERENCES = 1;
inline constexpr DWORD LOAD_LIBRARY_AS_DATAFILE = 2;
inline constexpr DWORD LOAD_WITH_ALTERED_SEARCH_PATH = 8;

/// Loads a module by its Windows path, or by its bare name from the folders of the search order: the
/// program's, the current one, the system's, the Windows folder, the PATH. Letter case does not matter. A
/// name without an ending gets ".dll"; where the host has the module as `name.so` or `libname.so`, that is
/// it. A bare name that is loaded already is that module, wherever it lies; "kernel32", "advapi32" and
/// "user32" are the machine's own. Loading again counts, and gives the same handle. Null on failure:
/// ERROR_MOD_NOT_FOUND, also for what a module itself needs (the debugger's sink hears what),
/// ERROR_BAD_EXE_FORMAT for what is no module of this word size or is cut short, ERROR_DLL_INIT_FAILED when
/// the module's own `DllMain(module, 1, null)` threw or said no; one that said no hears reason 0 at once.
/// DllMain may load and free others, but must not wait for a thread that does.
PLATFORM_API HMODULE LoadLibraryA(LPCSTR path);

/// LoadLibraryA with flags. With LOAD_LIBRARY_AS_DATAFILE nothing of the module runs and nothing of it can
/// be looked up: the handle says that it is there. With DONT_RESOLVE_DLL_REFERENCES its DllMain is not told.
PLATFORM_API HMODULE LoadLibraryExA(LPCSTR path, HANDLE reserved, DWORD flags);

/// An export of that module itself, not of what it depends on. Null and ERROR_PROC_NOT_FOUND when there is
/// none, for a null module too.
PLATFORM_API FARPROC GetProcAddress(HMODULE module, LPCSTR name);

/// A module that is loaded already, not counted. Null `name`: the program.
PLATFORM_API HMODULE GetModuleHandleA(LPCSTR name);

/// The module's Windows path, at most `size` bytes with its terminator; cut and terminated when it does not
/// fit, and then `size` is the result and ERROR_INSUFFICIENT_BUFFER the last error. Otherwise the length; 0
/// on failure. Null module: the program.
PLATFORM_API DWORD GetModuleFileNameA(HMODULE module, LPSTR path, DWORD size);

/// Takes back one load; with the last, `DllMain(module, 0, null)` runs and the module goes. FALSE and
/// ERROR_MOD_NOT_FOUND for what LoadLibraryA did not load, or no longer holds.
PLATFORM_API BOOL FreeLibrary(HMODULE module);

// --- wide and narrow text ---------------------------------------------------------------------------------

inline constexpr UINT CP_ACP = 0; // the default code page, which is 1252

/// Both convert `length` characters, a terminator among them being like any other, or with -1 all up to the
/// terminator and with it. `size` is the room in `out` in characters; with 0 nothing is written. The number
/// of characters that the result takes. 0 and nothing written on failure: ERROR_INSUFFICIENT_BUFFER when it
/// does not fit; ERROR_INVALID_PARAMETER for a code page other than 0 and 1252, a length of 0 or below -1, a
/// size below 0, no text, no `out` for it, or an `out` that is the text; ERROR_INVALID_FLAGS for any flag.
/// Every byte has its wide character and comes back as it was. What the code page does not have becomes the
/// first byte of `replacement`, '?' when that is null, and `*replaced` tells whether that happened; it may be
/// null.
PLATFORM_API int WideCharToMultiByte(UINT code_page, DWORD flags, const WCHAR *text, int length, LPSTR out,
                                     int size, LPCSTR replacement, BOOL *replaced);
PLATFORM_API int MultiByteToWideChar(UINT code_page, DWORD flags, LPCSTR text, int length, WCHAR *out,
                                     int size);

// --- the process ------------------------------------------------------------------------------------------

/// Runs the exit routines and ends the process. What the host sees are the lowest 8 bits of `code`.
[[noreturn]] PLATFORM_API void ExitProcess(UINT code);
PLATFORM_API DWORD GetCurrentProcessId();

/// Milliseconds since the machine's start; wraps after 49.7 days.
PLATFORM_API DWORD GetTickCount();

/// 0 gives up the rest of the time slice.
PLATFORM_API void Sleep(DWORD milliseconds);

/// To the debugger's sink (machine.h), which is silent unless someone installs one. Null is ignored.
PLATFORM_API void OutputDebugStringA(LPCSTR text);
}
