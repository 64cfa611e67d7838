#include <tools/number/copied_telephony.h>
#include <tools/reg/key_path.h>
#include <tools/reg/open_key.h>

namespace tools {

namespace {

constexpr char Telephony_Key[] =
    "HKEY_LOCAL_MACHINE\\Software\\Microsoft\\Windows\\CurrentVersion\\Telephony";

/// Empty where there is no such key.
KeptKey Keep(const reg::KeyPath &path) {
    const reg::OpenKey key(path);
    if (!key) return {};
    KeptKey kept{path.names.back(), key.Values(), {}};
    for (const std::string &name : key.Subkeys()) {
        reg::KeyPath below = path;
        below.names.push_back(name);
        kept.subkeys.push_back(Keep(below));
    }
    return kept;
}

class MadeKey {
  public:
    MadeKey(HKEY above, const std::string &name, const std::string &path) : path_(path) {
        Require(RegCreateKeyExA(above, name.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key_, nullptr));
    }
    ~MadeKey() { RegCloseKey(key_); }
    MadeKey(const MadeKey &) = delete;
    MadeKey &operator=(const MadeKey &) = delete;

    void Write(const KeptKey &kept) const {
        for (const auto &[name, value] : kept.values)
            Require(RegSetValueExA(key_, name.c_str(), 0, value.type,
                                   reinterpret_cast<const BYTE *>(value.data.data()),
                                   static_cast<DWORD>(value.data.size())));
        for (const KeptKey &subkey : kept.subkeys)
            MadeKey(key_, subkey.name, path_ + "\\" + subkey.name).Write(subkey);
    }

  private:
    void Require(LONG result) const {
        if (result != ERROR_SUCCESS) reg::Fail_On_Key(path_, result);
    }

    HKEY key_ = nullptr;
    std::string path_;
};

} // namespace

CopiedTelephony::CopiedTelephony() : kept_(Keep(reg::Key_Path_Of(Telephony_Key))) {
    const reg::KeyPath path = reg::Key_Path_Of(Telephony_Key);
    MadeKey(path.root->key, path.Below_Root(), path.Text()).Write(kept_);
}

} // namespace tools
