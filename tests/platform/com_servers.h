#pragma once
// A machine with the proxy module of the tests' service, which second processes in the role "service" serve.

#include <platform/com_marshalling.h>

#include <tests/platform/com_service_object.h>
#include <tests/support/built_modules.h>
#include <tests/support/registry_verbs.h>
#include <tests/support/second_process.h>

#include <fcntl.h>
#include <filesystem>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

inline DWORD Register(REFCLSID clsid = CLSID_TestService) {
    DWORD cookie = 0;
    EXPECT_EQ(CoRegisterClassObject(clsid, &factory, CLSCTX_LOCAL_SERVER, REGCLS_MULTIPLEUSE, &cookie), S_OK);
    return cookie;
}

/// Serves the test's service, from when it is made.
struct Server : SecondProcess {
    Server() : SecondProcess("service"), thread(Hear()) { EXPECT_NE(thread, ""); }
    const std::string thread; // that serves
};

class ComServers : public MachineTest {
  protected:
    void SetUp() override {
        MachineTest::SetUp();
        TestKey("CLSID\\{5B0A3A10-77C1-4D0E-9122-3F5E016C2012}\\InProcServer32", HKEY_CLASSES_ROOT)
            .Set("", "z:" + Test_Module("com_proxy"));
        for (const char *iid :
             {"{5B0A3A10-77C1-4D0E-9122-3F5E016C2013}", "{5B0A3A10-77C1-4D0E-9122-3F5E016C2014}"}) {
            TestKey("Interface\\" + std::string(iid) + "\\ProxyStubClsid32", HKEY_CLASSES_ROOT)
                .Set("", "{5B0A3A10-77C1-4D0E-9122-3F5E016C2012}");
        }
        CoInitialize(nullptr);
    }
    void TearDown() override {
        CoUninitialize();
        MachineTest::TearDown();
    }

    template <class Interface>
    static HRESULT Create(REFIID iid, Interface *&made, REFCLSID clsid = CLSID_TestService) {
        made = reinterpret_cast<Interface *>(1);
        const HRESULT result =
            CoCreateInstance(clsid, nullptr, CLSCTX_LOCAL_SERVER, iid, reinterpret_cast<void **>(&made));
        EXPECT_EQ(result == S_OK, made != nullptr);
        return result;
    }
    /// An object of the class; without one the test ends.
    static ITestService *Made(REFCLSID clsid = CLSID_TestService) {
        ITestService *made = nullptr;
        if (const HRESULT result = Create(IID_ITestService, made, clsid); result != S_OK) throw result;
        return made;
    }
    static std::string Ask(ITestService *service, const char *word) {
        static char answer[1 << 20];
        answer[0] = 0;
        const long result = service->Do(const_cast<char *>(word), answer, sizeof answer);
        return result == static_cast<long>(std::strlen(word)) ? answer : "(" + std::to_string(result) + ")";
    }
    static HRESULT Result(ITestService *service, const char *word) {
        char answer[16];
        return service->Do(const_cast<char *>(word), answer, sizeof answer);
    }
    // As soon as the server has come to it.
    static void Expect_Living(ITestService *service, const std::string &count) {
        for (int i = 0; i < 500 && Ask(service, "living") != count; ++i) Sleep(10);
        EXPECT_EQ(Ask(service, "living"), count);
    }
    std::filesystem::path Class_Socket() const {
        return std::filesystem::directory_iterator(machine.Shared_Folder() + "/classes")->path();
    }
    /// A connection with whoever serves there; -1.
    static int Connect_To(const std::filesystem::path &path) {
        const int folder = open(path.parent_path().c_str(), O_PATH | O_DIRECTORY);
        sockaddr_un address = {AF_UNIX, {}};
        std::snprintf(address.sun_path, sizeof address.sun_path, "/proc/self/fd/%d/%s", folder,
                      path.filename().c_str());
        const int client = socket(AF_UNIX, SOCK_STREAM, 0);
        const int failed = connect(client, reinterpret_cast<const sockaddr *>(&address), sizeof address);
        close(folder);
        return failed ? -1 : client;
    }
};
