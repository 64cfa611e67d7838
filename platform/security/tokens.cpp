#include <platform/security/administrator.h>
#include <platform/security/identifiers.h>

#include <platform/kernel/handle_table.h>
#include <platform/kernel/outcome.h>
#include <platform/kernel/windows_version.h>

#include <cstring>
#include <vector>

namespace {

constexpr SID_IDENTIFIER_AUTHORITY World_Authority = {{0, 0, 0, 0, 0, 1}};
constexpr DWORD Mandatory_And_Enabled = 7;
constexpr DWORD May_Own = 8;

// What a token was opened for; whom it tells of is the process's user.
class TokenObject final : public KernelObject {
  public:
    explicit TokenObject(DWORD access) : KernelObject(ObjectKind::Token), access_(access) {}
    bool May_Query() const { return access_ & TOKEN_QUERY; }

  private:
    ~TokenObject() override = default;

    const DWORD access_;
};

struct Group {
    SID_IDENTIFIER_AUTHORITY authority;
    BYTE count;
    DWORD numbers[2];
    DWORD attributes;
};

constexpr Group Everyone = {World_Authority, 1, {0, 0}, Mandatory_And_Enabled};
constexpr Group Administrators = {SECURITY_NT_AUTHORITY,
                                  2,
                                  {SECURITY_BUILTIN_DOMAIN_RID, DOMAIN_ALIAS_RID_ADMINS},
                                  Mandatory_And_Enabled | May_Own};
constexpr Group Users = {
    SECURITY_NT_AUTHORITY, 2, {SECURITY_BUILTIN_DOMAIN_RID, DOMAIN_ALIAS_RID_USERS}, Mandatory_And_Enabled};

std::vector<Group> Groups_Of_The_User() {
    std::vector<Group> groups = {Everyone};
    if (Is_Administrator()) groups.push_back(Administrators);
    groups.push_back(Users);
    return groups;
}

DWORD Head_Size(const std::vector<Group> &groups) {
    return static_cast<DWORD>(offsetof(TOKEN_GROUPS, Groups) + groups.size() * sizeof(SID_AND_ATTRIBUTES));
}

DWORD Needed_Size(const std::vector<Group> &groups) {
    DWORD size = Head_Size(groups);
    for (const Group &group : groups) size += Size_Of_Sid(group.count);
    return size;
}

void Write_Groups(const std::vector<Group> &groups, BYTE *out) {
    const auto count = static_cast<DWORD>(groups.size());
    BYTE *sid = out + Head_Size(groups);
    std::memcpy(out, &count, sizeof count);
    out += offsetof(TOKEN_GROUPS, Groups);
    for (const Group &group : groups) {
        const SID_AND_ATTRIBUTES entry = {sid, group.attributes};
        std::memcpy(out, &entry, sizeof entry);
        out += sizeof entry;
        sid[offsetof(SID, Revision)] = Sid_Revision;
        sid[offsetof(SID, SubAuthorityCount)] = group.count;
        std::memcpy(sid + offsetof(SID, IdentifierAuthority), &group.authority, sizeof group.authority);
        std::memcpy(sid + offsetof(SID, SubAuthority), group.numbers, group.count * sizeof(DWORD));
        sid += Size_Of_Sid(group.count);
    }
}

bool Has_Tokens() {
    return Windows_Of_This_Machine().nt;
}

long Open_Token(HANDLE process, DWORD access, HANDLE *token) {
    if (!Has_Tokens()) return ERROR_CALL_NOT_IMPLEMENTED;
    if (!token) return ERROR_INVALID_PARAMETER;
    const HandleUse use(process, ObjectKind::Process);
    if (!use && process != GetCurrentProcess()) return ERROR_INVALID_HANDLE;
    const HANDLE handle = Open_Handle(new TokenObject(access));
    if (!handle) return ERROR_NOT_ENOUGH_QUOTA;
    *token = handle;
    return NO_ERROR;
}

long Tell_Groups(HANDLE token, TOKEN_INFORMATION_CLASS what, void *out, DWORD size, DWORD *needed) {
    if (!Has_Tokens()) return ERROR_CALL_NOT_IMPLEMENTED;
    const HandleUse use(token, ObjectKind::Token);
    if (!use) return ERROR_INVALID_HANDLE;
    if (what != TokenGroups || !needed) return ERROR_INVALID_PARAMETER;
    if (!use.As<TokenObject>().May_Query()) return ERROR_ACCESS_DENIED;
    const std::vector<Group> groups = Groups_Of_The_User();
    *needed = Needed_Size(groups);
    if (!out || size < *needed) return ERROR_INSUFFICIENT_BUFFER;
    Write_Groups(groups, static_cast<BYTE *>(out));
    return NO_ERROR;
}

} // namespace

extern "C" {

BOOL OpenThreadToken(HANDLE thread, DWORD, BOOL, HANDLE *) {
    return Succeed_Or_Tell(Code_Of([=] {
        if (!Has_Tokens()) return ERROR_CALL_NOT_IMPLEMENTED;
        const bool is_thread = thread == GetCurrentThread() || HandleUse(thread, ObjectKind::Thread);
        return is_thread ? ERROR_NO_TOKEN : ERROR_INVALID_HANDLE;
    }));
}

BOOL OpenProcessToken(HANDLE process, DWORD access, HANDLE *token) {
    return Succeed_Or_Tell(Code_Of([=] { return Open_Token(process, access, token); }));
}

BOOL GetTokenInformation(HANDLE token, TOKEN_INFORMATION_CLASS what, void *out, DWORD size, DWORD *needed) {
    return Succeed_Or_Tell(Code_Of([=] { return Tell_Groups(token, what, out, size, needed); }));
}
}
