#include <tools/failure.h>
#include <tools/number/copied_telephony.h>

#include <platform/registry.h>

namespace tools {

namespace {

constexpr char Telephony_Key[] = "Software\\Microsoft\\Windows\\CurrentVersion\\Telephony";
constexpr DWORD Longest_Name = 16384;

class Key {
  public:
    Key() = default;
    ~Key() {
        if (handle_ != nullptr) RegCloseKey(handle_);
    }
    Key(const Key &) = delete;
    Key &operator=(const Key &) = delete;
    operator HKEY() const { return handle_; }
    HKEY *Place() { return &handle_; }

  private:
    HKEY handle_ = nullptr;
};

void Require(LONG result, const std::string &path) {
    if (result != ERROR_SUCCESS)
        throw Failure(Exit_Unusable, path + ": error " + std::to_string(result) + " of the registry");
}

std::vector<KeptKey::Value> Keep_Values(HKEY key, const std::string &path) {
    std::vector<KeptKey::Value> values;
    std::string name(Longest_Name, '\0');
    for (DWORD index = 0;; ++index) {
        DWORD name_size = Longest_Name, size = 0, type = 0;
        const LONG result =
            RegEnumValueA(key, index, name.data(), &name_size, nullptr, &type, nullptr, &size);
        if (result == ERROR_NO_MORE_ITEMS) return values;
        Require(result, path);
        KeptKey::Value value{name.substr(0, name_size), type, std::string(size, '\0')};
        Require(RegQueryValueExA(key, value.name.c_str(), nullptr, &value.type,
                                 reinterpret_cast<BYTE *>(value.bytes.data()), &size),
                path);
        value.bytes.resize(size);
        values.push_back(std::move(value));
    }
}

std::vector<KeptKey> Keep_Subkeys(HKEY key, const std::string &path) {
    std::vector<KeptKey> subkeys;
    std::string name(Longest_Name, '\0');
    for (DWORD index = 0;; ++index) {
        DWORD size = Longest_Name;
        const LONG result = RegEnumKeyExA(key, index, name.data(), &size, nullptr, nullptr, nullptr, nullptr);
        if (result == ERROR_NO_MORE_ITEMS) return subkeys;
        Require(result, path);
        subkeys.push_back(Keep_Key(path + "\\" + name.substr(0, size)));
        subkeys.back().name = name.substr(0, size);
    }
}

} // namespace

KeptKey Keep_Key(const std::string &path) {
    Key key;
    const LONG result = RegOpenKeyExA(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_READ, key.Place());
    if (result == ERROR_FILE_NOT_FOUND) return {};
    Require(result, path);
    return {"", Keep_Values(key, path), Keep_Subkeys(key, path)};
}

void Write_Key(const std::string &path, const KeptKey &kept) {
    Key key;
    Require(RegCreateKeyExA(HKEY_LOCAL_MACHINE, path.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                            key.Place(), nullptr),
            path);
    for (const KeptKey::Value &value : kept.values)
        Require(RegSetValueExA(key, value.name.c_str(), 0, value.type,
                               reinterpret_cast<const BYTE *>(value.bytes.data()),
                               static_cast<DWORD>(value.bytes.size())),
                path);
    for (const KeptKey &subkey : kept.subkeys) Write_Key(path + "\\" + subkey.name, subkey);
}

CopiedTelephony::CopiedTelephony() : kept_(Keep_Key(Telephony_Key)) {
    Write_Key(Telephony_Key, kept_);
}

} // namespace tools
