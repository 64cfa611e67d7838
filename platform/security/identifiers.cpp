#include <platform/security/identifiers.h>

#include <platform/kernel/outcome.h>

#include <cstdlib>
#include <cstring>

namespace {

constexpr BYTE Most_To_Allocate = 8;

}

extern "C" {

BOOL AllocateAndInitializeSid(const SID_IDENTIFIER_AUTHORITY *authority, BYTE count, DWORD first,
                              DWORD second, DWORD third, DWORD fourth, DWORD fifth, DWORD sixth,
                              DWORD seventh, DWORD eighth, PSID *sid) {
    if (!authority || !sid) return Succeed_Or_Tell(ERROR_INVALID_PARAMETER);
    if (count > Most_To_Allocate) return Succeed_Or_Tell(ERROR_INVALID_SID);
    const DWORD numbers[Most_To_Allocate] = {first, second, third, fourth, fifth, sixth, seventh, eighth};
    auto *block = static_cast<BYTE *>(std::malloc(Size_Of_Sid(count)));
    if (!block) return Succeed_Or_Tell(ERROR_NOT_ENOUGH_MEMORY);
    block[offsetof(SID, Revision)] = Sid_Revision;
    block[offsetof(SID, SubAuthorityCount)] = count;
    std::memcpy(block + offsetof(SID, IdentifierAuthority), authority, sizeof *authority);
    std::memcpy(block + offsetof(SID, SubAuthority), numbers, count * sizeof(DWORD));
    *sid = block;
    return TRUE;
}

PSID FreeSid(PSID sid) {
    std::free(sid);
    return nullptr;
}

BOOL IsValidSid(PSID sid) {
    const auto *block = static_cast<const BYTE *>(sid);
    return block && block[offsetof(SID, Revision)] == Sid_Revision &&
           block[offsetof(SID, SubAuthorityCount)] <= Most_Sub_Authorities;
}

BOOL EqualSid(PSID left, PSID right) {
    if (!IsValidSid(left) || !IsValidSid(right)) return FALSE;
    const BYTE count = static_cast<const BYTE *>(left)[offsetof(SID, SubAuthorityCount)];
    const bool same_size = count == static_cast<const BYTE *>(right)[offsetof(SID, SubAuthorityCount)];
    return same_size && std::memcmp(left, right, Size_Of_Sid(count)) == 0;
}
}
