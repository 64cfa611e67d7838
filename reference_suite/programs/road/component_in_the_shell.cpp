#include <reference_suite/programs/road/component_in_the_shell.h>

#include <reference_suite/programs/road/narrator.h>

#include <kelmara/connectivity/owned_interface.h>
#include <kelmara/kelmara.h>

#include <platform/kernel.h>
#include <platform/shell.h>

#include <string>

namespace {

constexpr char Name[] = "Phone Numbers of the Suite";
constexpr char Version_Independent_Id[] = "Kelmara.RoadPhonebook", Program_Id[] = "Kelmara.RoadPhonebook.1";
constexpr char Shell_Folders[] =
    "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\MyComputer\\NameSpace\\";

// The module that offers the class, for as long as it is registered.
class PhonebookModule {
  public:
    PhonebookModule() {
        char bin[MAX_PATH] = "";
        GetKelMaraFolderPath(7, bin);
        module_ = LoadLibraryA((std::string(bin) + "kmphonebook.dll").c_str());
        Require(module_ != nullptr, "the phone book's module can be loaded");
    }
    ~PhonebookModule() { FreeLibrary(module_); }
    PhonebookModule(const PhonebookModule &) = delete;
    PhonebookModule &operator=(const PhonebookModule &) = delete;

    HINSTANCE Handle() const { return module_; }
    // As the installer left it.
    void Register_By_Itself() const {
        const auto registration =
            reinterpret_cast<HRESULT (*)()>(GetProcAddress(module_, "DllRegisterServer"));
        Require(registration && registration() == 0, "the module registers itself again");
    }

  private:
    HINSTANCE module_;
};

long Create() {
    OwnedInterface<IUnknown> made;
    return made.Create(CLSID_PhonebookComponent, IID_IUnknown);
}

bool Find_In_The_Shell(unsigned int &size) {
    ITEMIDLIST *list = nullptr;
    if (!Get_Shell_Folder_ID_List(&CLSID_PhonebookComponent, &list)) return false;
    size = Get_Itemlist_Size(list);
    CoTaskMemFree(list);
    return true;
}

} // namespace

void Register_A_Component() {
    Begin_Chapter("A component, and where the shell shows it");
    const PhonebookModule module;
    UnregisterServer(CLSID_PhonebookComponent, Version_Independent_Id, Program_Id);
    Require(Create() == REGDB_E_CLASSNOTREG, "what is not registered cannot be created");
    RegisterServer(module.Handle(), CLSID_PhonebookComponent, Name, Version_Independent_Id, Program_Id);
    RegisterShellExtension(module.Handle(), CLSID_PhonebookComponent, "kelmara.exe -open ", "&Open");
    Require_Success(Create(), "a registered class can be created");
    Tell("Without its entries the phone book cannot be created; registered as \"%s\" it can.", Name);

    char clsid[64] = "";
    GUIDToString(&CLSID_PhonebookComponent, clsid, false);
    unsigned int size = 0;
    Require(!Find_In_The_Shell(size), "My Computer shows what is entered there alone");
    const std::string folder = Shell_Folders + std::string(clsid);
    CRegMaster shell;
    Require(shell.CreateKey(HKEY_LOCAL_MACHINE, folder.c_str()), "a class can be entered in My Computer");
    Require(Find_In_The_Shell(size), "and is found there by its name");
    Tell("Entered in My Computer, it is found there by its name: a list of %u bytes.", size);

    RegDeleteKeyA(HKEY_LOCAL_MACHINE, folder.c_str());
    UnregisterServer(CLSID_PhonebookComponent, Version_Independent_Id, Program_Id);
    Require(Create() == REGDB_E_CLASSNOTREG && !Find_In_The_Shell(size),
            "unregistered, it is gone from both");
    module.Register_By_Itself();
    Require_Success(Create(), "the suite has its phone book again");
    Tell("Unregistered, it is gone from both; then its module registers itself again.");
}
