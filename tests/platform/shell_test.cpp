#include <platform/shell.h>

#include <tests/support/registry_verbs.h>

#include <platform/com/reference.h>

#include <sys/mman.h>

namespace {

constexpr char Name_Space[] =
    "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\MyComputer\\NameSpace\\";
constexpr char Accounts[] = "{5B0A3A10-77C1-4D0E-9122-3F5E016C2003}";
constexpr char Devices[] = "{5B0A3A10-77C1-4D0E-9122-3F5E016C2004}";
constexpr char Unregistered[] = "{5B0A3A10-77C1-4D0E-9122-3F5E016C2005}";
constexpr DWORD All = SHCONTF_FOLDERS | SHCONTF_NONFOLDERS | SHCONTF_INCLUDEHIDDEN;

// One list, freed at the end; it keeps its address.
struct List {
    List() = default;
    ~List() { CoTaskMemFree(list); }
    List(const List &) = delete;
    List &operator=(const List &) = delete;
    LPITEMIDLIST list = nullptr;
};

std::string Taken(STRRET &name) {
    if (name.uType == STRRET_CSTR) return "C " + std::string(name.cStr);
    EXPECT_EQ(name.uType, STRRET_WSTR);
    std::string text = "W ";
    for (const WCHAR *c = name.pOleStr; *c; ++c) text += static_cast<char>(*c);
    CoTaskMemFree(name.pOleStr);
    return text;
}

struct ShellTest : MachineTest {
    void SetUp() override {
        MachineTest::SetUp();
        SHGetDesktopFolder(desktop.Fill());
        ASSERT_EQ(SHGetSpecialFolderLocation(nullptr, CSIDL_DRIVES, &place.list), S_OK);
        ASSERT_EQ(desktop->BindToObject(place.list, nullptr, IID_IShellFolder, my_computer.Fill_Any()), S_OK);
    }
    static void Register(const char *clsid, const std::string &name) {
        TestKey(std::string("CLSID\\") + clsid, HKEY_CLASSES_ROOT).Set("", name);
        TestKey(std::string(Name_Space) + clsid, HKEY_LOCAL_MACHINE);
    }
    static std::vector<std::string> Names(IShellFolder *folder, DWORD flags = SHGDN_NORMAL) {
        std::vector<std::string> names;
        Reference<IEnumIDList> items;
        EXPECT_EQ(folder->EnumObjects(nullptr, All, items.Fill()), S_OK);
        for (List item; items->Next(1, &item.list, nullptr) == S_OK; CoTaskMemFree(item.list)) {
            STRRET name;
            EXPECT_EQ(folder->GetDisplayNameOf(item.list, flags, &name), S_OK);
            names.push_back(Taken(name));
        }
        return names;
    }

