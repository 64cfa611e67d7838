#include <platform/com.h>

#include <tests/modules/com_class.h>
#include <tests/support/built_modules.h>
#include <tests/support/registry_verbs.h>

#include <platform/kernel.h>

#include <thread>

namespace {

std::basic_string<WCHAR> Wide(const std::string &text) {
    return {text.begin(), text.end()};
}

TEST(ComIdentifiers, AreTextAndBack) {
    const std::string text = "{5B0A3A10-77C1-4D0E-9122-3F5E016C2002}";
    WCHAR *allocated = nullptr;
    ASSERT_EQ(StringFromCLSID(IID_ITestCounter, &allocated), S_OK);
    EXPECT_EQ(std::basic_string<WCHAR>(allocated), Wide(text));
    CoTaskMemFree(allocated);
    WCHAR written[39] = {7};
    EXPECT_EQ(StringFromGUID2(IID_ITestCounter, written, 38), 0);
    EXPECT_EQ(written[0], 7);
    EXPECT_EQ(StringFromGUID2(IID_ITestCounter, written, 39), 39);

    CLSID clsid;
    for (const char *good : {text.c_str(), "{5b0a3a10-77c1-4d0e-9122-3f5e016c2002}"}) {
        EXPECT_EQ(CLSIDFromString(Wide(good).c_str(), &clsid), S_OK);
        EXPECT_TRUE(IsEqualGUID(clsid, IID_ITestCounter)) << good;
    }
    for (const std::string &bad : {text.substr(0, 37), text + "0", std::string("{5B0A3A10"), std::string(),
                                   std::string("{5B0A3A1G-77C1-4D0E-9122-3F5E016C2002}")}) {
        EXPECT_EQ(CLSIDFromString(Wide(bad).c_str(), &clsid), CO_E_CLASSSTRING) << bad;
        EXPECT_TRUE(IsEqualGUID(clsid, GUID{})) << bad;
    }
}

struct InProcessClasses : MachineTest {
    static void Offer(const std::string &module) {
        TestKey("CLSID\\{5B0A3A10-77C1-4D0E-9122-3F5E016C2001}\\InProcServer32", HKEY_CLASSES_ROOT)
            .Set("", module);
    }
    static HRESULT Create(REFIID iid, DWORD context = CLSCTX_INPROC_SERVER, IUnknown *outer = nullptr) {
        void *made = &made;
        const HRESULT result = CoCreateInstance(CLSID_TestCounter, outer, context, iid, &made);
        EXPECT_EQ(result == S_OK, made != nullptr);
        if (made) static_cast<IUnknown *>(made)->Release();
        return result;
    }
};

TEST_F(InProcessClasses, SayWhyTheyCannotBeCreated) {
    const std::string module = "z:" + Test_Module("com_class");
    Offer(module);
    EXPECT_EQ(Create(IID_ITestCounter), CO_E_NOTINITIALIZED);
    ASSERT_EQ(CoInitialize(nullptr), S_OK);
    EXPECT_EQ(CoInitialize(nullptr), S_FALSE);
    EXPECT_EQ(CoInitializeEx(nullptr, COINIT_MULTITHREADED), RPC_E_CHANGED_MODE);
    CoUninitialize();
    EXPECT_EQ(Create(IID_ITestCounter), S_OK) << "initialised once more than taken back";
    EXPECT_EQ(Create(IID_IMalloc), E_NOINTERFACE);
    EXPECT_EQ(Create(IID_ITestCounter, CLSCTX_LOCAL_SERVER), REGDB_E_CLASSNOTREG);
    EXPECT_EQ(Create(IID_ITestCounter, CLSCTX_LOCAL_SERVER | CLSCTX_INPROC_SERVER), S_OK);
    IMalloc *outer = nullptr;
    ASSERT_EQ(CoGetMalloc(1, &outer), S_OK);
    EXPECT_EQ(Create(IID_ITestCounter, CLSCTX_INPROC_SERVER, outer), CLASS_E_NOAGGREGATION);
    std::thread([] { EXPECT_EQ(Create(IID_ITestCounter), CO_E_NOTINITIALIZED) << "each thread"; }).join();

    const struct {
        std::string module;
        HRESULT result;
    } others[] = {{"", REGDB_E_CLASSNOTREG},
                  {"c:\\nowhere\\none.dll", HRESULT_MODULE_NOT_FOUND},
                  {"z:" + Test_Module("plain"), CO_E_ERRORINDLL},
                  {"z:" + Test_Module("com_proxy"), CLASS_E_CLASSNOTAVAILABLE}};
    for (const auto &other : others) {
        Offer(other.module);
        EXPECT_EQ(Create(IID_ITestCounter), other.result) << other.module;
    }
    CoUninitialize();
    EXPECT_EQ(Create(IID_ITestCounter), CO_E_NOTINITIALIZED);
    CoUninitialize();
}

TEST_F(InProcessClasses, LetTheirModulesGoWhenNothingIsInUse) {
    const std::string module = "z:" + Test_Module("com_class");
    Offer(module);
    CoInitialize(nullptr);
    ITestCounter *counter = nullptr;
    ASSERT_EQ(CoCreateInstance(CLSID_TestCounter, nullptr, CLSCTX_INPROC_SERVER, IID_ITestCounter,
                               reinterpret_cast<void **>(&counter)),
              S_OK);
    CoFreeUnusedLibraries();
    ASSERT_TRUE(GetModuleHandleA(module.c_str()));
    EXPECT_EQ(counter->Next(), 1);
    EXPECT_EQ(counter->Release(), 0u);
    CoUninitialize();
    EXPECT_FALSE(GetModuleHandleA(module.c_str()));
}

// One asks for what the class does not have, others look for modules to let go: nobody runs code that is
// gone.
TEST_F(InProcessClasses, LetTheirModulesGoOnlyBehindEverybodyWhoIsInThem) {
    const std::string module = "z:" + Test_Module("com_class");
    Offer(module);
    const auto repeat = [](auto work) {
        CoInitialize(nullptr);
        for (int i = 0; i < 200; ++i) work();
        CoUninitialize();
    };
    std::vector<std::thread> freeing;
    for (int i = 0; i < 3; ++i) freeing.emplace_back([&] { repeat(CoFreeUnusedLibraries); });
    repeat([] {
        void *none = nullptr;
        EXPECT_EQ(CoGetClassObject(CLSID_TestCounter, CLSCTX_INPROC_SERVER, nullptr, IID_IMalloc, &none),
                  E_NOINTERFACE);
    });
    for (std::thread &thread : freeing) thread.join();
    CoFreeUnusedLibraries();
    EXPECT_FALSE(GetModuleHandleA(module.c_str()));
}

} // namespace
