#pragma once
// The machine's registry: the calls of ADVAPI32, in their narrow forms.
//
// Keys and values belong to the machine: what one process sets, the next read of any process sees, and
// RegFlushKey puts it on the disk. A process killed at any moment leaves every value whose call had returned.
// Names keep the letter case they were made with and are found without regard to it, in code page 1252.
// Values come in the order in which they were first set, subkeys in alphabetical order. Calls return a code
// of errors.h, not by GetLastError:
//     2 no such key or value, 4 too many files are open, 5 a right that the handle was not opened with,
//     subkeys in the way, or no write access to the machine's folder, 6 not an open key, 8 out of memory, 32
//     another process is stopped with a lock of the machine, 87 bad argument, 112 disk full, 161 a path that
//     begins with a backslash, 234 buffer too small, 259 past the last index, 1009 the stored registry is not
//     one (it is left as it is), 1018 the key was deleted while open: only RegCloseKey works.
// A key handle may be used from any thread. Handles of a machine that the process has left are no open keys
// (RegCloseKey closes them all the same). Sizes are in bytes; outputs of a call that fails are untouched but
// for what its comment says. In a path, backslashes at the end and more than one between two names mean
// nothing. The predefined roots and what leads to them cannot be deleted: ERROR_ACCESS_DENIED.

#include <platform/errors.h>
#include <platform/types.h>

inline const HKEY HKEY_CLASSES_ROOT =
    reinterpret_cast<HKEY>(0x80000000u); // HKEY_LOCAL_MACHINE\Software\Classes
inline const HKEY HKEY_CURRENT_USER = reinterpret_cast<HKEY>(0x80000001u); // the user's key of HKEY_USERS
inline const HKEY HKEY_LOCAL_MACHINE = reinterpret_cast<HKEY>(0x80000002u);
inline const HKEY HKEY_USERS = reinterpret_cast<HKEY>(0x80000003u);
inline const HKEY HKEY_PERFORMANCE_DATA =
    reinterpret_cast<HKEY>(0x80000004u); // cannot be used: ERROR_INVALID_HANDLE
inline const HKEY HKEY_CURRENT_CONFIG = reinterpret_cast<HKEY>(0x80000005u);
inline const HKEY HKEY_DYN_DATA = reinterpret_cast<HKEY>(0x80000006u); // cannot be used: ERROR_INVALID_HANDLE

inline constexpr DWORD REG_NONE = 0;
inline constexpr DWORD REG_SZ = 1;
inline constexpr DWORD REG_EXPAND_SZ = 2;
inline constexpr DWORD REG_BINARY = 3;
inline constexpr DWORD REG_DWORD = 4;
inline constexpr DWORD REG_DWORD_BIG_ENDIAN = 5;
inline constexpr DWORD REG_LINK = 6;
inline constexpr DWORD REG_MULTI_SZ = 7;
inline constexpr DWORD REG_QWORD = 11;

inline constexpr DWORD REG_OPTION_NON_VOLATILE = 0;
inline constexpr DWORD REG_CREATED_NEW_KEY = 1;
inline constexpr DWORD REG_OPENED_EXISTING_KEY = 2;

// REGSAM: what an open key may be used for: reading values and counts, setting and deleting values, listing
// subkeys. Anything else: ERROR_ACCESS_DENIED from the call that needs it; opening with none at all, too.
// Making and deleting subkeys goes by the machine's folder and not by the handle, so every open key will do.
inline constexpr DWORD KEY_QUERY_VALUE = 0x1;
inline constexpr DWORD KEY_SET_VALUE = 0x2;
inline constexpr DWORD KEY_CREATE_SUB_KEY = 0x4;
inline constexpr DWORD KEY_ENUMERATE_SUB_KEYS = 0x8;
inline constexpr DWORD KEY_NOTIFY = 0x10;
inline constexpr DWORD KEY_CREATE_LINK = 0x20;
inline constexpr DWORD KEY_READ = 0x20019;
inline constexpr DWORD KEY_WRITE = 0x20006;
inline constexpr DWORD KEY_ALL_ACCESS = 0xF003F;
inline constexpr DWORD MAXIMUM_ALLOWED = 0x02000000;

