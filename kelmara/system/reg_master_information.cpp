#include <kelmara/system/reg_master.h>

#include <kelmara/system/key_copy.h>

#include <platform/kernel.h>
#include <platform/user.h>

namespace {

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

} // namespace

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
