#include <kelmara/system/reg_master.h>

#include <cstring>

namespace {

constexpr unsigned long Default_Buffer_Size = 256;
constexpr unsigned long Default_Value_Size = 261;

void Clear_Behind_String(char *buffer, unsigned long capacity) {
    char *const end = static_cast<char *>(std::memchr(buffer, 0, capacity));
    if (end) std::memset(end, 0, static_cast<std::size_t>(buffer + capacity - end));
}

} // namespace

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
