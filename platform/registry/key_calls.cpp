// Opening, making, closing and deleting keys.

#include <platform/registry/open_key.h>

#include <platform/registry/file_time.h>

#include <cstring>
#include <utility>
#include <vector>

namespace {

using Reading = RegistryStore::Reading;
using Writing = RegistryStore::Writing;

LONG Open_Key(HKEY parent, LPCSTR path, DWORD access, HKEY *key) {
    if (const LONG error = KeyPath(path).Check()) return error;
    return With_Key<Reading>(parent, 0, [&](const Reading &reading, RegistryKey &from) -> LONG {
        const RegistryKey *found = Walk(&from, KeyPath(path));
        if (!found) return ERROR_FILE_NOT_FOUND;
        return Open_Key_Handle(found->number, reading.Machine(), access, key);
    });
}

/// A key's handle, closed unless it is given on.
class NewHandle {
  public:
    NewHandle() = default;
    ~NewHandle() {
        if (handle_) Close_Handle_Of_Kind(handle_, ObjectKind::RegistryKey);
    }
    NewHandle(const NewHandle &) = delete;
    NewHandle &operator=(const NewHandle &) = delete;
    HKEY *Place() { return &handle_; }
    HKEY Give() { return std::exchange(handle_, nullptr); }

  private:
    HKEY handle_ = nullptr;
};

// Records that make what is missing of the path below `from`; the number of its last key in `last`.
std::vector<RegistryRecord> Missing_Keys(const KeyTree &tree, RegistryKey &from, LPCSTR path,
                                         LPCSTR class_name, std::uint32_t *last) {
    std::vector<RegistryRecord> missing;
    std::uint32_t fresh = tree.First_Free();
    const RegistryKey *at = &from;
    *last = from.number;
    KeyPath names(path);
    for (std::string_view name = names.Next(); !name.empty(); name = names.Next()) {
        at = at ? at->Subkey(name) : nullptr;
        if (!at) missing.push_back({RecordKind::Make_Key, fresh, *last, File_Time_Now(), name});
        *last = at ? at->number : fresh++;
    }
    if (!missing.empty() && class_name) missing.back().data = class_name;
    return missing;
}

LONG Make_And_Open_Key(HKEY parent, LPCSTR path, LPCSTR class_name, DWORD access, HKEY *key,
                       DWORD *disposition) {
    return With_Key<Writing>(parent, 0, [&](Writing &writing, RegistryKey &from) -> LONG {
        std::uint32_t last = No_Key;
        const std::vector<RegistryRecord> missing =
            Missing_Keys(writing.Tree(), from, path, class_name, &last);
        if (missing.size() > Last_Key + 1 - writing.Tree().First_Free()) return ERROR_NOT_ENOUGH_MEMORY;
        *disposition = missing.empty() ? REG_OPENED_EXISTING_KEY : REG_CREATED_NEW_KEY;
        // The handle first: once the keys are made nothing may fail.
        NewHandle handle;
        if (const LONG error = Open_Key_Handle(last, writing.Machine(), access, handle.Place())) return error;
        if (const LONG error = missing.empty() ? ERROR_SUCCESS : writing.Commit(missing)) return error;
        *key = handle.Give();
        return ERROR_SUCCESS;
    });
}

} // namespace

extern "C" {

LONG RegOpenKeyExA(HKEY parent, LPCSTR path, DWORD, DWORD access, HKEY *key) {
    if (!key) return ERROR_INVALID_PARAMETER;
    *key = nullptr;
    return Open_Key(parent, path, access, key);
}

LONG RegOpenKeyA(HKEY parent, LPCSTR path, HKEY *key) {
    if (!key) return ERROR_INVALID_PARAMETER;
    if (path && *path) return RegOpenKeyExA(parent, path, 0, MAXIMUM_ALLOWED, key);
    *key = nullptr;
    if (Look_Up(parent).key == No_Key) return ERROR_INVALID_HANDLE;
    *key = parent;
    return ERROR_SUCCESS;
}

LONG RegCreateKeyExA(HKEY parent, LPCSTR path, DWORD reserved, LPSTR class_name, DWORD options, DWORD access,
                     const SECURITY_ATTRIBUTES *, HKEY *key, DWORD *disposition) {
    if (!key) return ERROR_INVALID_PARAMETER;
    *key = nullptr;
    if (reserved != 0 || options != REG_OPTION_NON_VOLATILE) return ERROR_INVALID_PARAMETER;
    if (class_name && std::strlen(class_name) > Longest_Key_Name) return ERROR_INVALID_PARAMETER;
    if (access == 0) return ERROR_ACCESS_DENIED;
    DWORD made_or_found = REG_OPENED_EXISTING_KEY;
    LONG error = Open_Key(parent, path, access, key);
    if (error == ERROR_FILE_NOT_FOUND) {
        error = Make_And_Open_Key(parent, path, class_name, access, key, &made_or_found);
    }
    if (!error && disposition) *disposition = made_or_found;
    return error;
}

LONG RegCloseKey(HKEY key) {
    if (Is_Predefined(key) || Close_Handle_Of_Kind(key, ObjectKind::RegistryKey)) return ERROR_SUCCESS;
    return ERROR_INVALID_HANDLE;
}

LONG RegDeleteKeyA(HKEY parent, LPCSTR path) {
    if (!path) return ERROR_INVALID_PARAMETER;
    if (const LONG error = KeyPath(path).Check()) return error;
    return With_Key<Writing>(parent, 0, [&](Writing &writing, RegistryKey &from) -> LONG {
        const RegistryKey *key = Walk(&from, KeyPath(path));
        if (!key) return ERROR_FILE_NOT_FOUND;
        if (key->number < First_Free_Key || !key->subkeys.empty()) return ERROR_ACCESS_DENIED;
        const RegistryRecord change{RecordKind::Delete_Key, key->number, 0, File_Time_Now()};
        return writing.Commit({&change, 1});
    });
}

LONG RegFlushKey(HKEY key) {
    const LONG error =
        With_Key<Reading>(key, 0, [](const Reading &, RegistryKey &) { return ERROR_SUCCESS; });
    if (error) return error;
    try {
        return RegistryStore::Of_This_Process().Flush();
    } catch (const std::bad_alloc &) {
        return ERROR_NOT_ENOUGH_MEMORY;
    }
}
}
