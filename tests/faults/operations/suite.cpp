#include <tests/faults/operations/operation.h>

#include <kelmara/foundation/conversions.h>
#include <kelmara/suite/com_registration.h>
#include <kelmara/suite/folders.h>
#include <kelmara/suite/shell_items.h>
#include <kelmara/suite/startup.h>
#include <tests/modules/com_class.h>

#include <platform/com.h>
#include <platform/kernel.h>
#include <platform/registry.h>

namespace {

constexpr char Shown[] = "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\MyComputer\\NameSpace\\"
                         "{5B0A3A10-77C1-4D0E-9122-3F5E016C2001}";

long Register() {
    return RegisterServer(nullptr, CLSID_TestCounter, "A counter", "Test.Counter", "Test.Counter.1");
}

/// The class is registered, if only in part. It stays: making it takes its time on the disk.
struct Class {
    Class() {
        HKEY key;
        if (RegOpenKeyA(HKEY_LOCAL_MACHINE, Shown, &key) != 0) {
            RegCreateKeyExA(HKEY_LOCAL_MACHINE, Shown, 0, nullptr, 0, KEY_READ, nullptr, &key, nullptr);
            Register();
        }
        RegCloseKey(key);
    }
};

std::string Class_State(Class &) {
    HKEY key;
    if (RegOpenKeyA(HKEY_CLASSES_ROOT, "CLSID\\{5B0A3A10-77C1-4D0E-9122-3F5E016C2001}", &key) != 0) return "";
    RegCloseKey(key);
    return "registered";
}

} // namespace

Operations Suite_Operations() {
    const auto prepare = [] { return std::make_shared<Class>(); };
    const auto nothing = [](Class &) { return ""; };
    return {
        Row(
            "Get_Shell_Folder_ID_List", 1, {Gives_Nothing}, prepare,
            [](Class &) {
                _ITEMIDLIST *list = nullptr;
                const bool found = Get_Shell_Folder_ID_List(&CLSID_TestCounter, &list);
                CoTaskMemFree(list);
                return found;
            },
            nothing),
        Row(
            "GetKelMaraFolderPath", 1, {Gives_Nothing}, prepare,
            [](Class &) {
                char path[260];
                GetKelMaraFolderPath(4, path);
                return path[0] != 0;
            },
            nothing),
        Row(
            "Is_Valid_Component_Name", 1, {}, prepare,
            [](Class &) { return Is_Valid_Component_Name("name"); }, nothing),
        // "writes or deletes as much as the machine lets it, ... and answers 0 whatever came of it"
        Row(
            "RegisterServer", 0, {}, prepare, [](Class &) { return Register(); }, Class_State,
            Leaves::Partly),
        Row(
            "UnregisterServer", 0, {}, prepare,
            [](Class &) { return UnregisterServer(CLSID_TestCounter, "Test.Counter", "Test.Counter.1"); },
            Class_State, Leaves::Partly),
    };
}
