#include <reference_suite/services/registry_key.h>

RegistryKey::RegistryKey(const std::string &path) {
    RegOpenKeyExA(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_ALL_ACCESS, &key_);
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
        if (RegEnumKeyExA(key_, index, name, &size, nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS)
            break;
        names.emplace_back(name, size);
    }
    return names;
}

std::string RegistryKey::Text(const char *name) const {
    DWORD type = 0, size = 0;
    std::string text;
    LONG result = key_ ? ERROR_MORE_DATA : ERROR_FILE_NOT_FOUND;
    while (result == ERROR_MORE_DATA) { // again where it has grown meanwhile
        text.assign(size, '\0');
        result = RegQueryValueExA(key_, name, nullptr, &type, reinterpret_cast<BYTE *>(text.data()), &size);
    }
    return result == ERROR_SUCCESS && type == REG_SZ ? std::string(text.c_str()) : std::string();
}

std::optional<DWORD> RegistryKey::Number(const char *name) const {
    DWORD type = 0, number = 0, size = sizeof number;
    const LONG result =
        key_ ? RegQueryValueExA(key_, name, nullptr, &type, reinterpret_cast<BYTE *>(&number), &size)
             : ERROR_FILE_NOT_FOUND;
    if (result != ERROR_SUCCESS || type != REG_DWORD || size != sizeof number) return std::nullopt;
    return number;
}

bool RegistryKey::Set_Number(const char *name, DWORD number) const {
    return key_ && RegSetValueExA(key_, name, 0, REG_DWORD, reinterpret_cast<const BYTE *>(&number),
                                  sizeof number) == ERROR_SUCCESS;
}
