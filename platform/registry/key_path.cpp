// Where a key stands.

#include <platform/registry/open_key.h>
#include <platform/registry/results.h>

#include <platform/machine.h>

#include <string>

namespace {

using Reading = RegistryStore::Reading;

std::string Path_Of(const RegistryKey &key) {
    std::string path;
    const RegistryKey *at = &key;
    for (; at->parent; at = at->parent) path.insert(0, '\\' + at->name);
    return (at->number == Users_Key ? "HKEY_USERS" : "HKEY_LOCAL_MACHINE") + path;
}

} // namespace

extern "C" {

LONG Registry_Key_Path(HKEY key, char *path, DWORD *size) {
    if (!path || !size) return ERROR_INVALID_PARAMETER;
    return With_Key<Reading>(key, 0, [&](const Reading &, RegistryKey &from) -> LONG {
        const std::string whole = Path_Of(from);
        const bool fits = Name_Fits(whole, path, size);
        Give_Name(whole, path, size, fits);
        return fits ? ERROR_SUCCESS : ERROR_MORE_DATA;
    });
}
}
