#include <reference_suite/services/registry_key.h>

#include <new>

bool RegistryKey::Succeeded(LONG result) {
    if (result == ERROR_NOT_ENOUGH_MEMORY) throw std::bad_alloc();
    return result == ERROR_SUCCESS;
}

RegistryKey::RegistryKey(const std::string &path) {
    Succeeded(RegOpenKeyExA(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_ALL_ACCESS, &key_));
}

RegistryKey::RegistryKey(const std::string &path, const std::string &subkey)
    : RegistryKey(path + "\\" + subkey) {}

RegistryKey::~RegistryKey() {
    if (key_) RegCloseKey(key_);
}

std::vector<std::string> RegistryKey::Subkeys() const {
    std::vector<std::string> names;
    char name[256];
    for (DWORD index = 0; key_; ++index) {
        DWORD size = sizeof name;
        if (!Succeeded(RegEnumKeyExA(key_, index, name, &size, nullptr, nullptr, nullptr, nullptr))) break;
        names.emplace_back(name, size);
    }
    return names;
}

LONG RegistryKey::Query(const char *name, DWORD &type, void *data, DWORD &size) const {
    if (!key_) return ERROR_FILE_NOT_FOUND;
    return RegQueryValueExA(key_, name, nullptr, &type, static_cast<BYTE *>(data), &size);
}

std::string RegistryKey::Text(const char *name) const {
    DWORD type = 0, size = 0;
    if (!Succeeded(Query(name, type, nullptr, size)) || type != REG_SZ) return {};
    std::string text;
    LONG result;
    do { // others may make it longer meanwhile
        text.resize(size);
        result = Query(name, type, text.data(), size);
    } while (result == ERROR_MORE_DATA);
    return Succeeded(result) && type == REG_SZ ? std::string(text.c_str()) : std::string();
}

std::optional<DWORD> RegistryKey::Number(const char *name) const {
    DWORD type = 0, number = 0, size = sizeof number;
    const bool there = Succeeded(Query(name, type, &number, size));
    return there && type == REG_DWORD && size == sizeof number ? std::optional(number) : std::nullopt;
}

bool RegistryKey::Set_Number(const char *name, DWORD number) const {
    return key_ && Succeeded(RegSetValueExA(key_, name, 0, REG_DWORD, reinterpret_cast<const BYTE *>(&number),
                                            sizeof number));
}
