// What the registry's calls give: codes, sizes, names and orders.

#include <tests/support/registry_verbs.h>

#include <platform/kernel.h>

#include <cstring>
#include <functional>
#include <random>
#include <thread>

namespace {

using ::testing::_;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

using RegistryCalls = RegistryTest;

HKEY Open(HKEY parent, const char *path, DWORD access) {
    HKEY key = nullptr;
    EXPECT_EQ(RegOpenKeyExA(parent, path, 0, access, &key), ERROR_SUCCESS) << path;
    return key;
}

LONG Query(HKEY key, const char *name, BYTE *data, DWORD *size, DWORD *type = nullptr) {
    return RegQueryValueExA(key, name, nullptr, type, data, size);
}

struct NamedCall {
    const char *name;
    DWORD access; // without it the call is refused
    std::function<LONG(HKEY key)> call;
};

// Every call that works on a key, with arguments that are good for one that has a value and a subkey.
std::vector<NamedCall> Every_Call() {
    static char text[300];
    static DWORD size;
    static LONG room;
    const auto Open_Sub = [](HKEY on, const char *path) {
        HKEY key = nullptr;
        const LONG result = RegOpenKeyExA(on, path, 0, KEY_READ, &key);
        if (key) RegCloseKey(key);
        return result;
    };
    return {
        {"open", 0, [=](HKEY on) { return Open_Sub(on, "sub"); }},
        {"open itself", 0, [=](HKEY on) { return Open_Sub(on, nullptr); }},
        {"create", 0, [](HKEY on) { return TestKey("made", on).error; }},
        {"query", KEY_QUERY_VALUE, [](HKEY on) { return Query(on, "value", nullptr, nullptr); }},
        {"query default", KEY_QUERY_VALUE,
         [](HKEY on) { return RegQueryValueA(on, "", text, &(room = 300)); }},
        {"query info", KEY_QUERY_VALUE, [](HKEY on) { return Last_Change(on, nullptr); }},
        {"list values", KEY_QUERY_VALUE, [](HKEY on) { return Value_Name(on, 0, text, &(size = 300)); }},
        {"list keys", KEY_ENUMERATE_SUB_KEYS,
         [](HKEY on) { return Subkey_Name(on, 0, text, &(size = 300)); }},
        {"set", KEY_SET_VALUE, Set_Nothing},
        {"delete value", KEY_SET_VALUE, [](HKEY on) { return RegDeleteValueA(on, "value"); }},
        {"delete key", 0, [](HKEY on) { return RegDeleteKeyA(on, "made"); }},
        {"flush", 0, RegFlushKey},
    };
}

TEST_F(RegistryCalls, RefuseWhatIsNoOpenKey) {
    const HKEY closed = TestKey("closed");
    const HANDLE mutex = CreateMutexA(nullptr, FALSE, nullptr);
    for (const HKEY key :
         {HKEY{}, closed, HKEY(mutex), HKEY(0x80000007u), HKEY_DYN_DATA, HKEY(INVALID_HANDLE_VALUE)}) {
        for (const NamedCall &row : Every_Call()) {
            EXPECT_EQ(row.call(key), ERROR_INVALID_HANDLE) << row.name << " " << key;
        }
        if (key != HKEY_DYN_DATA) {
            EXPECT_EQ(RegCloseKey(key), ERROR_INVALID_HANDLE) << key;
        }
    }
    EXPECT_TRUE(CloseHandle(mutex)) << "RegCloseKey leaves other kinds alone";
}

TEST_F(RegistryCalls, AskForTheRightThatTheyNeed) {
    const TestKey key("key"), sub("key\\sub");
    key.Set("value", "");
    for (const NamedCall &row : Every_Call()) {
        const HKEY bare = Open(key, nullptr, row.access ? KEY_ALL_ACCESS & ~row.access : KEY_NOTIFY);
        EXPECT_EQ(row.call(bare), row.access ? ERROR_ACCESS_DENIED : ERROR_SUCCESS) << row.name;
        const HKEY fitting = Open(key, "", row.access ? row.access : MAXIMUM_ALLOWED);
        EXPECT_NE(row.call(fitting), ERROR_ACCESS_DENIED) << row.name;
        RegCloseKey(bare);
        RegCloseKey(fitting);
    }
    HKEY none = key;
    EXPECT_EQ(RegOpenKeyExA(HKEY_CURRENT_USER, "key", 0, 0, &none), ERROR_ACCESS_DENIED);
    EXPECT_EQ(none, nullptr);
    EXPECT_EQ(RegCreateKeyExA(key, "new", 0, nullptr, 0, 0, nullptr, &none, nullptr), ERROR_ACCESS_DENIED);
    EXPECT_THAT(key.Subkeys(), ElementsAre("sub"));
}

TEST_F(RegistryCalls, OnADeletedKeyOnlyClose) {
    const TestKey key("doomed");
    const HKEY second = Open(HKEY_CURRENT_USER, "doomed", KEY_ALL_ACCESS);
    EXPECT_EQ(RegDeleteKeyA(HKEY_CURRENT_USER, "DOOMED"), ERROR_SUCCESS);
    const TestKey again("doomed");
    EXPECT_EQ(again.disposition, REG_CREATED_NEW_KEY);
    for (const NamedCall &row : Every_Call()) EXPECT_EQ(row.call(second), ERROR_KEY_DELETED) << row.name;
    EXPECT_EQ(RegCloseKey(second), ERROR_SUCCESS);
    EXPECT_EQ(RegDeleteKeyA(again, ""), ERROR_SUCCESS) << "an empty path is the key itself";
    EXPECT_EQ(again.Get("x"), "(1018)");
}

TEST_F(RegistryCalls, RefuseBadArgumentsAndTouchNothing) {
    const TestKey key("key");
    key.Set("value", "text");
    HKEY out = nullptr;
    char name[300];
    BYTE data[8];
    DWORD size = sizeof data;
    const std::string part(255, 'p');
    const LONG codes[] = {
        RegOpenKeyExA(key, "a", 0, KEY_READ, nullptr),
        RegOpenKeyA(key, (part + "p").c_str(), &out),
        RegCreateKeyExA(key, "a", 0, nullptr, 0, KEY_READ, nullptr, nullptr, nullptr),
        RegCreateKeyExA(key, "a", 0, nullptr, 1, KEY_READ, nullptr, &out, nullptr),
        RegDeleteKeyA(key, nullptr),
        Query(key, "value", data, nullptr),
        RegQueryValueA(key, nullptr, name, nullptr),
        RegSetValueExA(key, "a", 0, REG_BINARY, nullptr, 1),
        RegSetValueExA(key, std::string(16384, 'n').c_str(), 0, REG_BINARY, data, 1),
        Subkey_Name(key, 0, nullptr, &size),
        Value_Name(key, 0, nullptr, &size),
        RegEnumValueA(key, 0, name, &size, nullptr, nullptr, data, nullptr),
    };
    EXPECT_THAT(codes, Each(ERROR_INVALID_PARAMETER));
    EXPECT_EQ(RegOpenKeyA(key, "\\a", &out), ERROR_BAD_PATHNAME);
    EXPECT_EQ(RegSetValueExA(key, "huge", 0, REG_BINARY, data, 0x7FFFFFFF), ERROR_NOT_ENOUGH_MEMORY);
    EXPECT_THAT(key.Subkeys(), IsEmpty());
    EXPECT_THAT(key.Values(), ElementsAre("value"));

    const TestKey longest("key\\" + part);
    EXPECT_THAT(key.Subkeys(), ElementsAre(part));
    EXPECT_EQ(longest.Set(std::string(16383, 'n'), "data"), ERROR_SUCCESS);
    EXPECT_EQ(longest.Get(std::string(16383, 'n')), "data");
}

TEST_F(RegistryCalls, FindPathsHoweverTheyAreSpelled) {
    const TestKey deep("One\\Two\\Three");
    for (const char *path : {"one\\TWO\\three", "One\\\\Two\\\\\\Three", "One\\Two\\Three\\\\"}) {
        EXPECT_EQ(TestKey(path).disposition, REG_OPENED_EXISTING_KEY) << path;
    }
    HKEY key = nullptr;
    EXPECT_EQ(RegOpenKeyA(HKEY_CURRENT_USER, "One\\Missing\\Three", &key), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(RegOpenKeyA(deep, "", &key), ERROR_SUCCESS);
    EXPECT_EQ(key, deep.handle) << "the key itself, not opened anew";
    EXPECT_EQ(RegDeleteKeyA(HKEY_CURRENT_USER, "One\\Two"), ERROR_ACCESS_DENIED) << "it has a subkey";
}

TEST_F(RegistryCalls, KnowThePredefinedRootsAndKeepThem) {
    TestKey("Probe", HKEY_CLASSES_ROOT).Set("", "class");
    EXPECT_EQ(TestKey("SOFTWARE\\Classes\\Probe", HKEY_LOCAL_MACHINE).Get(""), "class");
    char user[300];
    DWORD size = sizeof user;
    ASSERT_EQ(Subkey_Name(HKEY_USERS, 0, user, &size), ERROR_SUCCESS);
    EXPECT_EQ(Subkey_Name(HKEY_USERS, 1, user, &size), ERROR_NO_MORE_ITEMS);
    TestKey("Probe").Set("", "user");
    EXPECT_EQ(TestKey(std::string(user) + "\\Probe", HKEY_USERS).Get(""), "user");
    EXPECT_EQ(RegDeleteKeyA(HKEY_CURRENT_USER, "Probe"), ERROR_SUCCESS);
    for (const HKEY root :
         {HKEY_CLASSES_ROOT, HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE, HKEY_USERS, HKEY_CURRENT_CONFIG}) {
        EXPECT_EQ(RegDeleteKeyA(root, ""), ERROR_ACCESS_DENIED) << root;
    }
    EXPECT_EQ(RegDeleteKeyA(HKEY_CLASSES_ROOT, "Probe"), ERROR_SUCCESS);
    EXPECT_EQ(RegDeleteKeyA(HKEY_LOCAL_MACHINE, "Software\\Classes"), ERROR_ACCESS_DENIED);
    EXPECT_EQ(RegDeleteKeyA(HKEY_USERS, user), ERROR_ACCESS_DENIED);
}

TEST_F(RegistryCalls, KeepTheCaseOfNamesAndTheirOrder) {
    const TestKey key("key");
    for (const char *name : {"beta", "Alpha", "", "gamma", "\xE4rger"}) key.Set(name, name);
    key.Set("ALPHA", "overwritten");
    key.Set("\xC4RGER", "overwritten");
    EXPECT_THAT(key.Values(), ElementsAre("beta", "Alpha", "", "gamma", "\xE4rger"));
    EXPECT_EQ(key.Get("alpha"), "overwritten");
    EXPECT_EQ(key.Get("\xE4RgEr"), "overwritten");
    EXPECT_EQ(RegDeleteValueA(key, "BETA"), ERROR_SUCCESS);
    EXPECT_EQ(RegDeleteValueA(key, "beta"), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(RegDeleteValueA(key, nullptr), ERROR_SUCCESS);
    key.Set("beta", "last");
    EXPECT_THAT(key.Values(), ElementsAre("Alpha", "gamma", "\xE4rger", "beta"));

    // 0x9A and 0xFF are capital 0x8A and 0x9F, which stand among the letters behind Latin-1 where names are
    // wide; 0xF7 and 0xD7 are signs and no pair.
    for (const char *name :
         {"b", "a_", "aB", "B", "\xFF", "\x9F", "\x9A", "\x8A", "\xF7", "\xD7", "\xFC", "ab c"}) {
        TestKey(name, key);
    }
    EXPECT_THAT(key.Subkeys(), ElementsAre("aB", "ab c", "a_", "b", "\xD7", "\xFC", "\xF7", "\x9A", "\xFF"));
}

TEST_F(RegistryCalls, EnumerateInAnyDirectionWhileEntriesGo) {
    const TestKey key("key");
    std::vector<std::string> names;
    const auto At = [&](std::size_t index) {
        char value[20] = "", subkey[20] = "";
        DWORD value_size = sizeof value, subkey_size = sizeof subkey;
        Value_Name(key, index, value, &value_size);
        Subkey_Name(key, index, subkey, &subkey_size);
        EXPECT_STREQ(value, subkey);
        return std::string(value);
    };
    std::minstd_rand random(7);
    for (int next = 10; next < 40 || !names.empty(); ++next) {
        if (next < 40 || (next < 90 && random() % 2 == 0)) {
            names.push_back("n" + std::to_string(next));
            key.Set(names.back(), "");
            TestKey(names.back(), key);
        }
        if (next < 40) continue;
        std::size_t doomed = names.size() - 1; // often the last one
        for (auto step = random() % 3; step > 0; --step) {
            doomed = random() % names.size();
            EXPECT_EQ(At(names.size()), "");
            EXPECT_EQ(At(doomed), names[doomed]);
        }
        EXPECT_EQ(RegDeleteValueA(key, names[doomed].c_str()), ERROR_SUCCESS);
        EXPECT_EQ(RegDeleteKeyA(key, names[doomed].c_str()), ERROR_SUCCESS);
        names.erase(names.begin() + static_cast<std::ptrdiff_t>(doomed));
        EXPECT_EQ(At(doomed), doomed < names.size() ? names[doomed] : "");
    }
}

TEST_F(RegistryCalls, TellSizesAndFillBuffersExactly) {
    const TestKey key("key");
    key.Set("text", std::string("four\0", 5));
    key.Set("bare", "four", REG_EXPAND_SZ);
    key.Set("bytes", "four", REG_BINARY);
    key.Set("odd", "", 0xDEADBEEF);
    struct Row {
        const char *name;
        DWORD index, type, room, size;
        LONG result;
        char behind; // the byte behind the data, '#' for an untouched one
    };
    for (const Row &row :
         {Row{"text", 0, REG_SZ, 5, 5, 0, '#'}, Row{"text", 0, REG_SZ, 4, 5, ERROR_MORE_DATA, '#'},
          Row{"bare", 1, REG_EXPAND_SZ, 5, 4, 0, '\0'}, Row{"bare", 1, REG_EXPAND_SZ, 4, 4, 0, '#'},
          Row{"bytes", 2, REG_BINARY, 8, 4, 0, '#'}, Row{"odd", 3, 0xDEADBEEF, 0, 0, 0, '#'}}) {
        for (const bool by_index : {false, true}) {
            SCOPED_TRACE(std::string(row.name) + " " + std::to_string(row.room));
            BYTE data[11];
            std::memset(data, '#', sizeof data);
            char name[10];
            DWORD type = 0, size = row.room, name_size = sizeof name;
            const LONG result =
                by_index ? RegEnumValueA(key, row.index, name, &name_size, nullptr, &type, data, &size)
                         : Query(key, row.name, data, &size, &type);
            EXPECT_EQ(result, row.result);
            EXPECT_EQ(type, row.type);
            EXPECT_EQ(size, row.size);
            EXPECT_EQ(data[row.size], row.result ? '#' : row.behind);
        }
        char name[10];
        DWORD name_size = std::strlen(row.name);
        EXPECT_EQ(Value_Name(key, row.index, name, &name_size), ERROR_MORE_DATA);
        EXPECT_EQ(name_size, std::strlen(row.name) + 1);
    }
    const TestKey sub("key\\subkey");
    char name[20] = "untouched";
    DWORD size = 6;
    EXPECT_EQ(Subkey_Name(key, 0, name, &size), ERROR_MORE_DATA);
    EXPECT_EQ(size, 7u);
    EXPECT_STREQ(name, "untouched");
}

TEST_F(RegistryCalls, GiveTheDefaultValueAsText) {
    const TestKey key("key");
    char text[10];
    LONG size = sizeof text;
    EXPECT_EQ(RegQueryValueA(key, nullptr, text, &size), ERROR_SUCCESS);
    EXPECT_EQ(text + std::to_string(size), "1") << "without a default value it is empty";
    key.Set("", "bare");
    for (const LONG room : {4, -1}) {
        EXPECT_EQ(RegQueryValueA(HKEY_CURRENT_USER, "KEY", text, &(size = room)), ERROR_MORE_DATA);
        EXPECT_EQ(size, 5);
    }
    EXPECT_EQ(RegQueryValueA(HKEY_CURRENT_USER, "KEY", text, &size), ERROR_SUCCESS);
    EXPECT_STREQ(text, "bare");
    EXPECT_EQ(RegQueryValueA(key, "missing", text, &size), ERROR_FILE_NOT_FOUND);
    key.Set("", "bytes", REG_BINARY);
    EXPECT_EQ(RegQueryValueA(key, "", text, &size), ERROR_INVALID_DATA);
}

TEST_F(RegistryCalls, CountAKeysContents) {
    char class_name[] = "the class", read_class[20];
    const TestKey key("key", HKEY_CURRENT_USER, class_name);
    for (const char *name : {"one", "three", "two"}) {
        key.Set(name, std::string("12").append(name));
        TestKey(std::string(name) + "-subkey", key);
    }
    DWORD class_size = 9, counts[7]; // subkeys, longest, longest class, values, longest name, longest data
    FILETIME before, after;
    const auto Query = [&] {
        return RegQueryInfoKeyA(key, read_class, &class_size, nullptr, &counts[0], &counts[1], &counts[2],
                                &counts[3], &counts[4], &counts[5], &counts[6], &before);
    };
    EXPECT_EQ(Query(), ERROR_MORE_DATA);
    EXPECT_EQ(class_size, 10u);
    EXPECT_EQ(Query(), ERROR_SUCCESS);
    EXPECT_EQ(read_class + std::to_string(class_size), "the class9");
    EXPECT_THAT(counts, ElementsAre(3, 12, 0, 3, 5, 7, _));
    RegDeleteValueA(key, "one");
    EXPECT_EQ(Last_Change(key, &after), ERROR_SUCCESS);
    EXPECT_NE(before.dwLowDateTime, after.dwLowDateTime) << "the time of the last change";
}

TEST_F(RegistryCalls, ServeManyThreads) {
    const TestKey shared("shared");
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&, t] {
            const TestKey own("shared\\" + std::to_string(t));
            for (int i = 0; i < 200; ++i) {
                const std::string name = std::to_string(t) + "-" + std::to_string(i);
                EXPECT_EQ(shared.Set(name, name) + own.Set("last", name), ERROR_SUCCESS);
                EXPECT_EQ(shared.Get(name), name);
                EXPECT_EQ(TestKey("shared").disposition, REG_OPENED_EXISTING_KEY);
            }
        });
    }
    for (std::thread &thread : threads) thread.join();
    EXPECT_THAT(shared.Values(), SizeIs(800));
    EXPECT_THAT(shared.Subkeys(), ElementsAre("0", "1", "2", "3"));
}

