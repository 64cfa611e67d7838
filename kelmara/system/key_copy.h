#pragma once
// Copies what is below one key of the registry to another: values, and subkeys with theirs. Inside the
// library only. Both keys stay the caller's.

#include <platform/registry.h>

/// The rights that the library opens and makes keys with.
inline constexpr DWORD Key_Access =
    KEY_QUERY_VALUE | KEY_SET_VALUE | KEY_CREATE_SUB_KEY | KEY_ENUMERATE_SUB_KEYS | KEY_NOTIFY;
inline constexpr DWORD Name_Buffer_Size = 256; // bytes of the longest name with its terminator

inline LONG Open_Existing_Key(HKEY parent, LPCSTR path, HKEY *key) {
    return RegOpenKeyExA(parent, path, 0, Key_Access, key);
}

inline LONG Open_Or_Make_Key(HKEY parent, LPCSTR path, HKEY *key) {
    return RegCreateKeyExA(parent, path, 0, nullptr, 0, Key_Access, nullptr, key, nullptr);
}

/// A key that is closed at the end of the scope.
class OpenedKey {
  public:
    OpenedKey() = default;
    ~OpenedKey() {
        if (m_Key) RegCloseKey(m_Key);
    }
    OpenedKey(const OpenedKey &) = delete;
    OpenedKey &operator=(const OpenedKey &) = delete;
    operator HKEY() const { return m_Key; }
    /// For the call that opens it, once.
    HKEY *Place() { return &m_Key; }

  private:
    HKEY m_Key = nullptr;
};

enum class KeyCopyResult {
    Failed, // a subkey could not be listed, opened or made
    Partly, // every subkey is there, but not every value
    Whole,
};

/// The subkeys are those that the source had when its own values were copied.
KeyCopyResult Copy_Below_Key(HKEY source, HKEY target);
