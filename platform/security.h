#pragma once
// Who a process runs as: tokens, and the identifiers of users and groups. The calls of ADVAPI32.
//
// A token tells the groups of the host's user: Everyone, Users, and Administrators when the setting
// "administrator" is yes; without it when the user is root or in one of the host's groups sudo, wheel and
// admin. Windows 95, 98 and Me have no tokens: ERROR_CALL_NOT_IMPLEMENTED there. All calls may be made from
// any thread.

#include <platform/errors.h>
#include <platform/types.h>

struct SID_IDENTIFIER_AUTHORITY {
    BYTE Value[6];
};
inline constexpr SID_IDENTIFIER_AUTHORITY SECURITY_NT_AUTHORITY = {{0, 0, 0, 0, 0, 5}};
inline constexpr DWORD SECURITY_BUILTIN_DOMAIN_RID = 32;
inline constexpr DWORD DOMAIN_ALIAS_RID_USERS = 545;
inline constexpr DWORD DOMAIN_ALIAS_RID_ADMINS = 544;

/// An identifier: as many sub-authorities as it says follow one another.
struct SID {
    BYTE Revision; // 1
    BYTE SubAuthorityCount;
    SID_IDENTIFIER_AUTHORITY IdentifierAuthority;
    DWORD SubAuthority[1];
};
static_assert(sizeof(SID) == 12 && offsetof(SID, SubAuthority) == 8);
using PSID = void *;

struct SID_AND_ATTRIBUTES {
    PSID Sid;
    DWORD Attributes;
};
static_assert(sizeof(SID_AND_ATTRIBUTES) == 8);

/// As many groups as it says follow one another; their identifiers lie behind them in the same block.
struct TOKEN_GROUPS {
    DWORD GroupCount;
    SID_AND_ATTRIBUTES Groups[1];
};
static_assert(sizeof(TOKEN_GROUPS) == 12 && offsetof(TOKEN_GROUPS, Groups) == 4);

inline constexpr DWORD TOKEN_QUERY = 8;
enum TOKEN_INFORMATION_CLASS : int { TokenGroups = 2 };

extern "C" {

// --- tokens -----------------------------------------------------------------------------------------------

/// Of GetCurrentThread. No thread acts for another user here: FALSE, ERROR_NO_TOKEN.
PLATFORM_API BOOL OpenThreadToken(HANDLE thread, DWORD access, BOOL open_as_self, HANDLE *token);

/// Of GetCurrentProcess, or of a process handle: they all run as this user. The caller closes `token`.
PLATFORM_API BOOL OpenProcessToken(HANDLE process, DWORD access, HANDLE *token);

/// TokenGroups into `out`, which has room for `size` bytes; `needed` gets what that takes. FALSE and
/// ERROR_INSUFFICIENT_BUFFER when it does not fit, `out` untouched, null for instance; ERROR_ACCESS_DENIED
/// for a token opened without TOKEN_QUERY; ERROR_INVALID_PARAMETER for any other class and a null `needed`.
PLATFORM_API BOOL GetTokenInformation(HANDLE token, TOKEN_INFORMATION_CLASS what, void *out, DWORD size,
                                      DWORD *needed);

// --- identifiers ------------------------------------------------------------------------------------------

/// A new identifier of `count` sub-authorities, the first of the eight; FreeSid gives it back. FALSE and
/// ERROR_INVALID_SID for more than eight.
PLATFORM_API BOOL AllocateAndInitializeSid(const SID_IDENTIFIER_AUTHORITY *authority, BYTE count, DWORD first,
                                           DWORD second, DWORD third, DWORD fourth, DWORD fifth, DWORD sixth,
                                           DWORD seventh, DWORD eighth, PSID *sid);
/// Null. A null `sid` is ignored.
PLATFORM_API PSID FreeSid(PSID sid);

/// Revision 1, and no more than 15 sub-authorities. FALSE for null.
PLATFORM_API BOOL IsValidSid(PSID sid);

/// FALSE for identifiers that differ, and for any that is not valid.
PLATFORM_API BOOL EqualSid(PSID left, PSID right);
}