extern "C" {

/// Opens `path` below `parent`; null or empty opens `parent` itself anew. On failure `*key` is null. Options
/// mean nothing.
PLATFORM_API LONG RegOpenKeyExA(HKEY parent, LPCSTR path, DWORD options, DWORD access, HKEY *key);
/// The same with every access that is to be had; null or empty gives `parent` itself back.
PLATFORM_API LONG RegOpenKeyA(HKEY parent, LPCSTR path, HKEY *key);
/// Opens `path` below `parent` and makes what is missing of it, all or nothing; null or empty opens `parent`
/// itself anew. The class, 255 characters at most, goes to the last key if that is made. `disposition` may be
/// null. A name in a path has at most 255 characters. Only options 0 are to be had: otherwise
/// ERROR_INVALID_PARAMETER. On failure `*key` is null.
PLATFORM_API LONG RegCreateKeyExA(HKEY parent, LPCSTR path, DWORD reserved, LPSTR class_name, DWORD options,
                                  DWORD access, const SECURITY_ATTRIBUTES *security, HKEY *key,
                                  DWORD *disposition);
PLATFORM_API LONG RegCloseKey(HKEY key);
/// Deletes one key with its values; ERROR_ACCESS_DENIED while it has subkeys, under every setting of
/// "windows". An empty path is `parent`
/// itself, a null one ERROR_INVALID_PARAMETER.
PLATFORM_API LONG RegDeleteKeyA(HKEY parent, LPCSTR path);
PLATFORM_API LONG RegDeleteValueA(HKEY key, LPCSTR name);

/// The default value of `path` below `key` as text. `*size` in: the buffer's size; out: what the text takes
/// with its terminator, also when ERROR_MORE_DATA says that this was too little. A key without a default
/// value has an empty one; ERROR_INVALID_DATA for one that is not REG_SZ or REG_EXPAND_SZ.
PLATFORM_API LONG RegQueryValueA(HKEY key, LPCSTR path, LPSTR data, LONG *size);
/// `name` null or empty is the default value. `type`, `data` and `size` may be null, `size` not beside
/// `data`; without `data` only the size is told. ERROR_MORE_DATA leaves the type, the size needed in `*size`,
/// and the buffer as it was. Text (REG_SZ, REG_EXPAND_SZ, REG_MULTI_SZ) that fits with room to spare gets a
/// terminator behind it, not counted in `*size`, when it was stored without one.
PLATFORM_API LONG RegQueryValueExA(HKEY key, LPCSTR name, DWORD *reserved, DWORD *type, BYTE *data,
                                   DWORD *size);
/// Stores any type code, and the bytes as they are. `data` may be null for 0 bytes. A name has at most 16,383
/// characters: otherwise ERROR_INVALID_PARAMETER; data at most 64 MB: otherwise ERROR_NOT_ENOUGH_MEMORY. A
/// value that is overwritten keeps its place and the case of its name. All registries end at 512 MB:
/// ERROR_DISK_FULL.
PLATFORM_API LONG RegSetValueExA(HKEY key, LPCSTR name, DWORD reserved, DWORD type, const BYTE *data,
                                 DWORD size);

/// `*name_size` in: the buffer with room for the terminator; out: characters without it. `reserved` is null;
/// the class and the time may be null. ERROR_MORE_DATA when name or class do not fit: no buffer is touched
/// and each size is what is needed, terminator included.
PLATFORM_API LONG RegEnumKeyExA(HKEY key, DWORD index, LPSTR name, DWORD *name_size, DWORD *reserved,
                                LPSTR class_name, DWORD *class_size, FILETIME *last_write);
/// `type`, `data` and `size` may be null. ERROR_MORE_DATA when name or data do not fit: no buffer is touched,
/// `*name_size` is what is needed, terminator included, and `*size` what the data takes.
PLATFORM_API LONG RegEnumValueA(HKEY key, DWORD index, LPSTR name, DWORD *name_size, DWORD *reserved,
                                DWORD *type, BYTE *data, DWORD *size);
/// Any of the outputs may be null. Longest names are counted without their terminators, data in bytes. The
/// class as in RegEnumKeyExA, the other outputs given even when it does not fit. Keys have no security: size
/// 0.
PLATFORM_API LONG RegQueryInfoKeyA(HKEY key, LPSTR class_name, DWORD *class_size, DWORD *reserved,
                                   DWORD *subkeys, DWORD *longest_subkey, DWORD *longest_class, DWORD *values,
                                   DWORD *longest_value_name, DWORD *longest_value_data, DWORD *security_size,
                                   FILETIME *last_write);
/// Returns when all that was set so far, by any process, is on the disk.
PLATFORM_API LONG RegFlushKey(HKEY key);
}
