#include <kelmara/suite/com_registration.h>

#include <tests/modules/com_class.h>
#include <tests/support/built_modules.h>
#include <tests/support/registry_verbs.h>

#include <platform/kernel.h>

#include <cstring>
#include <filesystem>

namespace {

namespace fs = std::filesystem;

constexpr char Class_Key[] = "CLSID\\{5B0A3A10-77C1-4D0E-9122-3F5E016C2001}";
constexpr char Class_Text[] = "{5B0A3A10-77C1-4D0E-9122-3F5E016C2001}";

std::string Below_Class(const char *name) {
    return std::string(Class_Key).append("\\").append(name);
}

std::string Value_Of(const std::string &key, const char *value = "") {
    HKEY open;
    if (RegOpenKeyA(HKEY_CLASSES_ROOT, key.c_str(), &open) != ERROR_SUCCESS) return "(no key)";
    RegCloseKey(open);
    return TestKey(key, HKEY_CLASSES_ROOT).Get(value).c_str();
}

struct ComRegistration : MachineTest {
    // A module at a path of its own on the machine, loaded.
    HINSTANCE Load(const std::string &windows_path) {
        char path[4096];
        EXPECT_TRUE(Host_Path(windows_path.c_str(), path, sizeof path));
        fs::create_directories(fs::path(path).parent_path());
        fs::copy_file(Test_Module("com_class"), path);
        return LoadLibraryA(windows_path.c_str());
    }
    static void Register(HINSTANCE module) {
        EXPECT_EQ(RegisterServer(module, CLSID_TestCounter, "A counter", "Test.Counter", "Test.Counter.1"),
                  0);
    }
    static HRESULT Create() {
        IUnknown *object = nullptr;
        const HRESULT result = CoCreateInstance(CLSID_TestCounter, nullptr, CLSCTX_INPROC_SERVER,
                                                IID_ITestCounter, reinterpret_cast<void **>(&object));
        EXPECT_EQ(result == 0, object != nullptr);
        if (object) object->Release();
        return result;
    }
};

TEST_F(ComRegistration, MakesAClassThatCanBeCreatedUntilItIsTakenOut) {
    CoInitialize(nullptr);
    const HINSTANCE module = Load("c:\\parts\\counter.dll");
    ASSERT_TRUE(module);
    EXPECT_EQ(RegisterShellExtension(module, CLSID_TestCounter, "open ", "Open"), 0);
    EXPECT_EQ(Value_Of(Class_Key), "(no key)") << "a shell entry alone is none";
    EXPECT_EQ(Create(), REGDB_E_CLASSNOTREG);
    Register(module);
    Register(module);
    const std::string path = Value_Of(Below_Class("InProcServer32"));
    EXPECT_STRCASEEQ(path.c_str(), "c:\\parts\\counter.dll");
    const std::string longest_prefix(214, 'p');
    EXPECT_EQ(RegisterShellExtension(module, CLSID_TestCounter, (longest_prefix + "q").c_str(), "Open"), 0);
    const struct {
        std::string key;
        const char *value;
        std::string data;
    } entries[] = {
        {Class_Key, "", "A counter"},
        {Below_Class("InProcServer32"), "ThreadingModel", "Apartment"},
        {Below_Class("ProgID"), "", "Test.Counter.1"},
        {Below_Class("VersionIndependentProgID"), "", "Test.Counter"},
        {Below_Class("DefaultIcon"), "", path},
        {Below_Class("shell\\open"), "", "Open"},
        {Below_Class("shell\\open\\command"), "", longest_prefix + Class_Text + ",%1"},
        {"Test.Counter", "", "A counter"},
        {"Test.Counter", "CLSID", Class_Text},
        {"Test.Counter", "CurVer", "Test.Counter.1"},
        {"Test.Counter.1", "", "A counter"},
        {"Test.Counter.1", "CLSID", Class_Text},
    };
    for (const auto &entry : entries)
        EXPECT_EQ(Value_Of(entry.key, entry.value), entry.data) << entry.key << " " << entry.value;
    EXPECT_EQ(Value_Of("Test.Counter\\CLSID"), "(no key)") << "a value and no key";
    EXPECT_EQ(Create(), S_OK);

    EXPECT_EQ(UnregisterServer(CLSID_TestCounter, "Test.Counter", "Test.Counter.1"), 0);
    for (const char *key : {Class_Key, "Test.Counter", "Test.Counter.1"})
        EXPECT_EQ(Value_Of(key), "(no key)") << key;
    EXPECT_EQ(Create(), REGDB_E_CLASSNOTREG);
    CoUninitialize();
    EXPECT_TRUE(FreeLibrary(module));
}

TEST_F(ComRegistration, TakesOutDeepTreesAndNothingThatIsNotItsOwn) {
    EXPECT_EQ(UnregisterServer(CLSID_TestCounter, "Test.Counter", "Test.Counter.1"), 0) << "none there";
    TestKey("Test.Other\\Below", HKEY_CLASSES_ROOT);
    TestKey("CLSID\\{other}", HKEY_CLASSES_ROOT);
    std::string deep = "Test.Counter.1";
    for (int level = 0; level < 30; ++level) {
        deep += "\\" + std::string(200, static_cast<char>('a' + level % 26));
        EXPECT_EQ(TestKey(deep, HKEY_CLASSES_ROOT).error, ERROR_SUCCESS);
        TestKey(deep + "2", HKEY_CLASSES_ROOT);
    }
    Register(nullptr);
    EXPECT_EQ(UnregisterServer(CLSID_TestCounter, nullptr, "Test.Counter.1"), 0);
    EXPECT_EQ(Value_Of("Test.Counter.1"), "(no key)");
    EXPECT_EQ(UnregisterServer(CLSID_TestCounter, "", ""), 0) << "which is no name of a tree";
    EXPECT_EQ(Value_Of("Test.Other\\Below"), Missing);
    EXPECT_EQ(Value_Of("CLSID\\{other}"), Missing);
    EXPECT_EQ(Value_Of("Test.Counter", "CurVer"), "Test.Counter.1");
}

TEST_F(ComRegistration, CutsAModulePathAt512Characters) {
    std::string path = "c:";
    while (path.size() < 490) path += "\\" + std::string(60, 'f');
    const HINSTANCE module = Load(path + "\\" + std::string(30, 'm') + ".dll");
    ASSERT_TRUE(module);
    Register(module);
    EXPECT_EQ(Value_Of(Below_Class("InProcServer32")).size(), 512u);
    EXPECT_TRUE(FreeLibrary(module));
}

} // namespace
