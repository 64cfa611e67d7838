#include <kelmara/system/reg_master.h>

#include <platform/kernel.h>
#include <platform/user.h>

#include <tests/support/library_heap.h>
#include <tests/support/registry_verbs.h>
#include <tests/support/replaced_import.h>
#include <tests/support/test_machine.h>
#include <tests/support/test_memory.h>

#include <gmock/gmock.h>

#include <cstring>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class RegMaster : public MachineTest {
  protected:
    RegMaster() { CDSList().Add(0, 0); } // from here on there is a pool
    CRegMaster registry;

    bool Open(const std::string &path) { return registry.OpenKey(HKEY_CURRENT_USER, path.c_str()); }
    bool Create(const std::string &path) { return registry.CreateKey(HKEY_CURRENT_USER, path.c_str()); }
    /// The name of the one value that marks a key, so that a test sees where it stands.
    std::string Where() {
        char name[256] = "(nowhere)";
        registry.GetNextValue(0, name);
        return name;
    }
    static void Mark(const std::string &path, const std::string &mark) { TestKey(path).Set(mark, ""); }
    void TearDown() override {
        registry = CRegMaster();
        MachineTest::TearDown();
    }

  private:
    NoLeak no_leak_; // at the end of all, when the registry is gone
};

TEST_F(RegMaster, GoesDownAndUp) {
    Mark("A", "a");
    Mark("A\\B", "b");
    Mark("A\\B\\C", "c");
    EXPECT_FALSE(registry.CloseSubkey());
    EXPECT_FALSE(registry.OpenSubkey("A")) << "nothing is open";
    ASSERT_TRUE(Open("A"));
    EXPECT_TRUE(registry.OpenSubkey(0) && registry.OpenSubkey("c"));
    EXPECT_EQ(Where(), "c");
    EXPECT_FALSE(registry.OpenSubkey("missing"));
    EXPECT_EQ(Where(), "c") << "a failure leaves the place";
    EXPECT_TRUE(registry.CloseSubkey());
    EXPECT_EQ(Where(), "b");
    EXPECT_TRUE(registry.CreateSubkey("New") && registry.CloseSubkey() && registry.CloseSubkey());
    EXPECT_EQ(Where(), "a");
    EXPECT_TRUE(registry.CloseSubkey());
    EXPECT_EQ(registry.GetKey(), nullptr);
    EXPECT_THAT(TestKey("A\\B").Subkeys(), ElementsAre("C", "New"));
    for (const char *root : {static_cast<const char *>(nullptr), ""}) {
        ASSERT_TRUE(registry.CreateKey(HKEY_CURRENT_USER, root));
        ASSERT_TRUE(registry.OpenSubkey("A") && registry.OpenSubkey("B") && registry.CloseSubkey());
        EXPECT_EQ(Where(), "a");
    }
}

TEST_F(RegMaster, ForgetsWhatWasOpenWhenItOpensAnew) {
    Mark("A\\B", "b");
    Mark("Z", "z");
    ASSERT_TRUE(Open("A") && registry.OpenSubkey("B"));
    EXPECT_FALSE(Open("missing"));
    EXPECT_EQ(registry.GetKey(), nullptr);
    ASSERT_TRUE(Open("A") && registry.OpenSubkey("B"));
    RegDeleteKeyA(HKEY_CURRENT_USER, "A\\B");
    RegDeleteKeyA(HKEY_CURRENT_USER, "A");
    EXPECT_FALSE(registry.CloseSubkey()) << "there is nothing above any more";
    EXPECT_EQ(registry.GetKey(), nullptr);
    ASSERT_TRUE(Open("Z"));
    EXPECT_TRUE(registry.CloseSubkey());
    EXPECT_EQ(registry.GetKey(), nullptr) << "what was left of the old way is not gone back to";
}

TEST_F(RegMaster, RefusesPathsThatAreTooLong) {
    const std::string first(200, 'f');
    for (unsigned total : {255u, 256u}) {
        const std::string name(total - first.size() - 1, 'n');
        const bool fits = total <= 255;
        ASSERT_TRUE(Create(first));
        EXPECT_EQ(registry.CreateSubkey(name.c_str()), fits) << total;
        EXPECT_EQ(TestKey(first).Subkeys().size(), fits ? 1u : 0u) << "refused, and made in spite of it";
        Mark(first + "\\" + name, "below");
        ASSERT_TRUE(Open(first));
        EXPECT_EQ(registry.OpenSubkey(name.c_str()), fits) << total;
        EXPECT_EQ(Where(), fits ? "below" : "(nowhere)");
        ASSERT_TRUE(Open(first + "\\" + name)) << "a path from the root has no such limit";
        RegDeleteKeyA(registry.GetKey(), "");
    }
}

