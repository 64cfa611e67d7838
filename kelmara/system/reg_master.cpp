#include <kelmara/system/reg_master.h>

#include <kelmara/foundation/memory.h>
#include <kelmara/system/key_copy.h>

#include <platform/kernel.h>
#include <platform/user.h>

#include <cstdio>
#include <cstring>

namespace {

constexpr unsigned long Default_Buffer_Size = 256;
constexpr unsigned long Default_Value_Size = 261;
constexpr int Path_Buffer_Size = 256;

constexpr char Policy_Key[] = "Software\\Microsoft\\Windows\\CurrentVersion\\Policies\\System";

struct KeyInfo {
    DWORD subkeys = 0, longest_subkey = 0, values = 0, longest_value_name = 0, longest_value = 0;
};

LONG Query_Info(HKEY key, KeyInfo &info) {
    return RegQueryInfoKeyA(key, nullptr, nullptr, nullptr, &info.subkeys, &info.longest_subkey, nullptr,
                            &info.values, &info.longest_value_name, &info.longest_value, nullptr, nullptr);
}

void Tell(unsigned long *out, unsigned long number) {
    if (out) *out = number;
}

bool Has_Several_Subkeys(HKEY key) {
    KeyInfo info;
    return Query_Info(key, info) == ERROR_SUCCESS && info.subkeys > 1;
}

void Clear_Behind_String(char *buffer, unsigned long capacity) {
    char *const end = static_cast<char *>(std::memchr(buffer, 0, capacity));
    if (end) std::memset(end, 0, static_cast<std::size_t>(buffer + capacity - end));
}

// As the registry takes letters for the same, in code page 1252.
unsigned char Capital(unsigned char letter) {
    const bool plain = letter >= 'a' && letter <= 'z';
    const bool accented = letter >= 0xE0 && letter <= 0xFE && letter != 0xF7;
    if (plain || accented) return static_cast<unsigned char>(letter - 0x20);
    if (letter == 0x9A || letter == 0x9C || letter == 0x9E) return static_cast<unsigned char>(letter - 0x10);
    return letter == 0xFF ? 0x9F : letter;
}

// Past a run of backslashes; one at the end of a path means nothing.
const char *Past_Separators(const char *path) {
    while (*path == '\\') ++path;
    return path;
}

enum class PathRelation { Other, Same, Below };

// What `path` is, seen from `other`.
PathRelation Relation_Of(const char *path, const char *other) {
    for (;; ++path, ++other) {
        if (*path == '\\' || *other == '\\') {
            const bool both_end_here = (*path == '\\' || !*path) && (*other == '\\' || !*other);
            if (!both_end_here) return PathRelation::Other;
            path = Past_Separators(path);
            other = Past_Separators(other);
            if (*path && !*other) return PathRelation::Below;
        }
        if (Capital(static_cast<unsigned char>(*path)) != Capital(static_cast<unsigned char>(*other))) {
            return PathRelation::Other;
        }
        if (!*path) return PathRelation::Same;
    }
}

} // namespace

CRegMaster::CRegMaster() = default;

CRegMaster::CRegMaster(const CRegMaster &other)
    : CAutoDeleteableObject(other), m_ClearStringTail(other.m_ClearStringTail) {
    Open_As(other);
}

CRegMaster &CRegMaster::operator=(const CRegMaster &other) {
    if (this == &other) return *this;
    Close_All();
    m_ClearStringTail = other.m_ClearStringTail;
    Open_As(other);
    return *this;
}

CRegMaster::~CRegMaster() {
    Close_All();
}

void CRegMaster::Open_As(const CRegMaster &other) {
    m_RootKey = other.m_RootKey;
    if (!other.m_CurrentKey) return;
    CDSList &paths = const_cast<CDSList &>(other.m_PathStack);
    for (long level = paths.Entries(0) - 1; level >= 0; --level) {
        if (!Push_Path(static_cast<char *>(paths.GetEntry(level, 0)))) return Close_All();
    }
    if (Open_Existing_Key(other.m_CurrentKey, nullptr, &m_CurrentKey) != ERROR_SUCCESS) Close_All();
}

void CRegMaster::Close_Current_Key() {
    if (m_CurrentKey) RegCloseKey(m_CurrentKey);
    m_CurrentKey = nullptr;
}

void CRegMaster::Close_All() {
    m_PathStack.DeleteAllEntriesAsPointers(0);
    Close_Current_Key();
}

// --- navigation -------------------------------------------------------------------------------------------

bool CRegMaster::OpenKey(HKEY root, const char *path) {
    return Open_From_Root(root, path, Open_Existing_Key);
}

bool CRegMaster::CreateKey(HKEY root, const char *path) {
    return Open_From_Root(root, path, Open_Or_Make_Key);
}

