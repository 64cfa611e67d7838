#pragma once
// Where the suite's components keep what they know, below the suite's key of HKEY_LOCAL_MACHINE:
//
//     Components\Configurations\NAME     "Options"
//     Components\Locations\NAME          "Options", "Ten-Digit Dialling"
//     Components\Phonebooks\NAME         "Entries"
//     Settings                            a text for each setting, named by its code
//
// A component is there when its key is. What it holds are lines in one value each, REG_MULTI_SZ: "CMTH=LAN"
// for an option by its code, "206,555=10" for the two answers to an area code and exchange, "NAME=+1 (206)
// 555-0100" for an entry. A value is set whole or not at all, whoever is killed meanwhile. All of it may be
// called from any thread, and may throw std::bad_alloc.

#include <kelmara/connectivity/component_records.h>

#include <platform/errors.h>
#include <platform/registry.h>

#include <cstdio>
#include <string>
#include <string_view>

inline constexpr char Store_Key[] = "Software\\Dunmerit Software\\KelMara";
inline constexpr char Settings_Key[] = "Software\\Dunmerit Software\\KelMara\\Settings";
inline constexpr char Options_Value[] = "Options";
inline constexpr char Ten_Digit_Value[] = "Ten-Digit Dialling";
inline constexpr char Entries_Value[] = "Entries";
inline constexpr std::size_t Longest_Component_Name = sizeof(ComponentLocator::name) - 1;
inline constexpr std::size_t Longest_Stored_Text = 4095;
inline constexpr DWORD Largest_Read_Value = 65536; // bytes, of what others have stored

/// The key of a component, below HKEY_LOCAL_MACHINE. Empty for a kind that there is not, and for what is no
/// name: none, too long, with a backslash.
inline std::string Component_Key(long kind, std::string_view name) {
    constexpr const char *Folders[] = {"Configurations", "Phonebooks", "Locations"}; // by kind
    const bool usable = kind >= Component_Configuration && kind <= Component_Location && !name.empty() &&
                        name.size() <= Longest_Component_Name && name.find('\\') == std::string_view::npos;
    if (!usable) return {};
    return std::string(Store_Key) + "\\Components\\" + Folders[kind] + "\\" + std::string(name);
}

/// "CMTH"; a code with other than printable characters by its number.
inline std::string Stored_Value_Name(unsigned long code) {
    std::string name;
    for (int shift = 24; shift >= 0; shift -= 8) name += static_cast<char>(code >> shift & 0xFF);
    for (const char character : name) {
        if (character > ' ' && character < 0x7F) continue;
        char number[11];
        std::snprintf(number, sizeof number, "0x%08lX", code & 0xFFFFFFFF);
        return number;
    }
    return name;
}

/// A key below HKEY_LOCAL_MACHINE, closed at the end of its scope. Operations on one that is not open fail
/// with `Error`.
class StoredKey {
  public:
    enum class Opening { If_There, Make };
    StoredKey(const std::string &path, Opening opening) {
        if (path.empty()) error_ = E_INVALIDARG;
        if (!path.empty() && opening == Opening::Make)
            error_ = RegCreateKeyExA(HKEY_LOCAL_MACHINE, path.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                                     &key_, nullptr);
        else if (!path.empty())
            error_ = RegOpenKeyExA(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_ALL_ACCESS, &key_);
    }
    ~StoredKey() {
        if (key_) RegCloseKey(key_);
    }
    StoredKey(const StoredKey &) = delete;
    StoredKey &operator=(const StoredKey &) = delete;

    /// 0, or why it is not open: E_INVALIDARG for an empty path, a code of the registry.
    long Error() const { return error_; }

    /// 0 when there is such a value, whatever it is; ERROR_FILE_NOT_FOUND for none.
    long Find(unsigned long code) const {
        DWORD type, size = 0;
        return Query(code, type, nullptr, size);
    }
    /// 0 and the text, also one longer than Write takes; otherwise `text` stays: ERROR_FILE_NOT_FOUND for
    /// none, ERROR_INVALID_DATA for what is no text or larger than Largest_Read_Value.
    long Read(unsigned long code, std::string &text) const {
        std::string bytes(Longest_Stored_Text + 1, '\0');
        for (;;) {
            DWORD type = REG_NONE, size = static_cast<DWORD>(bytes.size());
            const long result = Query(code, type, bytes.data(), size);
            if (result != ERROR_SUCCESS && result != ERROR_MORE_DATA) return result;
            const bool is_text = type == REG_SZ || type == REG_EXPAND_SZ;
            if (!is_text || size > Largest_Read_Value) return ERROR_INVALID_DATA;
            if (result == ERROR_SUCCESS) return text = bytes.substr(0, size).c_str(), 0;
            bytes.resize(size);
        }
    }
    /// 0 when it is on the disk. E_INVALIDARG for more than Longest_Stored_Text characters.
    long Write(unsigned long code, std::string_view text) const {
        if (error_ != 0) return error_;
        if (text.size() > Longest_Stored_Text) return E_INVALIDARG;
        const std::string ended(text);
        const long result = RegSetValueExA(key_, Stored_Value_Name(code).c_str(), 0, REG_SZ,
                                           reinterpret_cast<const BYTE *>(ended.c_str()),
                                           static_cast<DWORD>(ended.size()) + 1);
        return result == ERROR_SUCCESS ? RegFlushKey(key_) : result;
    }

  private:
    long Query(unsigned long code, DWORD &type, char *bytes, DWORD &size) const {
        if (error_ != 0) return error_;
        return RegQueryValueExA(key_, Stored_Value_Name(code).c_str(), nullptr, &type,
                                reinterpret_cast<BYTE *>(bytes), &size);
    }

    HKEY key_ = nullptr;
    long error_ = 0;
};

inline bool Is_Component_Stored(long kind, std::string_view name) {
    return StoredKey(Component_Key(kind, name), StoredKey::Opening::If_There).Error() == 0;
}