TEST_F(RegMaster, StandsWhereItWasWhenMemoryRunsOut) {
    Mark("A", "a");
    ASSERT_TRUE(Open("A"));
    {
        FailingMemory none(1, true);
        EXPECT_FALSE(registry.CreateSubkey("B"));
        EXPECT_EQ(Where(), "a");
    }
    {
        LibraryHeap heap;
        CDSList all; // every item that the pool has
        heap.Fail(1, true);
        EXPECT_THROW(for (;;) all.Add(1, 0), long);
        EXPECT_FALSE(registry.CreateSubkey("B"));
        EXPECT_EQ(Where(), "a");
        CRegMaster closed;
        EXPECT_FALSE(closed.CreateKey(HKEY_CURRENT_USER, "X"));
        EXPECT_EQ(closed.GetKey(), nullptr);
    }
    EXPECT_THAT(TestKey("A").Subkeys(), IsEmpty());
    EXPECT_EQ(TestKey("X").disposition, REG_CREATED_NEW_KEY);
}

TEST_F(RegMaster, CopiesOpenTheSameKeyForThemselves) {
    Mark("A\\B", "b");
    Mark("A", "a");
    CRegMaster assigned;
    {
        CRegMaster original;
        ASSERT_TRUE(original.OpenKey(HKEY_CURRENT_USER, "A") && original.OpenSubkey("B"));
        original.m_ClearStringTail = true;
        registry = CRegMaster(original);
        assigned.OpenKey(HKEY_CURRENT_USER, "A");
        assigned = *&original;
        EXPECT_TRUE(original.CloseSubkey());
    }
    EXPECT_EQ(Where(), "b");
    EXPECT_TRUE(registry.CloseSubkey());
    EXPECT_EQ(Where(), "a");
    EXPECT_TRUE(assigned.m_ClearStringTail && assigned.CloseSubkey() && assigned.CloseSubkey());
}

long flushes;

TEST_F(RegMaster, SetsAndFlushesValuesOfEveryKind) {
    ASSERT_TRUE(Create("V"));
    const auto count_flush = [](HKEY key) { return ++flushes, RegFlushKey(key); };
    const ReplacedImport flush("libkelmara.so", "RegFlushKey", reinterpret_cast<void *>(+count_flush));
    flushes = 0;
    const long numbers[] = {1, -2};
    char text[] = "text";
    const int number = 7;
    EXPECT_TRUE(registry.SetRegEntry("string", text) && registry.SetRegEntry("empty", "") &&
                registry.SetRegEntry("part", "parted", 4) && registry.SetRegEntry(nullptr, "default"));
    EXPECT_TRUE(registry.SetRegEntry("binary", numbers, sizeof numbers));
    EXPECT_TRUE(registry.SetRegEntry("zero", 0) && registry.SetRegEntry("int", number) &&
                registry.SetRegEntry("unsigned", 0xFFFFFFFEu) && registry.SetRegEntry("long", 3L));
    EXPECT_TRUE(registry.SetRegEntry(REG_MULTI_SZ, "multi", "a\0b\0", 5));
    EXPECT_EQ(flushes, 10);
    EXPECT_FALSE(registry.SetRegEntry("null", nullptr));
    std::vector<std::string> values;
    char bytes[20];
    for (unsigned long index = 0, type = 0, size = sizeof bytes;
         registry.GetNextValueData(index, &type, bytes, &size); ++index, size = sizeof bytes) {
        values.push_back(std::to_string(type) + ":" + std::string(bytes, size));
    }
    const std::string zero(1, '\0'), zeroes(3, '\0');
    EXPECT_THAT(values,
                ElementsAre("1:text" + zero, "1:" + zero, "1:part", "1:default" + zero,
                            "3:\1" + zeroes + "\xFE\xFF\xFF\xFF", "4:" + zeroes + zero, "4:\7" + zeroes,
                            "4:\xFE\xFF\xFF\xFF", "4:\3" + zeroes, "7:a" + zero + "b" + zero + zero));
    EXPECT_TRUE(registry.DeleteRegEntry("zero"));
    EXPECT_FALSE(registry.RegEntryExists("zero") || registry.DeleteRegEntry("zero"));
    registry.IncrDword("int");
    registry.DecrDword("int");
    EXPECT_EQ(flushes, 10) << "neither counters nor what fails";
}