    Reference<IShellFolder> desktop, my_computer;
    List place;
};

using Texts = std::vector<std::string>;

TEST_F(ShellTest, ShowsDrivesAndRegisteredClassesInMyComputer) {
    machine.Set("drive_a", "removable");
    machine.Set("drive_d", "cdrom");
    const std::string longest(300, 'n');
    Register(Devices, longest);
    Register(Accounts, "Accounts");
    TestKey(std::string(Name_Space) + Unregistered, HKEY_LOCAL_MACHINE);
    TestKey(std::string(Name_Space) + "no class", HKEY_LOCAL_MACHINE);
    EXPECT_EQ(Names(desktop.Get()), Texts{"W My Computer"});
    EXPECT_EQ(Names(my_computer.Get()),
              (Texts{"W Removable Disk (A:)", "W Local Disk (C:)", "W CD Drive (D:)", "W Local Disk (Z:)",
                     "W Accounts", "W " + longest}));
    Override_Machine_Setting("windows", "98");
    EXPECT_EQ(Names(my_computer.Get())[4], "C Accounts");
    EXPECT_EQ(Names(my_computer.Get())[5], "W " + longest) << "more than the record holds";
    const Texts parsing = Names(my_computer.Get(), SHGDN_FORPARSING);
    EXPECT_EQ(parsing[0], "C A:\\");
    EXPECT_EQ(parsing[4], std::string("C ::") + Accounts);
    Override_Machine_Setting("windows", nullptr);
}

TEST_F(ShellTest, GivesItemsInPortionsAndCopiesOfItsPosition) {
    Register(Accounts, "Accounts");
    Reference<IEnumIDList> items, copy, none;
    ASSERT_EQ(my_computer->EnumObjects(nullptr, All, items.Fill()), S_OK);
    Register(Devices, "comes too late");
    List given[4];
    LPITEMIDLIST lists[4] = {};
    ULONG count = 9;
    EXPECT_EQ(items->Next(2, lists, nullptr), E_POINTER);
    EXPECT_EQ(items->Skip(1), S_OK);
    ASSERT_EQ(items->Clone(copy.Fill()), S_OK);
    EXPECT_EQ(items->Next(4, lists, &count), S_FALSE);
    EXPECT_EQ(count, 2u) << "Z: and the class";
    for (int i = 0; i < 4; ++i) given[i].list = lists[i];
    EXPECT_FALSE(lists[2]);
    EXPECT_EQ(items->Next(1, lists, &count), S_FALSE);
    EXPECT_EQ(count, 0u);
    EXPECT_EQ(copy->Skip(2), S_OK);
    EXPECT_EQ(copy->Skip(1), S_FALSE);
    EXPECT_EQ(copy->Reset(), S_OK);
    EXPECT_EQ(copy->Skip(3), S_OK);
    ASSERT_EQ(my_computer->EnumObjects(nullptr, SHCONTF_NONFOLDERS, none.Fill()), S_OK);
    EXPECT_EQ(none->Skip(1), S_FALSE);
}

TEST_F(ShellTest, TakesNoListForAnItemThatIsNone) {
    constexpr std::size_t Page = 4096;
    auto *const pages = static_cast<BYTE *>(
        mmap(nullptr, 2 * Page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    ASSERT_EQ(mprotect(pages + Page, Page, PROT_NONE), 0);
    // As far before what cannot be read as it is long.
    const auto At_End = [&](const std::string &bytes) {
        return reinterpret_cast<LPCITEMIDLIST>(
            std::memcpy(pages + Page - bytes.size(), bytes.data(), bytes.size()));
    };
    const std::string computer(reinterpret_cast<const char *>(place.list), 22);
    std::string drive("\x07\x00\x23"
                      "C:\\\0\0\0",
                      9);
    STRRET name;
    void *object;
    EXPECT_EQ(my_computer->GetDisplayNameOf(At_End(drive), 0, &name), S_OK);
    CoTaskMemFree(name.pOleStr);
    const std::string others[] = {
        std::string(2, '\0'),
        std::string("\x01\x00\x01", 3),
        std::string(1, '\x14'),
        computer.substr(0, 21),
        computer.substr(0, 20) + computer,
        std::string("\xFF\xFF", 2),
        drive.substr(0, 7),
        drive.replace(3, 1, "\x01"),
        computer.substr(0, 2) + "\x20" + computer.substr(3),
    };
    for (const std::string &other : others) {
        const LPCITEMIDLIST list = At_End(other);
        for (IShellFolder *folder : {desktop.Get(), my_computer.Get()}) {
            EXPECT_EQ(folder->GetDisplayNameOf(list, 0, &name), E_INVALIDARG) << PrintToString(other);
            EXPECT_EQ(folder->BindToObject(list, nullptr, IID_IShellFolder, &object), E_INVALIDARG);
            EXPECT_FALSE(object);
        }
    }
    EXPECT_EQ(my_computer->GetDisplayNameOf(place.list, 0, &name), E_INVALIDARG) << "lies on the desktop";
    EXPECT_EQ(desktop->GetDisplayNameOf(nullptr, 0, &name), E_INVALIDARG);
    EXPECT_EQ(desktop->BindToObject(place.list, nullptr, IID_IMalloc, &object), E_NOINTERFACE);
    LPITEMIDLIST list;
    EXPECT_EQ(SHGetSpecialFolderLocation(nullptr, 0x10, &list), E_INVALIDARG);
    EXPECT_FALSE(list);
    munmap(pages, 2 * Page);
}

} // namespace