// The path goes onto the stack first: where there is no memory for it, no key is made.
bool CRegMaster::Open_From_Root(HKEY root, const char *path, Opener open) {
    Close_All();
    if (path && !Push_Path(path)) return false;
    HKEY key = nullptr;
    if (open(root, path, &key) != ERROR_SUCCESS) {
        Close_All();
        return false;
    }
    m_CurrentKey = key;
    m_RootKey = root;
    return true;
}

bool CRegMaster::OpenSubkey(const char *name) {
    return Go_Down(name, Open_Existing_Key);
}

bool CRegMaster::OpenSubkey(int index) {
    char name[Name_Buffer_Size] = {};
    GetSubkey(static_cast<unsigned long>(index), name);
    return *name && OpenSubkey(name);
}

bool CRegMaster::CreateSubkey(const char *name) {
    return Go_Down(name, Open_Or_Make_Key);
}

bool CRegMaster::Go_Down(const char *name, Opener open) {
    char path[Path_Buffer_Size];
    if (!m_CurrentKey || !name || !Compose_Path(name, path) || !Push_Path(path)) return false;
    HKEY key = nullptr;
    if (open(m_CurrentKey, name, &key) != ERROR_SUCCESS) {
        Pop_Path();
        return false;
    }
    Close_Current_Key();
    m_CurrentKey = key;
    return true;
}

// Without a path of the level above there is nothing in front of the name: a path that begins with a
// backslash cannot be opened.
bool CRegMaster::Compose_Path(const char *name, char *path) {
    const char *const head = static_cast<char *>(m_PathStack.GetEntry(0, 0));
    const int length = head && *head ? std::snprintf(path, Path_Buffer_Size, "%s\\%s", head, name)
                                     : std::snprintf(path, Path_Buffer_Size, "%s", name);
    return length >= 0 && length < Path_Buffer_Size;
}

bool CRegMaster::Push_Path(const char *path) {
    try {
        return m_PathStack.PushCString(path, 0);
    } catch (...) {
        return false;
    }
}

void CRegMaster::Pop_Path() {
    void *const path = m_PathStack.Pop(0);
    if (path) ds_free(path);
}

bool CRegMaster::CloseSubkey() {
    if (!m_CurrentKey) return false;
    Pop_Path();
    Close_Current_Key();
    if (m_PathStack.Entries(0) == 0) return true;
    const char *const path = static_cast<char *>(m_PathStack.GetEntry(0, 0));
    HKEY key = nullptr;
    if (Open_Existing_Key(m_RootKey, path, &key) != ERROR_SUCCESS) return false;
    m_CurrentKey = key;
    return true;
}

HKEY CRegMaster::GetKey() {
    return m_CurrentKey;
}

// --- values -----------------------------------------------------------------------------------------------

bool CRegMaster::GetRegEntry(const char *name, char *buffer) {
    return GetRegEntry(name, buffer, Default_Buffer_Size);
}

bool CRegMaster::GetRegEntry(const char *name, char *buffer, unsigned long size) {
    return GetRegEntry(name, buffer, &size);
}

bool CRegMaster::GetRegEntry(const char *name, char *buffer, unsigned long *size) {
    if (!m_CurrentKey || !size) return false;
    const unsigned long capacity = *size;
    DWORD type = 0;
    if (RegQueryValueExA(m_CurrentKey, name, nullptr, &type, reinterpret_cast<BYTE *>(buffer), size) !=
        ERROR_SUCCESS) {
        *size = 0;
        return false;
    }
    if (m_ClearStringTail && buffer) Clear_Behind_String(buffer, capacity);
    return true;
}

bool CRegMaster::GetRegEntry(const char *name, long *value) {
    if (!m_CurrentKey || !value) return false;
    DWORD size = sizeof *value;
    return RegQueryValueExA(m_CurrentKey, name, nullptr, nullptr, reinterpret_cast<BYTE *>(value), &size) ==
           ERROR_SUCCESS;
}