TEST_F(RegMaster, ReadsIntoBuffersWithinTheirBounds) {
    ASSERT_TRUE(Create("V") && registry.SetRegEntry("text", "four") && registry.SetRegEntry("number", 70000));
    char buffer[300];
    const auto fill = [&] { std::memset(buffer, 'x', sizeof buffer); };
    const auto is_filled = [&](int from) {
        return std::string(buffer + from, 300 - from) == std::string(300 - from, 'x');
    };
    fill();
    unsigned long size = 5;
    EXPECT_TRUE(registry.GetRegEntry("text", buffer, &size));
    EXPECT_EQ(size, 5u);
    EXPECT_TRUE(is_filled(5));
    EXPECT_FALSE(registry.GetRegEntry("text", buffer, &(size = 4)));
    EXPECT_EQ(size, 0u);
    EXPECT_TRUE(registry.GetRegEntry("text", nullptr, &size));
    EXPECT_EQ(size, 5u);
    long number = 0x11111111;
    EXPECT_TRUE(registry.GetRegEntry("number", &number));
    EXPECT_EQ(number, 70000);
    EXPECT_FALSE(registry.GetRegEntry("text", &number)) << "5 bytes";
    EXPECT_EQ(number, 70000);

    registry.m_ClearStringTail = true;
    fill();
    EXPECT_TRUE(registry.GetRegEntry("text", buffer, 9UL));
    EXPECT_STREQ(buffer, "four");
    EXPECT_EQ(std::string(buffer + 4, 5), std::string(5, '\0'));
    EXPECT_TRUE(is_filled(9));
    const std::string whole(256, 'w'), larger(257, 'l');
    registry.SetRegEntry("whole", whole.data(), 256);
    registry.SetRegEntry("larger", larger.data(), 257);
    fill();
    EXPECT_TRUE(registry.GetRegEntry("whole", buffer)) << "no terminator to clear behind";
    EXPECT_TRUE(is_filled(256));
    EXPECT_FALSE(registry.GetRegEntry("larger", buffer));
    EXPECT_EQ(buffer[0], 'w');
}

TEST_F(RegMaster, CountsUpAndDown) {
    ASSERT_TRUE(Create("V"));
    EXPECT_EQ(registry.DecrDword("n"), -1);
    EXPECT_FALSE(registry.RegEntryExists("n"));
    EXPECT_EQ(registry.IncrDword("n"), 1u);
    EXPECT_EQ(registry.IncrDword("n"), 2u);
    for (long expected : {1, 0, 0}) EXPECT_EQ(registry.DecrDword("n"), expected);
    registry.SetRegEntry("n", 0xFFFFFFFFu);
    EXPECT_EQ(registry.DecrDword("n"), -2);
    EXPECT_EQ(registry.IncrDword("n"), 0xFFFFFFFFu);
    EXPECT_EQ(registry.IncrDword("n"), 0u);
    EXPECT_EQ(TestKey("V").Get("n"), std::string(4, '\0')) << "it wrapped";
    const long four_bytes = 41;
    registry.SetRegEntry("binary", &four_bytes, 4);
    registry.SetRegEntry("text", "abc");
    for (const char *no_number : {"text", "binary"}) {
        EXPECT_EQ(registry.DecrDword(no_number), -1);
        EXPECT_EQ(registry.IncrDword(no_number), 1u) << "from now on it is one";
    }
}

TEST_F(RegMaster, KnowsDefaultValues) {
    ASSERT_TRUE(Create("V"));
    for (const auto &[length, has] : {std::pair{0u, false}, {1u, true}, {260u, true}, {261u, false}}) {
        registry.SetRegEntry("", std::string(length, 'd').c_str());
        EXPECT_EQ(registry.HasDefaultValue(), has) << length;
        EXPECT_EQ(registry.OnlyHasDefaultValue(), has) << length;
    }
    registry.SetRegEntry("", "d");
    registry.SetRegEntry("named", "");
    EXPECT_TRUE(registry.HasDefaultValue());
    EXPECT_FALSE(registry.OnlyHasDefaultValue());
}

