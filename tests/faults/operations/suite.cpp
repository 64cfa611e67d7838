#include <tests/faults/operations/operation.h>

#include <kelmara/foundation/conversions.h>
#include <kelmara/suite/com_registration.h>
#include <kelmara/suite/folders.h>
#include <kelmara/suite/shell_items.h>
#include <kelmara/suite/startup.h>
#include <tests/faults/operations/fake_suite.h>
#include <tests/modules/com_class.h>
#include <tests/support/registry_verbs.h>

#include <platform/com.h>
#include <platform/kernel.h>
#include <platform/registry.h>

#include <algorithm>

namespace {

constexpr char Shown[] = "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\MyComputer\\NameSpace\\"
                         "{5B0A3A10-77C1-4D0E-9122-3F5E016C2001}";

long Register() {
    return RegisterServer(nullptr, CLSID_TestCounter, "A counter", "Test.Counter", "Test.Counter.1");
}

/// The class is registered, if only in part. It stays: making it takes its time on the disk.
struct Class {
    std::string State() const {
        std::string state;
        for (const std::string name :
             {"CLSID\\{5B0A3A10-77C1-4D0E-9122-3F5E016C2001}", "Test.Counter", "Test.Counter.1"}) {
            HKEY there;
            if (RegOpenKeyA(HKEY_CLASSES_ROOT, name.c_str(), &there) != 0) continue;
            RegCloseKey(there);
            state += "[" + name + "]=|" + All_Below(TestKey(name, HKEY_CLASSES_ROOT), name + "\\");
        }
        return state;
    }
    Class() {
        if (TestKey(Shown, HKEY_LOCAL_MACHINE).disposition == REG_CREATED_NEW_KEY) Register();
    }
};

struct Unregistered : Class {
    Unregistered() { UnregisterServer(CLSID_TestCounter, "Test.Counter", "Test.Counter.1"); }
    ~Unregistered() { Register(); }
};

struct Desktop : Class {
    Desktop() { SHGetDesktopFolder(&folder); }
    ~Desktop() {
        CoTaskMemFree(list);
        folder->Release();
    }
    IShellFolder *folder = nullptr;
    _ITEMIDLIST *list = nullptr;
};

struct Name {
    Name() {
        record.uType = STRRET_WSTR;
        record.pOleStr = static_cast<WCHAR *>(CoTaskMemAlloc(20));
        std::copy_n(u"text", 5, record.pOleStr);
    }
    ~Name() { CoTaskMemFree(record.pOleStr); }
    _STRRET record = {};
    char text[20];
};

int Tell_Nobody(HWND, LPCSTR, LPCSTR, UINT) {
    return 0;
}
[[noreturn]] void Throw_Instead(UINT) {
    throw -2;
}

/// A machine on which a process that would end throws -2.
struct Starting : FakeSuite {
    ReplacedImport box{"libkelmara.so", "MessageBoxA", reinterpret_cast<void *>(Tell_Nobody)};
    ReplacedImport exit{"libkelmara.so", "ExitProcess", reinterpret_cast<void *>(Throw_Instead)};
};

} // namespace

Operations Suite_Operations() {
    return {
        Row<Desktop>("Get_Shell_Folder_ID_List", 1, {Nothing},
                     [](auto &of) { return Get_Shell_Folder_ID_List(&CLSID_TestCounter, &of.list); }),
        Row<Desktop>("Get_PIDL", 1, {Nothing},
                     [](auto &of) { return Get_PIDL(of.folder, "My Computer", &of.list); }),
        Row<Name>("DS_StrRetToStr", 0, {No_Memory},
                  [](auto &of) { return DS_StrRetToStr(&of.record, of.text, sizeof of.text); }),
        Row<Class>("GetKelMaraFolderPath", 1, {Nothing},
                   [](auto &) {
                       char path[260];
                       GetKelMaraFolderPath(4, path);
                       return path[0] != 0;
                   }),
        Row<Class>("Is_Valid_Component_Name", 1, {}, [](auto &) { return Is_Valid_Component_Name("name"); }),
        // a drive whose room cannot be told is taken for a full one, and the process would end
        Row<Starting>("Init_Kelmara", 0, {{Outcome::Thrown_Int, -2}}, [](auto &) { Init_Kelmara(); }),
        Row<Starting>("Verify_Kelmara", 0, {Gives(Server_Not_Reached)},
                      [](auto &) { return Verify_Kelmara(); }),
        // "writes or deletes as much as the machine lets it, ... and answers 0 whatever came of it"
        Row<Class>("RegisterServer", 0, {}, Partly_Untold, [](auto &) { return Register(); }),
        Row<Unregistered>("RegisterServer anew", 0, {}, Partly_Untold, [](auto &) { return Register(); }),
        Row<Class>(
            "RegisterShellExtension", 0, {}, Partly_Untold,
            [](auto &) { return RegisterShellExtension(nullptr, CLSID_TestCounter, "open ", "Open"); }),
        Row<Class>(
            "UnregisterServer", 0, {}, Partly_Untold,
            [](auto &) { return UnregisterServer(CLSID_TestCounter, "Test.Counter", "Test.Counter.1"); }),
    };
}
