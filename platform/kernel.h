#pragma once
// Handles, last error, mutexes, events, shared memory, modules and processes: the calls of KERNEL32 that are
// not about files (files.h).
//
// Every call may be made from any thread. A call that fails says why by GetLastError on the same thread; one
// that succeeds leaves the last error alone, except CreateMutexA, CreateEventA and CreateFileMappingA, which
// set it to 0 or ERROR_ALREADY_EXISTS. Named objects belong to the machine (see machine.h): every process on
// it meets the same object under the same name, and the name is gone with the last process that held it,
// killed ones included. A process starts others by a fresh program; one that forks without it does not take
// part, and the handles that it inherits are its parent's.

#include <platform/errors.h>
#include <platform/types.h>

/// Which Windows it is: see GetVersionExA.
struct OSVERSIONINFOA {
    DWORD dwOSVersionInfoSize;
    DWORD dwMajorVersion;
    DWORD dwMinorVersion;
    DWORD dwBuildNumber;
    DWORD dwPlatformId;
    char szCSDVersion[128];
};
static_assert(sizeof(OSVERSIONINFOA) == 148 && offsetof(OSVERSIONINFOA, szCSDVersion) == 20);

/// How a program is to be started. A started program has no use for anything of it yet: all but `cb` is 0.
struct STARTUPINFOA {
    DWORD cb;
    LPSTR lpReserved;
    LPSTR lpDesktop;
    LPSTR lpTitle;
    DWORD dwX;
    DWORD dwY;
    DWORD dwXSize;
    DWORD dwYSize;
    DWORD dwXCountChars;
    DWORD dwYCountChars;
    DWORD dwFillAttribute;
    DWORD dwFlags;
    WORD wShowWindow;
    WORD cbReserved2;
    BYTE *lpReserved2;
    HANDLE hStdInput;
    HANDLE hStdOutput;
    HANDLE hStdError;
};
static_assert(sizeof(STARTUPINFOA) == 68 && offsetof(STARTUPINFOA, dwFlags) == 44 &&
              offsetof(STARTUPINFOA, hStdInput) == 56);

/// A started program. Both handles are the caller's to close.
struct PROCESS_INFORMATION {
    HANDLE hProcess;
    HANDLE hThread;
    DWORD dwProcessId;
    DWORD dwThreadId;
};
static_assert(sizeof(PROCESS_INFORMATION) == 16);

