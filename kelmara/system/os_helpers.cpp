#include <kelmara/system/os_helpers.h>

#include <kelmara/foundation/memory.h>

#include <platform/kernel.h>
#include <platform/runtime.h>
#include <platform/security.h>

#include <cstring>
#include <utility>

struct WeakAPICallLayout {
    static_assert(offsetof(CWeakAPICall, m_Library) == 0 && offsetof(CWeakAPICall, m_Module) == 256);
};

namespace {

constexpr DWORD Unknown_Platform = 0xFFFFFFFF;

DWORD Get_Version(OSVERSIONINFOA &version) {
    version = {};
    version.dwOSVersionInfoSize = sizeof version;
    return GetVersionExA(&version) ? version.dwPlatformId : Unknown_Platform;
}

class Token {
  public:
    Token() {
        if (OpenThreadToken(GetCurrentThread(), TOKEN_QUERY, FALSE, &m_Handle)) return;
        if (GetLastError() == static_cast<DWORD>(ERROR_NO_TOKEN))
            OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &m_Handle);
    }
    ~Token() {
        if (m_Handle) CloseHandle(m_Handle);
    }
    Token(const Token &) = delete;
    Token &operator=(const Token &) = delete;
    HANDLE Get() const { return m_Handle; }

  private:
    HANDLE m_Handle = nullptr;
};

// The groups of a token; null when they cannot be had.
class Groups {
  public:
    explicit Groups(HANDLE token) {
        DWORD size = 0;
        if (GetTokenInformation(token, TokenGroups, nullptr, 0, &size) ||
            GetLastError() != static_cast<DWORD>(ERROR_INSUFFICIENT_BUFFER))
            return;
        void *block = size <= sizeof m_Small ? m_Small : Allocate(size);
        if (block && GetTokenInformation(token, TokenGroups, block, size, &size))
            m_Groups = static_cast<TOKEN_GROUPS *>(block);
    }
    ~Groups() {
        if (m_Large) ds_free(m_Large);
    }
    Groups(const Groups &) = delete;
    Groups &operator=(const Groups &) = delete;
    const TOKEN_GROUPS *Get() const { return m_Groups; }

  private:
    void *Allocate(DWORD size) { return m_Large = ds_malloc(static_cast<long>((size + 3) & ~3UL)); }

    alignas(TOKEN_GROUPS) char m_Small[4096]; // enough for most, so that no memory services are needed
    void *m_Large = nullptr;
    const TOKEN_GROUPS *m_Groups = nullptr;
};

class AdministratorsSid {
  public:
    AdministratorsSid() {
        const SID_IDENTIFIER_AUTHORITY authority = SECURITY_NT_AUTHORITY;
        AllocateAndInitializeSid(&authority, 2, SECURITY_BUILTIN_DOMAIN_RID, DOMAIN_ALIAS_RID_ADMINS, 0, 0, 0,
                                 0, 0, 0, &m_Sid);
    }
    ~AdministratorsSid() {
        if (m_Sid) FreeSid(m_Sid);
    }
    AdministratorsSid(const AdministratorsSid &) = delete;
    AdministratorsSid &operator=(const AdministratorsSid &) = delete;
    PSID Get() const { return m_Sid; }

  private:
    PSID m_Sid = nullptr;
};

bool Holds(const TOKEN_GROUPS &groups, PSID sid) {
    for (DWORD i = 0; i < groups.GroupCount; ++i) {
        if (EqualSid(groups.Groups[i].Sid, sid)) return true;
    }
    return false;
}

} // namespace

CWeakAPICall::CWeakAPICall() = default;

CWeakAPICall::CWeakAPICall(const CWeakAPICall &other) {
    Copy_From(other);
}

CWeakAPICall &CWeakAPICall::operator=(const CWeakAPICall &other) {
    if (this == &other) return *this;
    CWeakAPICall copy(other);
    std::swap(m_Library, copy.m_Library);
    std::swap(m_Module, copy.m_Module);
    return *this;
}

CWeakAPICall::~CWeakAPICall() {
    Drop();
}

void CWeakAPICall::Drop() {
    if (m_Module) FreeLibrary(m_Module);
    m_Module = nullptr;
    m_Library[0] = 0;
}

// By its own path: what the name led to may be another library by now.
void CWeakAPICall::Copy_From(const CWeakAPICall &other) {
    char path[MAX_PATH];
    const DWORD length = other.m_Module ? GetModuleFileNameA(other.m_Module, path, sizeof path) : 0;
    if (length > 0 && length < sizeof path) m_Module = LoadLibraryA(path);
    if (other.m_Module && !m_Module) m_Module = LoadLibraryA(other.m_Library);
    if (m_Module != other.m_Module) Drop();
    if (other.m_Module && !m_Module) return;
    std::memcpy(m_Library, other.m_Library, sizeof m_Library);
}

void *CWeakAPICall::Load_Call(const char *library, const char *name) {
    if (!library || !name || std::strlen(library) >= sizeof m_Library) return nullptr;
    if (std::strcmp(library, m_Library) != 0) {
        Drop();
        std::memcpy(m_Library, library, std::strlen(library) + 1);
        m_Module = LoadLibraryA(m_Library);
    }
    return m_Module ? reinterpret_cast<void *>(GetProcAddress(m_Module, name)) : nullptr;
}

long RunProcess(char *commandLine) {
    STARTUPINFOA startup = {};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION started = {};
    if (!CreateProcessA(nullptr, commandLine, nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                        &started))
        return ERROR_FILE_NOT_FOUND;
    CloseHandle(started.hThread);
    CloseHandle(started.hProcess);
    return 0;
}

int RunningAsAdministrator() {
    OSVERSIONINFOA version;
    const DWORD platform = Get_Version(version);
    if (platform == Unknown_Platform) return 0;
    if (platform != VER_PLATFORM_WIN32_NT) return 1;
    const Token token;
    if (!token.Get()) return 0;
    const Groups groups(token.Get());
    if (!groups.Get()) return 0;
    const AdministratorsSid administrators;
    return administrators.Get() && Holds(*groups.Get(), administrators.Get()) ? 1 : 0;
}

void CheckOsVersion(unsigned long &flags) {
    OSVERSIONINFOA version;
    flags = Os_Other;
    const DWORD platform = Get_Version(version);
    if (platform == VER_PLATFORM_WIN32_NT) flags = version.dwMajorVersion == 5 ? Os_NT_5 : Os_NT;
    if (platform != VER_PLATFORM_WIN32_WINDOWS || version.dwMajorVersion != 4) return;
    if (version.dwMinorVersion == 0) flags = Os_Windows_95;
    if (version.dwMinorVersion == 10) flags = Os_Windows_98;
    if (version.dwMinorVersion == 90) flags = Os_Windows_Me;
}

long RangeRandom(long low, long high) {
    const unsigned long count = static_cast<unsigned long>(high) - static_cast<unsigned long>(low) + 1;
    const long product = static_cast<long>(static_cast<unsigned long>(Machine_Rand()) * count);
    return static_cast<long>(static_cast<unsigned long>(low) +
                             static_cast<unsigned long>(product / Machine_Rand_Max));
}

void NullProc() {}

void Debugger() {
    DebugBreak();
}
