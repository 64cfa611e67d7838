// Subkeys and values by index, and the counts of a key.

#include <platform/registry/open_key.h>
#include <platform/registry/results.h>

#include <algorithm>

namespace {

using Reading = RegistryStore::Reading;

template <class Entries, class Size>
DWORD Longest(const Entries &entries, Size size_of) {
    std::size_t longest = 0;
    for (const auto &entry : entries) longest = std::max(longest, size_of(entry));
    return static_cast<DWORD>(longest);
}

std::size_t Subkey_Name_Size(const RegistryKey *key) {
    return key->name.size();
}
std::size_t Subkey_Class_Size(const RegistryKey *key) {
    return key->class_name.size();
}
std::size_t Value_Name_Size(const RegistryValue &value) {
    return value.name.size();
}
std::size_t Value_Data_Size(const RegistryValue &value) {
    return value.data.size();
}

} // namespace

extern "C" {

LONG RegEnumKeyExA(HKEY key, DWORD index, LPSTR name, DWORD *name_size, DWORD *reserved, LPSTR class_name,
                   DWORD *class_size, FILETIME *last_write) {
    if (!name || !name_size || reserved || (class_name && !class_size)) return ERROR_INVALID_PARAMETER;
    return With_Key<Reading>(key, KEY_ENUMERATE_SUB_KEYS, [&](const Reading &, RegistryKey &from) -> LONG {
        if (index >= from.subkeys.size()) return ERROR_NO_MORE_ITEMS;
        const RegistryKey *subkey = *from.subkey_place.At(from.subkeys, index);
        const bool fits =
            Name_Fits(subkey->name, name, name_size) && Name_Fits(subkey->class_name, class_name, class_size);
        Give_Name(subkey->name, name, name_size, fits);
        Give_Name(subkey->class_name, class_name, class_size, fits);
        Give_Time(subkey->last_write, last_write);
        return fits ? ERROR_SUCCESS : ERROR_MORE_DATA;
    });
}

LONG RegEnumValueA(HKEY key, DWORD index, LPSTR name, DWORD *name_size, DWORD *reserved, DWORD *type,
                   BYTE *data, DWORD *size) {
    if (!name || !name_size || reserved || (data && !size)) return ERROR_INVALID_PARAMETER;
    return With_Key<Reading>(key, KEY_QUERY_VALUE, [&](const Reading &, RegistryKey &from) -> LONG {
        if (index >= from.values.size()) return ERROR_NO_MORE_ITEMS;
        const RegistryValue &value = *from.value_place.At(from.values, index);
        const bool fits = Name_Fits(value.name, name, name_size) && Data_Fits(value, data, size);
        Give_Name(value.name, name, name_size, fits);
        Give_Data(value, type, data, size, fits);
        return fits ? ERROR_SUCCESS : ERROR_MORE_DATA;
    });
}

LONG RegQueryInfoKeyA(HKEY key, LPSTR class_name, DWORD *class_size, DWORD *reserved, DWORD *subkeys,
                      DWORD *longest_subkey, DWORD *longest_class, DWORD *values, DWORD *longest_value_name,
                      DWORD *longest_value_data, DWORD *security_size, FILETIME *last_write) {
    if (reserved || (class_name && !class_size)) return ERROR_INVALID_PARAMETER;
    return With_Key<Reading>(key, KEY_QUERY_VALUE, [&](const Reading &, RegistryKey &from) -> LONG {
        if (subkeys) *subkeys = static_cast<DWORD>(from.subkeys.size());
        if (longest_subkey) *longest_subkey = Longest(from.subkeys, Subkey_Name_Size);
        if (longest_class) *longest_class = Longest(from.subkeys, Subkey_Class_Size);
        if (values) *values = static_cast<DWORD>(from.values.size());
        if (longest_value_name) *longest_value_name = Longest(from.values, Value_Name_Size);
        if (longest_value_data) *longest_value_data = Longest(from.values, Value_Data_Size);
        if (security_size) *security_size = 0;
        Give_Time(from.last_write, last_write);
        const bool fits = Name_Fits(from.class_name, class_name, class_size);
        Give_Name(from.class_name, class_name, class_size, fits);
        return fits ? ERROR_SUCCESS : ERROR_MORE_DATA;
    });
}
}
