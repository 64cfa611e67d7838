#pragma once
// Files, folders, drives, the folders of Windows and its settings files: the file calls of KERNEL32.
//
// A path is a Windows path in code page 1252, of any letter case, with doubled or forward slashes, relative
// to the current directory or not (machine.h says where it leads). Null counts as empty. A call that fails
// says why by GetLastError, leaves its outputs alone, and changes nothing on the disk:
//     ERROR_PATH_NOT_FOUND        the path is empty, its drive or a folder on the way is not there, or the
//                                 full path has 260 characters or more
//     ERROR_FILENAME_EXCED_RANGE  the text has more than 260 characters
//     ERROR_INVALID_NAME          a character that no name can have, a name of more than 255 characters, or
//                                 a separator behind what is no folder
//     ERROR_FILE_NOT_FOUND        all but the last name is there
//     ERROR_ACCESS_DENIED         the host's permissions, the read-only attribute, or the wrong kind of thing
// All calls may be made from any thread; the current directory is the whole process's. Whoever makes a name
// looks first, with all of the machine's processes shut out, whether it is there in another letter case: no
// call of the machine makes a second spelling.

#include <platform/errors.h>
#include <platform/types.h>

inline constexpr DWORD FILE_ATTRIBUTE_READONLY = 0x1;
inline constexpr DWORD FILE_ATTRIBUTE_DIRECTORY = 0x10;
inline constexpr DWORD FILE_ATTRIBUTE_ARCHIVE = 0x20;
inline constexpr DWORD FILE_ATTRIBUTE_NORMAL = 0x80;
inline constexpr DWORD FILE_ATTRIBUTE_REPARSE_POINT = 0x400; // a link of the host
inline constexpr DWORD INVALID_FILE_ATTRIBUTES = 0xFFFFFFFF;

/// What FindFirstFileA and FindNextFileA tell of an entry. There are no short names: that field is empty.
struct WIN32_FIND_DATAA {
    DWORD dwFileAttributes;
    FILETIME ftCreationTime;
    FILETIME ftLastAccessTime;
    FILETIME ftLastWriteTime;
    DWORD nFileSizeHigh;
    DWORD nFileSizeLow;
    DWORD dwReserved0;
    DWORD dwReserved1;
    char cFileName[MAX_PATH];
    char cAlternateFileName[14];
};
static_assert(sizeof(WIN32_FIND_DATAA) == 320 && offsetof(WIN32_FIND_DATAA, nFileSizeHigh) == 28 &&
              offsetof(WIN32_FIND_DATAA, cFileName) == 44 &&
              offsetof(WIN32_FIND_DATAA, cAlternateFileName) == 304);

union ULARGE_INTEGER {
    struct {
        DWORD LowPart;
        DWORD HighPart;
    } u;
    unsigned long long QuadPart;
};
static_assert(sizeof(ULARGE_INTEGER) == 8);

inline constexpr UINT DRIVE_UNKNOWN = 0;
inline constexpr UINT DRIVE_NO_ROOT_DIR = 1;
inline constexpr UINT DRIVE_REMOVABLE = 2;
inline constexpr UINT DRIVE_FIXED = 3;
inline constexpr UINT DRIVE_REMOTE = 4;
inline constexpr UINT DRIVE_CDROM = 5;
inline constexpr UINT DRIVE_RAMDISK = 6;

