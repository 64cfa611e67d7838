#pragma once
// The registry in the verbs of a test: keys that close themselves, values as text.

#include <tests/support/test_machine.h>

#include <platform/registry.h>

#include <algorithm>
#include <vector>

constexpr char Missing[] = "(missing)";

inline LONG Value_Name(HKEY key, DWORD index, char *name, DWORD *size) {
    return RegEnumValueA(key, index, name, size, nullptr, nullptr, nullptr, nullptr);
}
inline LONG Subkey_Name(HKEY key, DWORD index, char *name, DWORD *size) {
    return RegEnumKeyExA(key, index, name, size, nullptr, nullptr, nullptr, nullptr);
}
inline LONG Last_Change(HKEY key, FILETIME *time) {
    return RegQueryInfoKeyA(key, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                            nullptr, nullptr, time);
}
inline LONG Set_Nothing(HKEY key) {
    return RegSetValueExA(key, "value", 0, REG_NONE, nullptr, 0);
}

class TestKey {
  public:
    /// Opens or makes it.
    explicit TestKey(const std::string &path, HKEY root = HKEY_CURRENT_USER, char *class_name = nullptr) {
        error = RegCreateKeyExA(root, path.c_str(), 0, class_name, 0, KEY_ALL_ACCESS, nullptr, &handle,
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
        const auto Query = [&] {
            return RegQueryValueExA(handle, name.c_str(), nullptr, nullptr,
                                    reinterpret_cast<BYTE *>(text.data()), &size);
        };
        LONG result = Query();
        if (result == ERROR_MORE_DATA) text.resize(size), result = Query();
        if (result == ERROR_FILE_NOT_FOUND) return Missing;
        return result == ERROR_SUCCESS ? text.substr(0, size) : "(" + std::to_string(result) + ")";
    }
    std::vector<std::string> Values() const { return All(Value_Name); }
    std::vector<std::string> Subkeys() const { return All(Subkey_Name); }

    HKEY handle = nullptr;
    LONG error = 0;
    DWORD disposition = 0;

  private:
    std::vector<std::string> All(LONG (*enumerate)(HKEY, DWORD, char *, DWORD *)) const {
        std::vector<std::string> names;
        char name[300];
        for (DWORD size = sizeof name; enumerate(handle, names.size(), name, &size) == ERROR_SUCCESS;
             size = sizeof name) {
            names.emplace_back(name, size);
        }
        return names;
    }
};

/// Each key and value below, its path from there in front of its data, with a '|' behind.
inline std::string All_Below(const TestKey &key, const std::string &path = "") {
    std::string all;
    std::vector<std::string> values = key.Values(); // in the order in which they came
    std::ranges::sort(values);
    for (const std::string &name : values) all += path + name + "=" + key.Get(name) + "|";
    for (const std::string &name : key.Subkeys())
        all += "[" + path + name + "]=|" + All_Below(TestKey(name, key), path + name + "\\");
    return all;
}

class RegistryTest : public MachineTest {
  protected:
    static constexpr char File[] = "registry/registry.log";

    std::string Stored() const { return machine.Read(File); }
    /// Reads the registry anew. Handles of before are worth nothing.
    void Reopen() const { ASSERT_TRUE(Enter_Machine(machine.Folder().c_str())); }
};
