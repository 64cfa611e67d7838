#include <platform/registry/open_key.h>

#include <utility>

namespace {

class OpenKey final : public KernelObject {
  public:
    OpenKey(std::uint32_t key, unsigned machine, DWORD access)
        : KernelObject(ObjectKind::RegistryKey), reference_{key, access, machine} {}

    const KeyReference &Reference() const { return reference_; }

  private:
    const KeyReference reference_;
};

constexpr FixedKey Predefined[] = {
    Classes_Key,        // 0x80000000, HKEY_CLASSES_ROOT
    Current_User_Key,   // HKEY_CURRENT_USER
    Local_Machine_Key,  // HKEY_LOCAL_MACHINE
    Users_Key,          // HKEY_USERS
    No_Key,             // HKEY_PERFORMANCE_DATA
    Current_Config_Key, // HKEY_CURRENT_CONFIG
    No_Key,             // HKEY_DYN_DATA
};

std::uintptr_t Predefined_Index(HKEY handle) {
    return reinterpret_cast<std::uintptr_t>(handle) - reinterpret_cast<std::uintptr_t>(HKEY_CLASSES_ROOT);
}

} // namespace

LONG Open_Key_Handle(std::uint32_t key, unsigned machine, DWORD access, HKEY *handle) {
    if (access == 0) return ERROR_ACCESS_DENIED;
    if ((access & MAXIMUM_ALLOWED) != 0) access |= KEY_ALL_ACCESS;
    auto *object = new (std::nothrow) OpenKey(key, machine, access);
    if (!object) return ERROR_NOT_ENOUGH_MEMORY;
    *handle = static_cast<HKEY>(Open_Handle(object));
    return *handle ? ERROR_SUCCESS : ERROR_NOT_ENOUGH_QUOTA;
}

KeyReference Look_Up(HKEY handle) {
    if (Is_Predefined(handle)) return {Predefined[Predefined_Index(handle)], KEY_ALL_ACCESS, 0};
    const HandleUse use(handle, ObjectKind::RegistryKey);
    return use ? use.As<OpenKey>().Reference() : KeyReference{};
}

bool Is_Predefined(HKEY handle) {
    return Predefined_Index(handle) < std::size(Predefined);
}

LONG KeyPath::Check() const {
    if (rest_.starts_with('\\')) return ERROR_BAD_PATHNAME;
    KeyPath path = *this;
    for (std::string_view name = path.Next(); !name.empty(); name = path.Next()) {
        if (name.size() > Longest_Key_Name) return ERROR_INVALID_PARAMETER;
    }
    return ERROR_SUCCESS;
}

std::string_view KeyPath::Next() {
    const std::size_t start = std::min(rest_.find_first_not_of('\\'), rest_.size());
    const std::size_t end = std::min(rest_.find('\\', start), rest_.size());
    const std::string_view name = rest_.substr(start, end - start);
    rest_.remove_prefix(end);
    return name;
}

RegistryKey *Walk(RegistryKey *from, KeyPath path) {
    for (std::string_view name = path.Next(); from && !name.empty(); name = path.Next()) {
        from = from->Subkey(name);
    }
    return from;
}