extern "C" {

// --- files and folders ------------------------------------------------------------------------------------

/// Makes one level. ERROR_ALREADY_EXISTS when the name is taken, by a file too; ERROR_FILENAME_EXCED_RANGE
/// when the full path has 248 characters or more, so that a file can lie in the folder.
PLATFORM_API BOOL CreateDirectoryA(LPCSTR path, const SECURITY_ATTRIBUTES *security);

/// ERROR_DIR_NOT_EMPTY, ERROR_DIRECTORY for a file, ERROR_SHARING_VIOLATION for the current directory of this
/// process, ERROR_ACCESS_DENIED for a drive's root and a read-only folder. Of a link to a folder the link
/// goes, and the folder stays.
PLATFORM_API BOOL RemoveDirectoryA(LPCSTR path);

/// ERROR_ACCESS_DENIED for a read-only file and a folder, ERROR_SHARING_VIOLATION for a file that a process
/// of the machine has open as a stream (runtime.h).
PLATFORM_API BOOL DeleteFileA(LPCSTR path);

/// INVALID_FILE_ATTRIBUTES on failure. Read-only is what the host's owner may not write; every file has the
/// archive attribute, no folder has. Links tell of what they lead to.
PLATFORM_API DWORD GetFileAttributesA(LPCSTR path);

/// Sets or clears read-only; the other three of the four that files and folders can have are taken and not
/// kept. ERROR_INVALID_PARAMETER for any further one. A read-only folder takes no new names, as the host has
/// it.
PLATFORM_API BOOL SetFileAttributesA(LPCSTR path, DWORD attributes);

/// The entries of a folder that match `pattern`, its last name, whose "*" and "?" mean what they do to
/// Windows: "*.*" is every name, "*." each without a dot, "?" at the end or before a dot may be nothing. In
/// the order of capital letters, "." and ".." first except in a drive's root. They are those that were there
/// at the first call; those that are gone by their turn are left out. INVALID_HANDLE_VALUE on failure:
/// ERROR_FILE_NOT_FOUND when nothing matches, ERROR_PATH_NOT_FOUND when the folder is missing,
/// ERROR_DIRECTORY when it is a file. An entry whose name Windows cannot have is shown with "?" in it.
PLATFORM_API HANDLE FindFirstFileA(LPCSTR pattern, WIN32_FIND_DATAA *data);

/// FALSE and ERROR_NO_MORE_FILES at the end.
PLATFORM_API BOOL FindNextFileA(HANDLE find, WIN32_FIND_DATAA *data);

/// Closes what FindFirstFileA gave, and nothing else; CloseHandle does not.
PLATFORM_API BOOL FindClose(HANDLE find);

// --- the folders of Windows, and the current one ----------------------------------------------------------

/// The folder's path in `out`, which has room for `size` characters: its length. When it does not fit, the
/// room that it needs with its terminator, and `out` stays. The folders are made if they are not
/// there and can be. "C:\WINDOWS\TEMP\", with its separator:
PLATFORM_API DWORD GetTempPathA(DWORD size, LPSTR out);
/// "C:\WINDOWS".
PLATFORM_API UINT GetWindowsDirectoryA(LPSTR out, UINT size);
/// "C:\WINDOWS\system32"; under Windows 95, 98 and Me "C:\WINDOWS\SYSTEM".
PLATFORM_API UINT GetSystemDirectoryA(LPSTR out, UINT size);
/// The current directory, in the same way; without a separator at its end but for a root.
PLATFORM_API DWORD GetCurrentDirectoryA(DWORD size, LPSTR out);

/// ERROR_DIRECTORY for a file, ERROR_FILENAME_EXCED_RANGE when the full path has more than 258 characters.
PLATFORM_API BOOL SetCurrentDirectoryA(LPCSTR path);

// --- drives -----------------------------------------------------------------------------------------------

/// The roots of all drives in the order of letters, "A:\" and so on, each with its terminator and one more at
/// the end: the length without that. When it does not fit, the room that it needs, and `out` stays.
PLATFORM_API DWORD GetLogicalDriveStringsA(DWORD size, LPSTR out);

/// A DRIVE_ number by the settings "drive_a" to "drive_y": fixed, removable, cdrom, remote or ramdisk. c:, z:
/// and a drive without a setting, or with an empty one, are fixed; DRIVE_UNKNOWN for any other word,
/// DRIVE_NO_ROOT_DIR for what is no drive's root. Null `root`: the current drive.
PLATFORM_API UINT GetDriveTypeA(LPCSTR root);

/// The disk that `root`, or any folder, lies on; null: the current one. The free space and the size are the
/// host's, or in bytes the settings "drive_c_free" and "drive_c_size". Sectors per cluster, bytes per sector,
/// free clusters and all clusters; any may be null. Their product wraps at 32 bits on a large disk, but under
/// Windows 95, 98 and Me no disk shows more than 2 GB.
PLATFORM_API BOOL GetDiskFreeSpaceA(LPCSTR root, DWORD *sectors_per_cluster, DWORD *bytes_per_sector,
                                    DWORD *free_clusters, DWORD *clusters);

/// Bytes free to the caller, of the disk, and free to all; any may be null. Windows 95 does not have this
/// call: GetProcAddress does not find it there.
PLATFORM_API BOOL GetDiskFreeSpaceExA(LPCSTR folder, ULARGE_INTEGER *free_to_caller, ULARGE_INTEGER *size,
                                      ULARGE_INTEGER *free);

// --- settings files ---------------------------------------------------------------------------------------

/// A value of a file of "[section]" and "key = value" lines: at most `size` characters with the terminator,
/// cut to fit; the length. Section and key are found without regard to case, the first one counts; quotes
/// around the whole value are taken off. Null `section` lists all sections, null `key` the section's keys,
/// each with its terminator and one more at the end, cut to `size` - 2. Without the file, the section or the
/// value `fallback` stands for it, null being empty, its blanks at the end taken off, and the last error
/// says why: ERROR_FILE_NOT_FOUND for what is not there. A bare `file` lies in the Windows folder. Lines
/// that begin with ";" mean nothing, and so does what is beyond a file's first megabyte.
PLATFORM_API DWORD GetPrivateProfileStringA(LPCSTR section, LPCSTR key, LPCSTR fallback, LPSTR out,
                                            DWORD size, LPCSTR file);
}