TEST_F(RegistryCalls, KeysTellTheirPathAsItIsStored) {
    const TestKey key("Some\\Where");
    const auto Path_Of = [](HKEY of) {
        char path[100] = "";
        DWORD size = sizeof path;
        EXPECT_EQ(Registry_Key_Path(of, path, &size), ERROR_SUCCESS);
        EXPECT_EQ(size, std::strlen(path));
        return std::string(path);
    };
    EXPECT_EQ(Path_Of(HKEY_LOCAL_MACHINE), "HKEY_LOCAL_MACHINE");
    EXPECT_EQ(Path_Of(HKEY_CLASSES_ROOT), "HKEY_LOCAL_MACHINE\\Software\\Classes");
    const TestKey again("SOME\\where");
    EXPECT_EQ(Path_Of(again), Path_Of(HKEY_CURRENT_USER) + "\\Some\\Where");

    char small[18] = "as it was";
    DWORD size = sizeof small;
    EXPECT_EQ(Registry_Key_Path(HKEY_LOCAL_MACHINE, small, &size), ERROR_MORE_DATA);
    EXPECT_EQ(size, sizeof "HKEY_LOCAL_MACHINE");
    EXPECT_STREQ(small, "as it was");
    EXPECT_EQ(Registry_Key_Path(HKEY_DYN_DATA, small, &size), ERROR_INVALID_HANDLE);
    EXPECT_EQ(Registry_Key_Path(key, nullptr, &size), ERROR_INVALID_PARAMETER);
}

} // namespace
