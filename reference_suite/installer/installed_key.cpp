#include <reference_suite/installer/installed_key.h>

InstalledKey::InstalledKey(const std::string &path)
    : result_(RegCreateKeyExA(HKEY_LOCAL_MACHINE, path.c_str(), 0, nullptr, 0,
                              KEY_QUERY_VALUE | KEY_SET_VALUE, nullptr, &key_, nullptr)) {}

InstalledKey::~InstalledKey() {
    if (key_) RegCloseKey(key_);
}

bool InstalledKey::Has(const char *value) const {
    return key_ && RegQueryValueExA(key_, value, nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS;
}

void InstalledKey::Set(const char *value, const std::string &text) {
    Set(value, REG_SZ, text.c_str(), text.size() + 1);
}

void InstalledKey::Set(const char *value, DWORD number) {
    Set(value, REG_DWORD, &number, sizeof number);
}

void InstalledKey::Set(const char *value, std::initializer_list<const char *> lines) {
    std::string all;
    for (const char *line : lines) all.append(line).push_back('\0');
    Set(value, REG_MULTI_SZ, all.c_str(), all.size() + 1);
}

void InstalledKey::Set(const char *value, DWORD type, const void *data, std::size_t size) {
    if (result_ != ERROR_SUCCESS) return;
    result_ = RegSetValueExA(key_, value, 0, type, static_cast<const BYTE *>(data), static_cast<DWORD>(size));
}

void InstalledKey::Flush() {
    if (result_ == ERROR_SUCCESS) result_ = RegFlushKey(key_);
}
