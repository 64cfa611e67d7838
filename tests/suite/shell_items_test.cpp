#include <kelmara/suite/shell_items.h>

#include <kelmara/foundation/conversions.h>
#include <kelmara/suite/com_registration.h>
#include <tests/modules/com_class.h>
#include <tests/support/registry_verbs.h>
#include <tests/support/replaced_import.h>
#include <tests/support/test_memory.h>

#include <sys/mman.h>

namespace {

// The shell's memory, which counts what comes back and has none to give when told so.
struct WatchedMemory final : IMalloc {
    static inline WatchedMemory *current;
    WatchedMemory() { current = this; }
    HRESULT QueryInterface(REFIID, void **) override { return E_NOINTERFACE; }
    ULONG AddRef() override { return 2; }
    ULONG Release() override { return ++released; }
    void *Alloc(ULONG size) override { return fails ? nullptr : CoTaskMemAlloc(size); }
    void *Realloc(void *, ULONG) override { return nullptr; }
    void Free(void *block) override { ++freed, CoTaskMemFree(block); }
    ULONG GetSize(void *) override { return 0; }
    int DidAlloc(void *) override { return -1; }
    void HeapMinimize() override {}

    static HRESULT Give(IMalloc **out) {
        *out = current;
        ++current->given;
        return S_OK;
    }
    ReplacedImport import{"libkelmara.so", "SHGetMalloc", reinterpret_cast<void *>(Give)};
    bool fails = false;
    ULONG given = 0, released = 0;
    int freed = 0;
};

HRESULT No_Malloc(IMalloc **) {
    return E_UNEXPECTED;
}

WCHAR *Wide(const std::string &text) {
    auto *const wide = static_cast<WCHAR *>(CoTaskMemAlloc((text.size() + 1) * sizeof(WCHAR)));
    *std::copy(text.begin(), text.end(), wide) = 0;
    return wide;
}

constexpr char Name_Space[] =
    "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\MyComputer\\NameSpace\\";
_ITEMIDLIST *const Untouched = reinterpret_cast<_ITEMIDLIST *>(8);

struct ShellItems : MachineTest {
    // The list, or none.
    static std::string Find() {
        _ITEMIDLIST *list = Untouched;
        if (!Get_Shell_Folder_ID_List(&CLSID_TestCounter, &list)) {
            EXPECT_EQ(list, Untouched);
            return "none";
        }
        const std::string bytes(reinterpret_cast<const char *>(list), Get_Itemlist_Size(list));
        CoTaskMemFree(list);
        return bytes;
    }
    static void Show(const std::string &name, _GUID clsid = CLSID_TestCounter) {
        RegisterServer(nullptr, clsid, name.c_str(), "Test.Counter", "Test.Counter.1");
        char text[39];
        GUIDToString(&clsid, text, false);
        TestKey(Name_Space + std::string(text), HKEY_LOCAL_MACHINE);
    }
};

TEST_F(ShellItems, FindAClassUnderMyComputerByItsName) {
    _ITEMIDLIST *computer = nullptr;
    ASSERT_EQ(SHGetSpecialFolderLocation(nullptr, CSIDL_DRIVES, &computer), S_OK);
    std::string expected(reinterpret_cast<const char *>(computer), 20);
    CoTaskMemFree(computer);
    expected +=
        std::string("\x14\0\x1F\0", 4) + std::string(reinterpret_cast<const char *>(&CLSID_TestCounter), 16);
    expected += std::string(2, '\0');
    EXPECT_EQ(Find(), "none") << "not registered";
    RegisterServer(nullptr, CLSID_TestCounter, "A counter", "Test.Counter", "Test.Counter.1");
    EXPECT_EQ(Find(), "none") << "not under My Computer";
    for (const char *windows : {"98", "xp"}) {
        Override_Machine_Setting("windows", windows);
        for (const std::string &name : {std::string("A counter"), std::string(255, 'n'), std::string()}) {
            Show(name);
            EXPECT_EQ(Find(), expected) << name;
        }
        Show(std::string(256, 'n'));
        EXPECT_EQ(Find(), "none");
    }
    Override_Machine_Setting("windows", nullptr);
    EXPECT_FALSE(Get_Shell_Folder_ID_List(nullptr, &computer));
    EXPECT_FALSE(Get_Shell_Folder_ID_List(&CLSID_TestCounter, nullptr));
}

TEST_F(ShellItems, LeaveNothingBehindWhenAStepFails) {
    Show("A counter");
    const struct {
        const char *call;
        void *replacement;
    } steps[] = {
        {"SHGetMalloc", reinterpret_cast<void *>(No_Malloc)},
        {"SHGetDesktopFolder", reinterpret_cast<void *>(+[](IShellFolder **) -> HRESULT { return E_FAIL; })},
        {"SHGetSpecialFolderLocation",
         reinterpret_cast<void *>(+[](HWND, int, LPITEMIDLIST *) -> HRESULT { return E_FAIL; })},
    };
    for (const auto &step : steps) {
        const ReplacedImport import("libkelmara.so", step.call, step.replacement);
        EXPECT_EQ(Find(), "none") << step.call;
    }
    {
        WatchedMemory memory;
        EXPECT_NE(Find(), "none");
        // C:, Z:, the class and My Computer with the three names; the result was not the library's.
        EXPECT_EQ(memory.freed, 7);
        EXPECT_EQ(memory.released, memory.given);
        memory.fails = true;
        EXPECT_EQ(Find(), "none");
        EXPECT_EQ(memory.freed, 14);
        EXPECT_EQ(memory.released, memory.given);
    }
    const NoLeak no_leak;
    for (long nth = 1, refused = 1; refused; ++nth) {
        const FailingMemory failing(nth);
        Find();
        refused = failing.Refused();
    }
}

TEST_F(ShellItems, AreTheFirstOfTheirName) {
    const std::string longest(255, 'n');
    const std::string shown[] = {"\xE4",  longest + "n",         "Counter", "COUNTER",
                                 longest, std::string(300, 'm'), ""};
    for (unsigned char i = 0; i < std::size(shown); ++i) Show(shown[i], {0, 0, 0, {i}});
    const struct {
        std::string name;
        int found; // of the shown ones, -1: none
    } cases[] = {{"cOUNTER", 2}, {"\xE4", 0}, {"\xC4", -1}, {longest, 4}, {std::string(255, 'm'), -1},
                 {"", 6}};
    IShellFolder *desktop;
    void *my_computer;
    _ITEMIDLIST *item;
    ASSERT_EQ(SHGetDesktopFolder(&desktop), S_OK);
    ASSERT_EQ(SHGetSpecialFolderLocation(nullptr, CSIDL_DRIVES, &item), S_OK);
    ASSERT_EQ(desktop->BindToObject(item, nullptr, IID_IShellFolder, &my_computer), S_OK);
    CoTaskMemFree(item);
    auto *const folder = static_cast<IShellFolder *>(my_computer);
    for (const auto &each : cases) {
        WatchedMemory memory;
        item = Untouched;
        EXPECT_EQ(Get_PIDL(folder, each.name.c_str(), &item), each.found >= 0) << each.name;
        EXPECT_EQ(item ? reinterpret_cast<const BYTE *>(item)[12] : -1, each.found) << each.name;
        // Behind two drives. Every name was a wide one, and each item that was passed over came back.
        EXPECT_EQ(memory.freed, item ? 2 * (each.found + 2) + 1 : 2 * (2 + 7)) << each.name;
        EXPECT_EQ(memory.released, memory.given);
        CoTaskMemFree(item);
    }
    item = Untouched;
    EXPECT_FALSE(Get_PIDL(nullptr, "counter", &item));
    EXPECT_FALSE(item);
    EXPECT_FALSE(Get_PIDL(folder, nullptr, &item));
    EXPECT_FALSE(Get_PIDL(folder, (longest + "n").c_str(), &item)) << "which no item can be found by";
    EXPECT_EQ(folder->Release(), 0u);
}

TEST(ShellNames, AreTextOrStayTheRecords) {
    const struct {
        UINT type;
        std::string name;
        int size;
        long result;
        const char *text;
    } cases[] = {
        {STRRET_CSTR, "abc", 4, S_OK, "abc"},
        {STRRET_CSTR, "abcd", 4, E_OUTOFMEMORY, ""},
        {STRRET_CSTR, std::string(260, 'n'), 300, S_OK, nullptr},
        {STRRET_WSTR, "abc", 4, S_OK, "abc"},
        {STRRET_WSTR, "abcd", 4, E_OUTOFMEMORY, ""},
        {STRRET_WSTR, "", 1, S_OK, ""},
        {STRRET_WSTR, "abc", 0, E_OUTOFMEMORY, "###"},
        {STRRET_CSTR, "", -1, E_OUTOFMEMORY, "###"},
        {STRRET_OFFSET, "", 4, E_NOTIMPL, ""},
        {3, "", 4, E_INVALIDARG, ""},
    };
    for (const auto &each : cases) {
        char out[301] = "###";
        STRRET record = {};
        record.uType = each.type;
        if (each.type == STRRET_CSTR) each.name.copy(record.cStr, sizeof record.cStr);
        if (each.type == STRRET_WSTR) record.pOleStr = Wide(each.name);
        EXPECT_EQ(DS_StrRetToStr(&record, out, each.size), each.result) << each.name << each.size;
        EXPECT_EQ(std::string(out), each.text ? each.text : each.name) << each.name << each.size;
        if (each.type != STRRET_WSTR) continue;
        EXPECT_EQ(record.pOleStr == nullptr, each.result == S_OK);
        CoTaskMemFree(record.pOleStr);
    }
    char out[4] = "###";
    STRRET record = {};
    EXPECT_EQ(DS_StrRetToStr(&record, out, 4), E_INVALIDARG) << "a wide text that is null";
    record.pOleStr = Wide("abc");
    {
        const ReplacedImport import("libkelmara.so", "SHGetMalloc", reinterpret_cast<void *>(No_Malloc));
        EXPECT_EQ(DS_StrRetToStr(&record, out, 4), E_UNEXPECTED);
    }
    EXPECT_TRUE(record.pOleStr && !*out);
    CoTaskMemFree(record.pOleStr);
}

TEST(ItemListSizes, AreCountedAsFarAsThereIsAList) {
    constexpr std::size_t Space = 2 << 20;
    auto *const space =
        static_cast<BYTE *>(mmap(nullptr, Space, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    ASSERT_EQ(mprotect(space + Space - 4096, 4096, PROT_NONE), 0);
    BYTE *const end = space + Space - 4096;
    const auto Size = [](BYTE *list) { return Get_Itemlist_Size(reinterpret_cast<_ITEMIDLIST *>(list)); };
    EXPECT_EQ(Get_Itemlist_Size(nullptr), 0u);
    EXPECT_EQ(Size(space), 2u);
    space[0] = 10, space[10] = 20;
    EXPECT_EQ(Size(space), 32u);
    space[30] = 1;
    EXPECT_EQ(Size(space), 32u) << "an item that cannot be";
    end[-12] = 10, end[-2] = 3;
    EXPECT_EQ(Size(end - 12), 12u) << "an item that is cut";
    end[-2] = 2;
    EXPECT_EQ(Size(end - 12), 14u) << "no terminator";
    EXPECT_EQ(Size(end - 1), 2u);
    for (std::size_t i = 0; i < Space - 4096; i += 64) space[i] = 64;
    EXPECT_EQ(Size(space), (1u << 20) - 64 + 2) << "without end";
    munmap(space, Space);
}

} // namespace
