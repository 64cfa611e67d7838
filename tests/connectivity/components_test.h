#pragma once
// The suite's components as a test tells them to be, for the library's own creation of objects.

#include <kelmara/connectivity/connection_utility.h>

#include <tests/connectivity/fake_services.h>
#include <tests/modules/fake_components.h>
#include <tests/support/built_modules.h>
#include <tests/support/registry_verbs.h>

#include <platform/kernel.h>

class OpenedUtility : public CConnectionUtility {
  public:
    using CConnectionUtility::Connect_Monitor_Thread;
    using CConnectionUtility::m_Connect_Event;
    using CConnectionUtility::m_Connect_Stop_Event;
    using CConnectionUtility::m_Connect_Thread;
    using CConnectionUtility::m_Disconnect_Event;
    using CConnectionUtility::m_Disconnect_Thread;
    using CConnectionUtility::m_Last_Dialled_Number;
};

class ComponentsTest : public ServicesTest {
  protected:
    void SetUp() override {
        ServicesTest::SetUp();
        const std::string module = "z:" + Test_Module("fake_components");
        for (const char *clsid :
             {"{DC495940-FBB2-11D1-9960-00A0244EE2F7}", "{2626B000-CE20-11D1-9960-00A0244EE2F7}",
              "{DE8200E0-FB12-11D1-9960-00A0244EE2F7}", "{2716A180-FB13-11D1-9960-00A0244EE2F7}"})
            TestKey("CLSID\\" + std::string(clsid) + "\\InProcServer32", HKEY_CLASSES_ROOT).Set("", module);
        CoInitialize(nullptr);
        module_ = LoadLibraryA(module.c_str());
        ASSERT_TRUE(module_);
        fakes = reinterpret_cast<FakeComponents *(*)()>(GetProcAddress(module_, "Fakes"))();
        Forget();
        const auto offer =
            reinterpret_cast<DllGetClassObjectCall *>(GetProcAddress(module_, "DllGetClassObject"));
        void *factory = nullptr;
        offer(CLSID_SuiteServer, IID_IClassFactory, &factory);
        CoRegisterClassObject(CLSID_SuiteServer, static_cast<IUnknown *>(factory), CLSCTX_LOCAL_SERVER,
                              REGCLS_MULTIPLEUSE, &server_);
        utility = new OpenedUtility;
    }
    void TearDown() override {
        delete utility;
        EXPECT_EQ(fakes->living, 0) << "references left";
        CoRevokeClassObject(server_);
        CoUninitialize();
        FreeLibrary(module_);
        ServicesTest::TearDown();
    }
    void Forget() {
        const long living = fakes->living;
        *fakes = {};
        fakes->living = living;
        fakes->make_event = [] { return CreateEventA(nullptr, TRUE, FALSE, nullptr); };
    }
    std::string Take_Calls() {
        std::string calls;
        for (const std::string &call : fakes->calls) calls += (calls.empty() ? "" : ", ") + call;
        fakes->calls.clear();
        return calls;
    }
    void Set_Option(const char (&code)[5], const std::string &text) {
        unsigned long number = 0;
        for (int i = 0; i < 4; ++i) number = number << 8 | static_cast<unsigned char>(code[i]);
        fakes->values[number] = text;
    }
    void Be_DSL(bool dsl) {
        RASDEVINFOA device = {};
        std::strcpy(device.szDeviceType, "isdn");
        std::strcpy(device.szDeviceName, "Adapter");
        services.devices = {device};
        Set_Option("MODD", dsl ? "Adapter" : "Modem");
    }

    FakeComponents *fakes = nullptr;
    OpenedUtility *utility = nullptr; // without a configuration

  private:
    HMODULE module_ = nullptr;
    DWORD server_ = 0;
};