TEST_F(RegMaster, SaysNoWithoutAKey) {
    char buffer[256] = "kept";
    unsigned long number = 7, other = 8;
    EXPECT_FALSE(registry.GetRegEntry("v", buffer) || registry.SetRegEntry("v", "v") ||
                 registry.DeleteRegEntry("v") || registry.GetDefaultValue(buffer, &number) ||
                 registry.GetSubkey(0, buffer) || registry.ZeroOutKey() || registry.IsKeyRemote());
    EXPECT_EQ(registry.IncrDword("v"), 0u);
    EXPECT_EQ(registry.GetSubkeyInfo(&number, &other) | registry.GetValueInfo(&number, &other, &other), 0);
    EXPECT_THAT((std::vector{number, other}), ElementsAre(7, 8));
    EXPECT_STREQ(buffer, "kept");
}

// Every key that is opened looks remote to the library: its handle has the bit.
HKEY With_Bit(HKEY key, unsigned long bit) {
    return reinterpret_cast<HKEY>((reinterpret_cast<unsigned long>(key) & ~1ul) | bit);
}
LONG Open_As_Remote(HKEY parent, LPCSTR path, DWORD options, DWORD access, HKEY *key) {
    const LONG result = RegOpenKeyExA(parent, path, options, access, key);
    *key = With_Bit(*key, 1);
    return result;
}
LONG Ask_Remote(HKEY key, LPSTR class_name, DWORD *class_size, DWORD *reserved, DWORD *subkeys,
                DWORD *longest_subkey, DWORD *longest_class, DWORD *values, DWORD *longest_name,
                DWORD *longest_data, DWORD *security, FILETIME *time) {
    return RegQueryInfoKeyA(With_Bit(key, 0), class_name, class_size, reserved, subkeys, longest_subkey,
                            longest_class, values, longest_name, longest_data, security, time);
}
LONG Close_Remote(HKEY key) {
    return RegCloseKey(With_Bit(key, 0));
}

TEST_F(RegMaster, TellsLengthsAndDoublesThoseOfNamesOnRemoteKeys) {
    const TestKey subkey("V\\12345"), other("V\\1");
    TestKey("V").Set("123", "1234567");
    const auto lengths = [&](CRegMaster &key) {
        unsigned long n[9] = {};
        EXPECT_EQ(key.GetNumSubkeys(&n[0]) | key.GetNumValues(&n[1]) | key.GetMaxValueLen(&n[2]) |
                      key.GetMaxValueNameLen(&n[3]) | key.GetSubkeyInfo(&n[0], &n[4]) |
                      key.GetValueInfo(&n[1], &n[5], &n[6]) | key.GetValueInfo(nullptr, nullptr, nullptr),
                  0);
        n[7] = key.GetMaxSubkeyLen();
        n[8] = key.IsKeyRemote();
        return std::vector(n, n + 9);
    };
    ASSERT_TRUE(Open("V"));
    EXPECT_THAT(lengths(registry), ElementsAre(2, 1, 7, 3, 5, 3, 7, 5, 0));
    ReplacedImport close("libkelmara.so", "RegCloseKey", reinterpret_cast<void *>(Close_Remote));
    ReplacedImport ask("libkelmara.so", "RegQueryInfoKeyA", reinterpret_cast<void *>(Ask_Remote));
    ReplacedImport open("libkelmara.so", "RegOpenKeyExA", reinterpret_cast<void *>(Open_As_Remote));
    CRegMaster remote;
    ASSERT_TRUE(remote.OpenKey(HKEY_CURRENT_USER, "V"));
    EXPECT_THAT(lengths(remote), ElementsAre(2, 1, 7, 7, 11, 7, 7, 11, 1));
}

