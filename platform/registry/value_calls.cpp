// Reading, setting and deleting the values of a key.

#include <platform/registry/open_key.h>
#include <platform/registry/results.h>

#include <platform/registry/file_time.h>

#include <algorithm>

namespace {

using Reading = RegistryStore::Reading;
using Writing = RegistryStore::Writing;

std::string_view Name_Of(LPCSTR name) {
    return name ? std::string_view(name) : std::string_view();
}

// What text takes with its terminator, which may be stored or not.
LONG Text_Size(std::string_view text) {
    return static_cast<LONG>(text.size()) + (text.ends_with('\0') ? 0 : 1);
}

LONG Give_Text(std::string_view text, LPSTR data, LONG *size) {
    const LONG room = size ? std::max(*size, 0L) : 0;
    if (size) *size = Text_Size(text);
    if (!data) return ERROR_SUCCESS;
    if (room < Text_Size(text)) return ERROR_MORE_DATA;
    text.copy(data, text.size());
    data[Text_Size(text) - 1] = '\0';
    return ERROR_SUCCESS;
}

} // namespace

extern "C" {

LONG RegQueryValueA(HKEY key, LPCSTR path, LPSTR data, LONG *size) {
    if (data && !size) return ERROR_INVALID_PARAMETER;
    if (const LONG error = KeyPath(path).Check()) return error;
    const DWORD needed = path && *path ? 0 : KEY_QUERY_VALUE;
    return With_Key<Reading>(key, needed, [&](const Reading &, RegistryKey &from) -> LONG {
        const RegistryKey *found = Walk(&from, KeyPath(path));
        if (!found) return ERROR_FILE_NOT_FOUND;
        const RegistryValue *value = found->Value({});
        if (value && value->type != REG_SZ && value->type != REG_EXPAND_SZ) return ERROR_INVALID_DATA;
        return Give_Text(value ? std::string_view(value->data) : std::string_view(), data, size);
    });
}

LONG RegQueryValueExA(HKEY key, LPCSTR name, DWORD *reserved, DWORD *type, BYTE *data, DWORD *size) {
    if (reserved || (data && !size)) return ERROR_INVALID_PARAMETER;
    return With_Key<Reading>(key, KEY_QUERY_VALUE, [&](const Reading &, RegistryKey &from) -> LONG {
        const RegistryValue *value = from.Value(Name_Of(name));
        if (!value) return ERROR_FILE_NOT_FOUND;
        const bool fits = Data_Fits(*value, data, size);
        Give_Data(*value, type, data, size, fits);
        return fits ? ERROR_SUCCESS : ERROR_MORE_DATA;
    });
}

LONG RegSetValueExA(HKEY key, LPCSTR name, DWORD reserved, DWORD type, const BYTE *data, DWORD size) {
    if (reserved != 0 || (!data && size != 0)) return ERROR_INVALID_PARAMETER;
    if (Name_Of(name).size() > Longest_Value_Name) return ERROR_INVALID_PARAMETER;
    if (size > Largest_Data) return ERROR_NOT_ENOUGH_MEMORY;
    return With_Key<Writing>(key, KEY_SET_VALUE, [&](Writing &writing, RegistryKey &from) {
        const RegistryRecord change{
            RecordKind::Set_Value, from.number,   type,
            File_Time_Now(),       Name_Of(name), {reinterpret_cast<const char *>(data), size}};
        return writing.Commit({&change, 1});
    });
}

LONG RegDeleteValueA(HKEY key, LPCSTR name) {
    return With_Key<Writing>(key, KEY_SET_VALUE, [&](Writing &writing, RegistryKey &from) -> LONG {
        if (!from.Value(Name_Of(name))) return ERROR_FILE_NOT_FOUND;
        const RegistryRecord change{RecordKind::Delete_Value, from.number, 0, File_Time_Now(), Name_Of(name)};
        return writing.Commit({&change, 1});
    });
}
}
