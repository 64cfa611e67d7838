#pragma once
// Sizes of identifiers.

#include <platform/security.h>

inline constexpr BYTE Sid_Revision = 1;
inline constexpr BYTE Most_Sub_Authorities = 15;

inline DWORD Size_Of_Sid(BYTE sub_authorities) {
    return static_cast<DWORD>(offsetof(SID, SubAuthority) + sub_authorities * sizeof(DWORD));
}