TEST_F(RegMaster, EmptiesAKey) {
    ASSERT_TRUE(Create("Z"));
    const TestKey key("Z");
    for (const std::string &name : {std::string("a"), std::string(255, 'n')}) {
        const TestKey subkey("Z\\" + name);
        key.Set(name, "value");
    }
    EXPECT_TRUE(registry.ZeroOutKey());
    EXPECT_THAT(key.Subkeys(), IsEmpty());
    EXPECT_THAT(key.Values(), IsEmpty());

    for (const char *path : {"Z\\a", "Z\\b\\deep", "Z\\c"}) const TestKey subkey(path);
    key.Set("value", "");
    EXPECT_FALSE(registry.ZeroOutKey());
    EXPECT_THAT(key.Subkeys(), ElementsAre("a", "b")) << "from the last on, until one has subkeys";
    EXPECT_THAT(key.Values(), ElementsAre("value"));
    EXPECT_FALSE(registry.DeleteSubKey("b") || registry.DeleteSubKey("") || registry.DeleteSubKey(nullptr));
    EXPECT_TRUE(registry.DeleteSubKey("A"));
}

TEST_F(RegMaster, CopiesWhatAKeyHas) {
    const TestKey from("From"), to("To");
    const std::string sizes[] = {std::string(1000, 'a'), std::string(1001, 'b'), std::string(100000, 'c')};
    from.Set("z", "first", REG_BINARY);
    for (const std::string &text : sizes) from.Set(std::to_string(text.size()), text);
    from.Set(std::string(280, 'n'), "long name");
    from.Set("", "default", 77);
    std::string path = "From";
    for (int level = 0; level < 9; ++level) TestKey(path += "\\Level").Set("level", std::to_string(level));
    TestKey("From\\" + std::string(255, 'k')).Set("v", "1");
    to.Set("1000", "old");

    EXPECT_TRUE(registry.CopyKey(from, to));
    EXPECT_THAT(to.Values(), ElementsAre("1000", "z", "1001", "100000", std::string(280, 'n'), ""));
    for (const std::string &text : sizes) EXPECT_EQ(to.Get(std::to_string(text.size())), text);
    DWORD type = 0;
    RegQueryValueExA(to, "", nullptr, &type, nullptr, nullptr);
    EXPECT_EQ(type, 77u);
    EXPECT_THAT(to.Subkeys(), ElementsAre(std::string(255, 'k'), "Level"));
    path.replace(0, 4, "To");
    EXPECT_EQ(TestKey(path).Get("level"), "8");
    EXPECT_TRUE(registry.CopyKey(from, from)) << "onto itself";
    EXPECT_EQ(from.Get("100000"), sizes[2]);
}

TEST_F(RegMaster, EndsACopyIntoTheKeyItself) {
    const TestKey from("A"), within("A\\B\\C");
    from.Set("a", "");
    EXPECT_TRUE(registry.CopyKey(from, within));
    EXPECT_THAT(TestKey("A\\B\\C").Subkeys(), ElementsAre("B"));
    EXPECT_THAT(TestKey("A\\B\\C\\B\\C").Subkeys(), IsEmpty());
    std::string deep = "Deep";
    for (int level = 0; level < 700; ++level) deep += "\\d";
    const TestKey bottom(deep), target("Target");
    ASSERT_EQ(bottom.error, 0);
    EXPECT_FALSE(registry.CopyKey(TestKey("Deep"), target)) << "deeper than it goes";
    EXPECT_THAT(target.Subkeys(), IsEmpty());
}

TEST_F(RegMaster, RenamesAndLosesNothing) {
    ASSERT_TRUE(Create("R"));
    const std::string large(5000, 'l');
    TestKey("R\\Old").Set("v", large);
    EXPECT_FALSE(registry.RenameSubkey("missing", "New"));
    EXPECT_TRUE(registry.RenameSubkey("Old", "New"));
    EXPECT_THAT(TestKey("R").Subkeys(), ElementsAre("New"));
    EXPECT_EQ(TestKey("R\\New").Get("v"), large);
    for (const char *same : {"New", "nEW\\"}) {
        EXPECT_TRUE(registry.RenameSubkey("New", same));
        EXPECT_EQ(TestKey("R\\New").Get("v"), large) << same;
    }
    TestKey("R\\\xC4\x8A").Set("v", "1");
    EXPECT_TRUE(registry.RenameSubkey("\xC4\x8A", "\xE4\x9A"));
    EXPECT_EQ(TestKey("R\\\xC4\x8A").Get("v"), "1") << "the same in code page 1252";
    RegDeleteKeyA(registry.GetKey(), "\xC4\x8A");
    EXPECT_EQ(TestKey("R\\New").Get("v"), large);
    EXPECT_TRUE(registry.RenameSubkey("New", "Other"));
    EXPECT_FALSE(registry.RenameSubkey("Other", "Other\\Below"));
    EXPECT_FALSE(registry.OpenSubkey("Other\\Below")) << "nothing was made";
    EXPECT_EQ(TestKey("R\\Other").Get("v"), large) << "it has a subkey";
}

