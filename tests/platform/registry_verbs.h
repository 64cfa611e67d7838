#pragma once
// The registry in the verbs of a test: keys that close themselves, values as text.

#include <platform/registry.h>

#include <string>
#include <vector>

constexpr char Missing[] = "(missing)";

class TestKey {
  public:
    /// Opens or makes it.
    explicit TestKey(const std::string &path, HKEY root = HKEY_CURRENT_USER) {
        error = RegCreateKeyExA(root, path.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &handle,
                                &disposition);
    }
    ~TestKey() {
        if (handle) RegCloseKey(handle);
    }
    TestKey(const TestKey &) = delete;
    TestKey &operator=(const TestKey &) = delete;
    operator HKEY() const { return handle; }

    LONG Set(const std::string &name, const std::string &text, DWORD type = REG_SZ) const {
        return RegSetValueExA(handle, name.c_str(), 0, type, reinterpret_cast<const BYTE *>(text.data()),
                              static_cast<DWORD>(text.size()));
    }
    /// The bytes as they are stored; `Missing` for no such value, the code for any other failure.
    std::string Get(const std::string &name) const {
        std::string text(256, '\0');
        DWORD size = 256;
        LONG result = Query(name, text, &size);
        if (result == ERROR_MORE_DATA) {
            text.resize(size);
            result = Query(name, text, &size);
        }
        if (result == ERROR_FILE_NOT_FOUND) return Missing;
        return result == ERROR_SUCCESS ? text.substr(0, size) : "(" + std::to_string(result) + ")";
    }
    std::vector<std::string> Values() const { return All(RegEnumValueA_Name); }
    std::vector<std::string> Subkeys() const { return All(RegEnumKeyExA_Name); }

    HKEY handle = nullptr;
    LONG error = 0;
    DWORD disposition = 0;

  private:
    LONG Query(const std::string &name, std::string &text, DWORD *size) const {
        return RegQueryValueExA(handle, name.c_str(), nullptr, nullptr, reinterpret_cast<BYTE *>(text.data()),
                                size);
    }
    static LONG RegEnumValueA_Name(HKEY key, DWORD index, char *name, DWORD *size) {
        return RegEnumValueA(key, index, name, size, nullptr, nullptr, nullptr, nullptr);
    }
    static LONG RegEnumKeyExA_Name(HKEY key, DWORD index, char *name, DWORD *size) {
        return RegEnumKeyExA(key, index, name, size, nullptr, nullptr, nullptr, nullptr);
    }
    template <class Enumerate>
    std::vector<std::string> All(Enumerate enumerate) const {
        std::vector<std::string> names;
        char name[300];
        for (DWORD size = sizeof name; enumerate(handle, names.size(), name, &size) == ERROR_SUCCESS;
             size = sizeof name) {
            names.emplace_back(name, size);
        }
        return names;
    }
};
