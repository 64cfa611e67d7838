#include <platform/com/class_keys.h>

#include <platform/registry.h>

#include <new>

std::string Text_Of(GUID const &guid) {
    WCHAR wide[39];
    const int size = StringFromGUID2(guid, wide, 39);
    return {wide, wide + size - 1};
}

std::string Default_Value_Of(const std::string &key) {
    std::string value(MAX_PATH, '\0');
    auto size = static_cast<LONG>(value.size());
    LONG result;
    while ((result = RegQueryValueA(HKEY_CLASSES_ROOT, key.c_str(), value.data(), &size)) == ERROR_MORE_DATA)
        value.resize(static_cast<std::size_t>(size));
    if (result == ERROR_NOT_ENOUGH_MEMORY) throw std::bad_alloc();
    return result == ERROR_SUCCESS ? std::string(value.c_str()) : std::string();
}

std::string Module_Of_Class(REFCLSID clsid) {
    return Default_Value_Of("CLSID\\" + Text_Of(clsid) + "\\InProcServer32");
}
