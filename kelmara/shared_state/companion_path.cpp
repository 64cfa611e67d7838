#include <kelmara/shared_state/companion_path.h>

#include <platform/registry.h>

#include <cstring>

bool Read_Companion_Path(const char *value, char (&path)[Companion_Path_Size]) {
    HKEY key = nullptr;
    if (RegOpenKeyExA(HKEY_LOCAL_MACHINE, "software\\dunmerit software\\kelmara", 0, KEY_QUERY_VALUE, &key) !=
        ERROR_SUCCESS) {
        return false;
    }
    DWORD size = sizeof path;
    const LONG result = RegQueryValueExA(key, value, nullptr, nullptr, reinterpret_cast<BYTE *>(path), &size);
    RegCloseKey(key);
    return result == ERROR_SUCCESS && *path && std::memchr(path, 0, sizeof path);
}
