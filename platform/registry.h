#pragma once
// The machine's registry: the calls of ADVAPI32, in their narrow forms.
//
// Keys and values belong to the machine: what one process sets, the next read of any process sees, and
// RegFlushKey puts it on the disk. A process killed at any moment leaves every value whose call had returned.
// Names keep the letter case they were made with and are found without regard to it. Values come in the
// order in which they were first set, subkeys in alphabetical order. Calls return a code of errors.h, not by
// GetLastError:
//     2 no such key or value, 5 access or subkeys in the way, 6 not an open key, 87 bad argument,
//     112 disk full, 234 buffer too small, 259 past the last index, 1009 the stored registry is not one (it
//     is left as it is), 1018 the key was deleted while open.
// A key handle may be used from any thread. Sizes are in bytes.

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

// REGSAM: what an open key may be used for. Anything else: ERROR_ACCESS_DENIED from the call that needs it.
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

/// Opens `path` below `parent`; null or empty opens `parent` itself anew. On failure `*key` is null.
PLATFORM_API LONG RegOpenKeyExA(HKEY parent, LPCSTR path, DWORD options, DWORD access, HKEY *key);
/// The same with every access that is to be had; null or empty gives `parent` itself back.
PLATFORM_API LONG RegOpenKeyA(HKEY parent, LPCSTR path, HKEY *key);
/// Opens `path` below `parent` and makes what is missing of it. `disposition` may be null. A part of a path
/// has at most 255 characters. Only options 0 are to be had: otherwise ERROR_INVALID_PARAMETER.
PLATFORM_API LONG RegCreateKeyExA(HKEY parent, LPCSTR path, DWORD reserved, LPSTR class_name, DWORD options,
                                  DWORD access, const SECURITY_ATTRIBUTES *security, HKEY *key,
                                  DWORD *disposition);
PLATFORM_API LONG RegCloseKey(HKEY key);
/// Deletes one key with its values; ERROR_ACCESS_DENIED while it has subkeys.
PLATFORM_API LONG RegDeleteKeyA(HKEY parent, LPCSTR path);
PLATFORM_API LONG RegDeleteValueA(HKEY key, LPCSTR name);

/// The default value of `path` below `key` as text. `*size` in: the buffer's size; out: what the text takes
/// with its terminator. A key without a default value has an empty one.
PLATFORM_API LONG RegQueryValueA(HKEY key, LPCSTR path, LPSTR data, LONG *size);
/// `name` null or empty is the default value. `type`, `data` and `size` may be null; without `data` only the
/// size is told. ERROR_MORE_DATA leaves the size needed in `*size`, and the buffer's content undefined.
/// Text that fits with room to spare gets a terminator behind it when it was stored without one.
PLATFORM_API LONG RegQueryValueExA(HKEY key, LPCSTR name, DWORD *reserved, DWORD *type, BYTE *data,
                                   DWORD *size);
PLATFORM_API LONG RegSetValueExA(HKEY key, LPCSTR name, DWORD reserved, DWORD type, const BYTE *data,
                                 DWORD size);

/// `*name_size` in: the buffer with room for the terminator; out: characters without it. `reserved` is null;
/// the class and the time may be null.
PLATFORM_API LONG RegEnumKeyExA(HKEY key, DWORD index, LPSTR name, DWORD *name_size, DWORD *reserved,
                                LPSTR class_name, DWORD *class_size, FILETIME *last_write);
/// `type`, `data` and `size` may be null.
PLATFORM_API LONG RegEnumValueA(HKEY key, DWORD index, LPSTR name, DWORD *name_size, DWORD *reserved,
                                DWORD *type, BYTE *data, DWORD *size);
/// Any of the outputs may be null. Longest names are counted without their terminators, data in bytes.
PLATFORM_API LONG RegQueryInfoKeyA(HKEY key, LPSTR class_name, DWORD *class_size, DWORD *reserved,
                                   DWORD *subkeys, DWORD *longest_subkey, DWORD *longest_class, DWORD *values,
                                   DWORD *longest_value_name, DWORD *longest_value_data, DWORD *security_size,
                                   FILETIME *last_write);
/// Returns when all that was set so far, by any process, is on the disk.
PLATFORM_API LONG RegFlushKey(HKEY key);
}
