#include <platform/shell.h>

#include <tests/support/registry_verbs.h>

#include <sys/mman.h>

namespace {

constexpr char Accounts[] = "{5B0A3A10-77C1-4D0E-9122-3F5E016C2003}";
constexpr char Devices[] = "{5B0A3A10-77C1-4D0E-9122-3F5E016C2004}";
constexpr char Unregistered[] = "{5B0A3A10-77C1-4D0E-9122-3F5E016C2005}";

std::string Name_Of(IShellFolder *folder, LPCITEMIDLIST item, DWORD flags) {
    STRRET name;
    EXPECT_EQ(folder->GetDisplayNameOf(item, flags, &name), S_OK);
    if (name.uType == STRRET_CSTR) return "C " + std::string(name.cStr);
    EXPECT_EQ(name.uType, STRRET_WSTR);
    std::string text = "W ";
    for (const WCHAR *c = name.pOleStr; *c; ++c) text += static_cast<char>(*c);
    CoTaskMemFree(name.pOleStr);
    return text;
}

using Texts = std::vector<std::string>;

Texts Names(IShellFolder *folder, DWORD flags = SHGDN_NORMAL) {
    Texts names;
    IEnumIDList *items;
    EXPECT_EQ(folder->EnumObjects(nullptr, SHCONTF_FOLDERS, &items), S_OK);
    for (LPITEMIDLIST item; items->Next(1, &item, nullptr) == S_OK; CoTaskMemFree(item))
        names.push_back(Name_Of(folder, item, flags));
    items->Release();
    return names;
}

struct ShellTest : MachineTest {
    void SetUp() override {
        MachineTest::SetUp();
        SHGetDesktopFolder(&desktop);
        ASSERT_EQ(SHGetSpecialFolderLocation(nullptr, CSIDL_DRIVES, &place), S_OK);
        ASSERT_EQ(desktop->BindToObject(place, nullptr, IID_IShellFolder, &object), S_OK);
        my_computer = static_cast<IShellFolder *>(object);
    }
    void TearDown() override {
        CoTaskMemFree(place);
        EXPECT_EQ(my_computer->Release(), 0u);
        MachineTest::TearDown();
    }
    static void Show(const std::string &name) {
        TestKey("Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\MyComputer\\NameSpace\\" + name,
                HKEY_LOCAL_MACHINE);
    }
    static void Show(const char *clsid, const std::string &name) {
        TestKey(std::string("CLSID\\") + clsid, HKEY_CLASSES_ROOT).Set("", name);
        Show(clsid);
    }

    IShellFolder *desktop, *my_computer;
    LPITEMIDLIST place;
    void *object;
};

TEST_F(ShellTest, ShowsDrivesAndRegisteredClassesInMyComputer) {
    machine.Set("drive_a", "removable");
    machine.Set("drive_d", "cdrom");
    const std::string longest(300, 'n');
    Show(Devices, longest);
    Show(Accounts, "Accounts");
    Show(Unregistered);
    Show("no class");
    EXPECT_EQ(Names(desktop), Texts{"W My Computer"});
    EXPECT_EQ(Names(my_computer), (Texts{"W Removable Disk (A:)", "W Local Disk (C:)", "W CD Drive (D:)",
                                         "W Local Disk (Z:)", "W Accounts", "W " + longest}));
    Override_Machine_Setting("windows", "98");
    EXPECT_EQ(Names(my_computer)[4], "C Accounts");
    EXPECT_EQ(Names(my_computer)[5], "W " + longest) << "more than the record holds";
    EXPECT_EQ(Names(my_computer, SHGDN_FORPARSING)[0], "C A:\\");
    EXPECT_EQ(Names(my_computer, SHGDN_FORPARSING)[4], std::string("C ::") + Accounts);
    Override_Machine_Setting("windows", nullptr);
}

TEST_F(ShellTest, GivesItemsAsTheyWereInPortionsOfAnySize) {
    IEnumIDList *items, *copy;
    ASSERT_EQ(my_computer->EnumObjects(nullptr, SHCONTF_FOLDERS, &items), S_OK);
    Show(Accounts, "comes too late");
    LPITEMIDLIST lists[3] = {};
    ULONG count = 9;
    EXPECT_EQ(items->Next(2, lists, nullptr), E_POINTER);
    EXPECT_EQ(items->Skip(1), S_OK);
    ASSERT_EQ(items->Clone(&copy), S_OK);
    EXPECT_EQ(items->Next(3, lists, &count), S_FALSE);
    EXPECT_EQ(count, 1u);
    EXPECT_EQ(Name_Of(my_computer, lists[0], SHGDN_NORMAL), "W Local Disk (Z:)");
    CoTaskMemFree(lists[0]);
    EXPECT_EQ(items->Release(), 0u);
    EXPECT_EQ(copy->Skip(2), S_FALSE);
    EXPECT_EQ(copy->Next(1, lists, nullptr), S_FALSE);
    EXPECT_EQ(copy->Reset(), S_OK);
    EXPECT_EQ(copy->Skip(2), S_OK);
    EXPECT_EQ(copy->Release(), 0u);
}

TEST_F(ShellTest, TakesNoListForAnItemThatIsNone) {
    constexpr std::size_t Page = 4096;
    void *const pages = mmap(nullptr, 2 * Page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    char *const end = static_cast<char *>(pages) + Page;
    ASSERT_EQ(mprotect(end, Page, PROT_NONE), 0);
    const std::string computer(reinterpret_cast<const char *>(place), 22);
    const std::string cut = computer.substr(0, 20);
    const std::string others[] = {
        "",        "\x14",         "\xFF\xFF",
        {1, 0, 1}, {0, 0},         {7, 0, 0x23, 1, ':', '\\', 0, 0, 0},
        cut,       cut + computer, computer.substr(0, 2) + " " + computer.substr(3)};
    STRRET name;
    for (const std::string &other : others) {
        other.copy(end - other.size(), other.size());
        const auto list = reinterpret_cast<LPCITEMIDLIST>(end - other.size());
        for (IShellFolder *folder : {desktop, my_computer}) {
            EXPECT_EQ(folder->GetDisplayNameOf(list, 0, &name), E_INVALIDARG) << other.size();
            EXPECT_EQ(folder->BindToObject(list, nullptr, IID_IShellFolder, &object), E_INVALIDARG);
        }
    }
    EXPECT_EQ(my_computer->GetDisplayNameOf(place, 0, &name), E_INVALIDARG) << "lies on the desktop";
    munmap(pages, 2 * Page);
}

} // namespace