bool CRegMaster::RegEntryExists(const char *name) {
    return m_CurrentKey &&
           RegQueryValueExA(m_CurrentKey, name, nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS;
}

bool CRegMaster::SetRegEntry(const char *name, const char *value) {
    return value && Write(REG_SZ, name, value, std::strlen(value) + 1);
}

bool CRegMaster::SetRegEntry(const char *name, const char *data, unsigned long size) {
    return Write(REG_SZ, name, data, size);
}

bool CRegMaster::SetRegEntry(const char *name, const long *data, unsigned long size) {
    return Write(REG_BINARY, name, data, size);
}

bool CRegMaster::SetRegEntry(const char *name, long value) {
    return Write(REG_DWORD, name, &value, sizeof value);
}

bool CRegMaster::SetRegEntry(int type, const char *name, const char *data, unsigned long size) {
    return Write(static_cast<DWORD>(type), name, data, size);
}

bool CRegMaster::Write(DWORD type, const char *name, const void *data, unsigned long size) {
    if (!m_CurrentKey) return false;
    if (RegSetValueExA(m_CurrentKey, name, 0, type, static_cast<const BYTE *>(data), size) != ERROR_SUCCESS) {
        return false;
    }
    RegFlushKey(m_CurrentKey);
    return true;
}

bool CRegMaster::DeleteRegEntry(const char *name) {
    return RegDeleteValueA(m_CurrentKey, name) == ERROR_SUCCESS;
}

unsigned long CRegMaster::IncrDword(const char *name) {
    if (!m_CurrentKey) return 0;
    DWORD counter = 0, type = REG_DWORD, size = sizeof counter;
    auto *const bytes = reinterpret_cast<BYTE *>(&counter);
    RegQueryValueExA(m_CurrentKey, name, nullptr, &type, bytes, &size);
    if (type != REG_DWORD) counter = 0;
    ++counter;
    const LONG result = RegSetValueExA(m_CurrentKey, name, 0, REG_DWORD, bytes, sizeof counter);
    return result == ERROR_SUCCESS ? counter : 0;
}

long CRegMaster::DecrDword(const char *name) {
    if (!m_CurrentKey) return -1;
    DWORD counter = 0, type = 0, size = sizeof counter;
    auto *const bytes = reinterpret_cast<BYTE *>(&counter);
    if (RegQueryValueExA(m_CurrentKey, name, nullptr, &type, bytes, &size) != ERROR_SUCCESS) return -1;
    if (type != REG_DWORD) return -1;
    if (counter > 0) --counter;
    const LONG result = RegSetValueExA(m_CurrentKey, name, 0, REG_DWORD, bytes, sizeof counter);
    return result == ERROR_SUCCESS ? static_cast<long>(counter) : -1;
}

bool CRegMaster::GetDefaultValue(void *buffer, unsigned long *size) {
    return RegQueryValueA(m_CurrentKey, "", static_cast<char *>(buffer), reinterpret_cast<LONG *>(size)) ==
           ERROR_SUCCESS;
}

bool CRegMaster::HasDefaultValue() {
    if (!m_CurrentKey) return false;
    char text[Default_Value_Size];
    unsigned long size = sizeof text;
    return GetDefaultValue(text, &size) && size > 1;
}

bool CRegMaster::OnlyHasDefaultValue() {
    unsigned long count = 0;
    return m_CurrentKey && GetNumValues(&count) == ERROR_SUCCESS && count == 1 && HasDefaultValue();
}

// --- enumeration and information --------------------------------------------------------------------------

bool CRegMaster::GetSubkey(unsigned long index, char *name) {
    if (!m_CurrentKey) return false;
    DWORD size = Name_Buffer_Size;
    return RegEnumKeyExA(m_CurrentKey, index, name, &size, nullptr, nullptr, nullptr, nullptr) ==
           ERROR_SUCCESS;
}

bool CRegMaster::GetNextValue(unsigned long index, char *name) {
    if (!m_CurrentKey) return false;
    DWORD size = Name_Buffer_Size;
    return RegEnumValueA(m_CurrentKey, index, name, &size, nullptr, nullptr, nullptr, nullptr) ==
           ERROR_SUCCESS;
}

bool CRegMaster::GetNextValueData(unsigned long index, unsigned long *type, void *data, unsigned long *size) {
    if (!m_CurrentKey) return false;
    char name[Name_Buffer_Size];
    DWORD name_size = sizeof name;
    return RegEnumValueA(m_CurrentKey, index, name, &name_size, nullptr, type, static_cast<BYTE *>(data),
                         size) == ERROR_SUCCESS;
}

long CRegMaster::GetNumSubkeys(unsigned long *count) {
    return GetSubkeyInfo(count, nullptr);
}

long CRegMaster::GetNumValues(unsigned long *count) {
    return GetValueInfo(count, nullptr, nullptr);
}

long CRegMaster::GetMaxValueLen(unsigned long *length) {
    return GetValueInfo(nullptr, nullptr, length);
}

long CRegMaster::GetMaxValueNameLen(unsigned long *length) {
    return GetValueInfo(nullptr, length, nullptr);
}

unsigned long CRegMaster::GetMaxSubkeyLen() {
    unsigned long length = 0;
    GetSubkeyInfo(nullptr, &length);
    return length;
}

long CRegMaster::GetSubkeyInfo(unsigned long *count, unsigned long *maxNameLen) {
    if (!m_CurrentKey) return 0;
    KeyInfo info;
    const LONG result = Query_Info(m_CurrentKey, info);
    if (result != ERROR_SUCCESS) return result;
    Tell(count, info.subkeys);
    Tell(maxNameLen, Name_Length(info.longest_subkey));
    return result;
}

long CRegMaster::GetValueInfo(unsigned long *count, unsigned long *maxNameLen, unsigned long *maxValueLen) {
    if (!m_CurrentKey) return 0;
    KeyInfo info;
    const LONG result = Query_Info(m_CurrentKey, info);
    if (result != ERROR_SUCCESS) return result;
    Tell(count, info.values);
    Tell(maxNameLen, Name_Length(info.longest_value_name));
    Tell(maxValueLen, info.longest_value);
    return result;
}

bool CRegMaster::IsKeyRemote() {
    const auto handle = reinterpret_cast<unsigned long>(m_CurrentKey);
    const bool predefined = handle >= reinterpret_cast<unsigned long>(HKEY_CLASSES_ROOT) &&
                            handle <= reinterpret_cast<unsigned long>(HKEY_DYN_DATA);
    return !predefined && (handle & 1);
}

unsigned long CRegMaster::Name_Length(unsigned long reported) {
    return IsKeyRemote() ? reported * 2 + 1 : reported;
}

// --- surgery ----------------------------------------------------------------------------------------------

bool CRegMaster::DeleteSubKey(const char *name) {
    return m_CurrentKey && name && *name && RegDeleteKeyA(m_CurrentKey, name) == ERROR_SUCCESS;
}

bool CRegMaster::ZeroOutKey() {
    if (!m_CurrentKey) return false;
    char name[Name_Buffer_Size];
    unsigned long count = 0;
    if (GetNumSubkeys(&count) != ERROR_SUCCESS) return false;
    while (count-- > 0) {
        if (!GetSubkey(count, name) || RegDeleteKeyA(m_CurrentKey, name) != ERROR_SUCCESS) return false;
    }
    count = 0;
    if (GetNumValues(&count) != ERROR_SUCCESS) return false;
    while (count-- > 0) {
        if (!GetNextValue(count, name) || RegDeleteValueA(m_CurrentKey, name) != ERROR_SUCCESS) return false;
    }
    return true;
}

bool CRegMaster::CopyKey(HKEY source, HKEY target) {
    return Copy_Below_Key(source, target) != KeyCopyResult::Failed;
}

bool CRegMaster::RenameSubkey(const char *oldName, const char *newName) {
    if (!m_CurrentKey || !oldName || !newName || !*oldName || !*newName) return false;
    const PathRelation relation = Relation_Of(newName, oldName);
    if (relation == PathRelation::Below) return false;
    {
        OpenedKey from, to;
        if (Open_Existing_Key(m_CurrentKey, oldName, from.Place()) != ERROR_SUCCESS) return false;
        if (relation == PathRelation::Same) return true;
        if (Open_Or_Make_Key(m_CurrentKey, newName, to.Place()) != ERROR_SUCCESS) return false;
        if (Copy_Below_Key(from, to) != KeyCopyResult::Whole) return false;
    }
    RegDeleteKeyA(m_CurrentKey, oldName);
    return true;
}

// --- the environment --------------------------------------------------------------------------------------

bool CRegMaster::IsRemoteClient() {
    const UINT old_mode = SetErrorMode(SEM_NOOPENFILEERRORBOX);
    const HMODULE module = LoadLibraryExA("winreg.dll", nullptr, LOAD_LIBRARY_AS_DATAFILE);
    if (module) FreeLibrary(module);
    SetErrorMode(old_mode);
    return module != nullptr;
}

bool CRegMaster::IsEditingDisabled() {
    OpenedKey policies;
    if (RegOpenKeyA(HKEY_CURRENT_USER, Policy_Key, policies.Place()) != ERROR_SUCCESS) return false;
    DWORD disabled = 0, size = sizeof disabled;
    const LONG result = RegQueryValueExA(policies, "DisableRegistryTools", nullptr, nullptr,
                                         reinterpret_cast<BYTE *>(&disabled), &size);
    if (result != ERROR_SUCCESS || disabled != 1) return false;
    MessageBoxA(nullptr, "Direct access to the Registry is not allowed.", "Access Denied",
                MB_OK | MB_ICONHAND);
    return true;
}

bool CRegMaster::IsMultiConfig() {
    OpenedKey configurations;
    return RegOpenKeyA(HKEY_LOCAL_MACHINE, "Config", configurations.Place()) == ERROR_SUCCESS &&
           Has_Several_Subkeys(configurations);
}

bool CRegMaster::IsMultiUser() {
    return Has_Several_Subkeys(HKEY_USERS);
}