extern "C" {

// --- handles and the last error ---------------------------------------------------------------------------

/// The calling thread's own: the code of errors.h that a call has set, as its comment tells.
PLATFORM_API DWORD GetLastError();
PLATFORM_API void SetLastError(DWORD code);

/// Closes any handle but a file search's (FindClose). A handle that is not open: FALSE, ERROR_INVALID_HANDLE.
PLATFORM_API BOOL CloseHandle(HANDLE handle);

// --- waiting, mutexes and events --------------------------------------------------------------------------

inline constexpr DWORD INFINITE = 0xFFFFFFFF;
inline constexpr DWORD WAIT_OBJECT_0 = 0;
inline constexpr DWORD WAIT_ABANDONED = 0x80;
inline constexpr DWORD WAIT_TIMEOUT = 0x102;
inline constexpr DWORD WAIT_FAILED = 0xFFFFFFFF;

/// A mutex that its owning thread may take again, and must release as often. `name` null: of this process
/// alone. Last error 0 for a fresh one; ERROR_ALREADY_EXISTS for one that was there, and `initial_owner` is
/// then ignored. Null on failure: ERROR_INVALID_HANDLE when the name is that of another kind of object,
/// ERROR_REVISION_MISMATCH when a process of another layout version or word size made it,
/// ERROR_FILENAME_EXCED_RANGE for a name of 260 characters or more, ERROR_TOO_MANY_OPEN_FILES,
/// ERROR_SHARING_VIOLATION when another process is stopped as it makes a name, ERROR_ACCESS_DENIED where the
/// machine, or what lies in it under that name, is not this user's alone. Names keep their letter case;
/// "Global\" and "Local\" in front mean nothing.
PLATFORM_API HANDLE CreateMutexA(const SECURITY_ATTRIBUTES *security, BOOL initial_owner, LPCSTR name);

/// FALSE and ERROR_NOT_OWNER when the calling thread does not own it. A mutex whose last handle in this
/// process is closed while a thread owns it stays that thread's until it ends, as far as other processes have
/// it.
PLATFORM_API BOOL ReleaseMutex(HANDLE mutex);

/// Waits until the calling thread owns the mutex: WAIT_OBJECT_0, or WAIT_ABANDONED when the last owner
/// ended, by thread or process, without releasing it; the caller owns it all the same, and the next one
/// gets WAIT_OBJECT_0 again. Waits until an event is set; one that is not manual is reset by that, in one
/// step, so that one wait of all ends for each time that it is set. Waits until a process has ended, or a
/// thread: one of _beginthreadex (runtime.h), or the one that a process began with. WAIT_TIMEOUT after
/// `milliseconds`, which may be 0 or INFINITE. WAIT_FAILED for anything that cannot be waited for, the own
/// process by GetCurrentProcess too. A handle that is closed meanwhile does not end a wait.
///
/// A wait sleeps until it is woken, and is at once; once a second it looks for itself, for a process may be
/// killed, or stopped, between taking what others wait for and waking them.
PLATFORM_API DWORD WaitForSingleObject(HANDLE handle, DWORD milliseconds);

inline constexpr DWORD EVENT_MODIFY_STATE = 0x2;
inline constexpr DWORD SYNCHRONIZE = 0x100000;
inline constexpr DWORD EVENT_ALL_ACCESS = 0x1F0003;

/// An event, which is set or not and never owned. `name` null: of this process alone. For an event that was
/// there, ERROR_ALREADY_EXISTS is the last error, and `manual` and `initial` are ignored. Null on failure, as
/// CreateMutexA.
PLATFORM_API HANDLE CreateEventA(const SECURITY_ATTRIBUTES *security, BOOL manual, BOOL initial, LPCSTR name);

/// An event that is there already, with all access whatever is asked for. Null on failure:
/// ERROR_FILE_NOT_FOUND when nobody holds one of that name, ERROR_INVALID_PARAMETER for no name, and as
/// CreateMutexA.
PLATFORM_API HANDLE OpenEventA(DWORD access, BOOL inherit_handle, LPCSTR name);

/// Sets an event. A manual one stays set and ends every wait that is under way, even if it is reset at once;
/// of more than 100 waits the later ones only look every 2 ms whether it is set, and a wait that answers a
/// sent message is not under way meanwhile. Another one ends the wait
/// that began first, of a thread that still lives, or stays set for the next. FALSE with
/// ERROR_SERVICE_REQUEST_TIMEOUT, and nothing changed, when a process that is stopped in a call on this event
/// keeps it for more than a second.
PLATFORM_API BOOL SetEvent(HANDLE event);
PLATFORM_API BOOL ResetEvent(HANDLE event);

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
/// it. A bare name that is loaded already is that module, wherever it lies; "kernel32", "advapi32",
/// "user32" and "gdi32" are the machine's own. Loading again counts, and gives the same handle. Null on
/// failure: ERROR_INVALID_PARAMETER without a name; ERROR_MOD_NOT_FOUND, also for what a module itself needs
/// (the debugger's sink hears what), ERROR_BAD_EXE_FORMAT for what is no module of this word size or is cut
/// short, ERROR_DLL_INIT_FAILED when the module's own `DllMain(module, 1, null)` threw or said no; one that
/// said no hears reason 0 at once. DllMain may load and free others, but must not wait for a thread that
/// does; nor may a module that the host loads by itself load others while it is initialised.
PLATFORM_API HMODULE LoadLibraryA(LPCSTR path);

/// LoadLibraryA with flags. With LOAD_LIBRARY_AS_DATAFILE nothing of the module runs and nothing of it can
/// be looked up: the handle says that it is there. With DONT_RESOLVE_DLL_REFERENCES its DllMain is not told.
PLATFORM_API HMODULE LoadLibraryExA(LPCSTR path, HANDLE reserved, DWORD flags);

/// An export of that module itself, not of what it depends on. Null and ERROR_PROC_NOT_FOUND when there is
/// none, for a null module too; ERROR_MOD_NOT_FOUND for what is no module with code.
PLATFORM_API FARPROC GetProcAddress(HMODULE module, LPCSTR name);

/// A module that is loaded already, not counted. Null `name`: the program.
PLATFORM_API HMODULE GetModuleHandleA(LPCSTR name);

/// The module's Windows path, at most `size` bytes with its terminator; cut and terminated when it does not
/// fit, and then `size` is the result and ERROR_INSUFFICIENT_BUFFER the last error. Otherwise the length; 0
/// on failure. Null module: the program.
PLATFORM_API DWORD GetModuleFileNameA(HMODULE module, LPSTR path, DWORD size);

/// Takes back one load; with the last, `DllMain(module, 0, null)` runs and the module goes. What
/// the program was linked with stays. FALSE and ERROR_MOD_NOT_FOUND for what is not loaded.
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

// --- processes --------------------------------------------------------------------------------------------

inline constexpr DWORD PROCESS_ALL_ACCESS = 0x1F0FFF;
inline constexpr DWORD STILL_ACTIVE = 259;

/// Starts a program: an ELF file of the host, on a drive of the machine or on z:. `program` is its path; null
/// takes it from the front of `command_line`, in quotes or up to a blank, and without quotes up to each
/// further blank in turn until a program is found. A bare name there is looked for as a module is
/// (LoadLibraryA). A name without an ending gets ".exe", and is tried as it stands after that. The program
/// finds the words of the command line in its argv as Windows' C runtime parts them: quotes keep blanks, a
/// doubled quote within quotes is a quote, a backslash counts for itself but for those in front of a quote.
///
/// `environment` holds "name=value" texts with a terminator each and one more at the end, null is the
/// caller's own; the program is on the caller's machine in any case. `directory` is a Windows path, null the
/// caller's current one. Standard input, output and error are the caller's; nothing else is inherited, and
/// signals are as for a fresh program. Nothing is left of a program that has ended, whether or not anybody
/// waits for it or keeps a handle; a caller that takes in its children by the host's own means, or ignores
/// SIGCHLD, takes the exit code away (0xC0000001 is told).
///
/// FALSE on failure, and `information` stays: ERROR_FILE_NOT_FOUND, ERROR_PATH_NOT_FOUND, ERROR_ACCESS_DENIED
/// for what the host may not run, ERROR_BAD_EXE_FORMAT for what it cannot, ERROR_DIRECTORY for a `directory`
/// that is none, ERROR_FILENAME_EXCED_RANGE for a command line of 32,768 characters or more,
/// ERROR_INVALID_PARAMETER for any `flags`, any `dwFlags` in `startup`, or neither program nor command line.
PLATFORM_API BOOL CreateProcessA(LPCSTR program, LPSTR command_line,
                                 const SECURITY_ATTRIBUTES *process_security,
                                 const SECURITY_ATTRIBUTES *thread_security, BOOL inherit_handles,
                                 DWORD flags, void *environment, LPCSTR directory,
                                 const STARTUPINFOA *startup, PROCESS_INFORMATION *information);

/// A handle to a process of the same user, which has all access whatever is asked for. Null on failure:
/// ERROR_INVALID_PARAMETER when there is no such process, or it has ended; ERROR_ACCESS_DENIED.
PLATFORM_API HANDLE OpenProcess(DWORD access, BOOL inherit_handle, DWORD process_id);

/// STILL_ACTIVE, or what the process ended with. The host carries the lowest 8 bits of what a program ends
/// itself with. TerminateProcess's code is whole for handles of the terminating process. Another end by a
/// signal is told as Windows tells its like: 0xC0000005 for a bad address, 0x80000003 for a breakpoint, 3 for
/// abort, 1 for SIGKILL, and so on. FALSE and ERROR_ACCESS_DENIED for a process that has ended and was not
/// started by CreateProcessA of this one: the host keeps its code from strangers.
PLATFORM_API BOOL GetExitCodeProcess(HANDLE process, DWORD *exit_code);

/// Ends a process where it stands, its exit routines not run; the end comes soon after the call. FALSE and
/// ERROR_ACCESS_DENIED when it has ended already.
PLATFORM_API BOOL TerminateProcess(HANDLE process, UINT exit_code);

/// Stands for the own process in the calls above and OpenProcessToken. Not to be closed.
PLATFORM_API HANDLE GetCurrentProcess();
/// Stands for the calling thread in OpenThreadToken. Not to be closed.
PLATFORM_API HANDLE GetCurrentThread();

/// STILL_ACTIVE, or what the thread ended with; for the thread that a process began with, as
/// GetExitCodeProcess for the process. FALSE and ERROR_INVALID_HANDLE for what is no thread.
PLATFORM_API BOOL GetExitCodeThread(HANDLE thread, DWORD *exit_code);

/// Ends the calling thread, with `code` if _beginthreadex started it. Unlike on Windows the objects on its
/// stack are destroyed on the way; a catch of everything has to throw on. From the thread that the process
/// began with it ends that one alone, and the process ends with the last.
[[noreturn]] PLATFORM_API void ExitThread(DWORD code);

/// Ends the process as the host's exit does: the program's exit routines run, then those of its modules
/// (their DllMain is not called). An exit routine may end the process again, with another code; other threads
/// run on meanwhile, and one that asks for the end waits for it. What the host sees are the lowest 8 bits of
/// `code`.
[[noreturn]] PLATFORM_API void ExitProcess(UINT code);
PLATFORM_API DWORD GetCurrentProcessId();

// --- the system -------------------------------------------------------------------------------------------

inline constexpr DWORD VER_PLATFORM_WIN32_WINDOWS = 1;
inline constexpr DWORD VER_PLATFORM_WIN32_NT = 2;

/// The Windows that the machine is by its setting "windows": 95, 98, me, nt4, 2000 or xp, which also stands
/// for any other word and for none. The setting "windows_version", "major.minor" or "major.minor.build",
/// gives other numbers to it. FALSE and ERROR_INSUFFICIENT_BUFFER unless `dwOSVersionInfoSize` is 148.
PLATFORM_API BOOL GetVersionExA(OSVERSIONINFOA *information);

inline constexpr UINT SEM_NOOPENFILEERRORBOX = 0x8000;

/// The process's error mode: the one before is the result. The machine shows no boxes of its own in any mode.
PLATFORM_API UINT SetErrorMode(UINT mode);

/// Milliseconds since the machine's start; wraps after 49.7 days.
PLATFORM_API DWORD GetTickCount();

/// 0 gives up the rest of the time slice.
PLATFORM_API void Sleep(DWORD milliseconds);

/// To the debugger's sink (machine.h), which is silent unless someone installs one. Null is ignored.
PLATFORM_API void OutputDebugStringA(LPCSTR text);

/// TRUE unless a text can be read from there: up to its terminator, or `most` bytes if that comes later.
/// Another thread may change that at any time. `most` 0: FALSE.
PLATFORM_API BOOL IsBadStringPtrA(LPCSTR text, UINT most);
/// TRUE unless all of `size` bytes can be read from there. Another thread may change that at any time. `size`
/// 0: FALSE.
PLATFORM_API BOOL IsBadReadPtr(const void *bytes, UINT size);

/// A breakpoint: a debugger of the host stops here. Without one it ends the process, as an unhandled
/// breakpoint does on Windows.
PLATFORM_API void DebugBreak();
}