LONG Want_More(HKEY, DWORD, LPSTR, DWORD *name_size, DWORD *, DWORD *, BYTE *, DWORD *size) {
    ++*name_size; // always one byte more than there is
    ++*size;
    return ERROR_MORE_DATA;
}
LONG Set_Nothing(HKEY, LPCSTR, DWORD, DWORD, const BYTE *, DWORD) {
    return ERROR_DISK_FULL;
}

TEST_F(RegMaster, KeepsWhatItCouldNotCopy) {
    ASSERT_TRUE(Create("R"));
    const TestKey old("R\\Old"), target("Target");
    old.Set("v", "kept");
    const TestKey below("R\\Old\\Below");
    for (const auto &[call, failing] : {std::pair{"RegEnumValueA", reinterpret_cast<void *>(Want_More)},
                                        {"RegSetValueExA", reinterpret_cast<void *>(Set_Nothing)}}) {
        ReplacedImport import("libkelmara.so", call, failing);
        EXPECT_TRUE(registry.CopyKey(old, target)) << "the subkeys are there";
        EXPECT_THAT(target.Subkeys(), ElementsAre("Below"));
        EXPECT_FALSE(registry.RenameSubkey("Old", "New"));
        RegDeleteKeyA(target, "Below");
    }
    EXPECT_EQ(old.Get("v"), "kept");
}

TEST_F(RegMaster, CopiesWithMemoryFailingAtEachPlace) {
    const TestKey from("From");
    from.Set("large", std::string(2000, 'l'));
    for (int i = 0; i < 30; ++i)
        TestKey("From\\" + std::string(100, 'k') + std::to_string(i)).Set("v", std::string(3000, 'v'));
    for (int nth = 1; nth < 100; ++nth) {
        const TestKey to("To" + std::to_string(nth));
        FailingMemory one(nth);
        const bool copied = registry.CopyKey(from, to);
        if (one.Refused() == 0) {
            EXPECT_TRUE(copied);
            EXPECT_GT(nth, 30);
            return;
        }
        EXPECT_TRUE(!copied || to.Subkeys().size() == 30) << nth;
    }
    FAIL() << "it never went through";
}

TEST_F(RegMaster, AsksTheMachine) {
    EXPECT_FALSE(registry.IsRemoteClient());
    machine.Write("drive_c/windows/system32/winreg.dll", "");
    const UINT mode = SetErrorMode(3);
    EXPECT_TRUE(registry.IsRemoteClient());
    EXPECT_EQ(SetErrorMode(mode), 3u) << "as it was";
    const TestKey one("Config\\0001", HKEY_LOCAL_MACHINE), first("one", HKEY_USERS);
    const TestKey two("Config\\0002", HKEY_LOCAL_MACHINE), second("another", HKEY_USERS);
    EXPECT_TRUE(registry.IsMultiConfig() && registry.IsMultiUser());
}

TEST_F(RegMaster, TellsTheUserOfAPolicyEachTime) {
    std::vector<std::string> boxes;
    Set_Message_Box_Handler(
        [](HWND, const char *text, const char *caption, UINT, void *context) {
            static_cast<std::vector<std::string> *>(context)->push_back(std::string(caption) + "|" + text);
            return IDOK;
        },
        &boxes);
    const TestKey policies("Software\\Microsoft\\Windows\\CurrentVersion\\Policies\\System");
    EXPECT_FALSE(registry.IsEditingDisabled());
    policies.Set("DisableRegistryTools", std::string("\2\0\0\0", 4), REG_DWORD);
    EXPECT_THAT(boxes, IsEmpty());
    policies.Set("DisableRegistryTools", std::string("\1\0\0\0", 4), REG_BINARY);
    EXPECT_TRUE(registry.IsEditingDisabled() && registry.IsEditingDisabled());
    const std::string box = "Access Denied|Direct access to the Registry is not allowed.";
    EXPECT_THAT(boxes, ElementsAre(box, box));
    Set_Message_Box_Handler(nullptr, nullptr);
}

} // namespace
