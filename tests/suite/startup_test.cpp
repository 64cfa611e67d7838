#include <kelmara/suite/startup.h>

#include <reference_suite/components/component_store.h>
#include <reference_suite/components/server/suite_server.h>
#include <reference_suite/installer/install_suite.h>
#include <reference_suite/installer/library_links.h>
#include <tests/support/built_modules.h>
#include <tests/support/registry_verbs.h>
#include <tests/support/second_process.h>

#include <platform/kernel.h>
#include <platform/user.h>

#include <dlfcn.h>
#include <filesystem>
#include <memory>
#include <thread>

namespace {

// A server for the tests: what it offers is no server of the suite but a factory that says no.
class RefusingFactory final : public IClassFactory {
  public:
    HRESULT QueryInterface(REFIID, void **out) override { return *out = this, S_OK; }
    ULONG AddRef() override { return 2; }
    ULONG Release() override { return 1; }
    HRESULT CreateInstance(IUnknown *, REFIID, void **out) override { return *out = nullptr, E_NOINTERFACE; }
    HRESULT LockServer(BOOL) override { return E_NOTIMPL; }
} refusing;

} // namespace

// Waits for input first; the registry tells it when to register and when to end.
SECOND_PROCESS(wrong_server) {
    if (!process.Arguments().empty()) return 3; // before it could be called a program with windows
    CoInitialize(nullptr);
    DWORD cookie = 0;
    for (std::string order; order != "end"; Sleep(5)) {
        MSG message;
        PeekMessageA(&message, nullptr, 0, 0, PM_NOREMOVE);
        order = TestKey(Suite_Key, HKEY_LOCAL_MACHINE).Get("Wrong Server").c_str();
        if (order == "register" && cookie == 0)
            CoRegisterClassObject(CLSID_SuiteServer, &refusing, CLSCTX_LOCAL_SERVER, REGCLS_MULTIPLEUSE,
                                  &cookie);
    }
    CoUninitialize();
    return 0;
}

SECOND_PROCESS(starter) {
    Set_Message_Box_Handler(
        [](HWND, const char *text, const char *caption, UINT style, void *) {
            std::fprintf(stderr, "%s|%s|%lx", text, caption, static_cast<DWORD>(style));
            return IDOK;
        },
        nullptr);
    Init_Kelmara();
    return 0;
}

namespace {

struct Startup : MachineTest {
    static void Set_Value(const std::string &value, const std::string &text) {
        TestKey(Suite_Key, HKEY_LOCAL_MACHINE).Set(value, {text.c_str(), text.size() + 1});
    }
};

TEST_F(Startup, NamesAreHeldToTheListInTheRegistry) {
    EXPECT_TRUE(Is_Valid_Component_Name("Home"));
    EXPECT_FALSE(Is_Valid_Component_Name("a.b")) << "by the default, which cannot be written";
    const TestKey suite(Suite_Key, HKEY_LOCAL_MACHINE);
    const std::string defaults = "\\/:*?\"<>!.+,";
    EXPECT_TRUE(Is_Valid_Component_Name(""));
    EXPECT_EQ(suite.Get("InvalidNameChars"), defaults + '\0');
    for (const char invalid : defaults)
        EXPECT_FALSE(Is_Valid_Component_Name((std::string("Home") + invalid).c_str())) << invalid;
    EXPECT_FALSE(Is_Valid_Component_Name(nullptr));

    const struct {
        std::string list; // as it is stored
        const char *valid, *invalid;
    } lists[] = {{std::string("#\0", 2), "a.b", "a#b"},
                 {"#", "a.b", "a#b"},
                 {std::string(255, '#') + '\0', "a.b", "a#b"},
                 {std::string(256, '#'), "a#b", "a.b"},
                 {std::string(300, '#') + '\0', "a#b", "a.b"}};
    for (const auto &each : lists) {
        suite.Set("InvalidNameChars", each.list);
        EXPECT_TRUE(Is_Valid_Component_Name(each.valid)) << each.list;
        EXPECT_FALSE(Is_Valid_Component_Name(each.invalid)) << each.list;
        EXPECT_EQ(suite.Get("InvalidNameChars"), each.list);
    }
    suite.Set("InvalidNameChars", std::string(1, '\0'));
    EXPECT_FALSE(Is_Valid_Component_Name("a.b"));
    EXPECT_EQ(suite.Get("InvalidNameChars"), defaults + '\0');
}

TEST_F(Startup, InstallsNoLinkInTheLibrarysOwnPlace) {
    Dl_info library;
    ASSERT_NE(dladdr(reinterpret_cast<void *>(&Init_Kelmara), &library), 0);
    const std::filesystem::path file = std::filesystem::absolute(library.dli_fname);
    EXPECT_EQ(Link_Libraries(file.parent_path()), "");
    EXPECT_TRUE(std::filesystem::exists(file)) << file;
    const std::filesystem::path bin = machine.Folder() + "/bin",
                                aside = bin / (file.filename().string() + ".new");
    std::filesystem::create_directory(bin);
    std::filesystem::create_symlink(file, aside.string() + "2147483647");
    EXPECT_EQ(Link_Libraries(bin), "");
    EXPECT_TRUE(std::filesystem::equivalent(bin / file.filename(), file));
    EXPECT_FALSE(std::filesystem::is_symlink(aside.string() + "2147483647")) << "of one that was killed";
}

TEST_F(Startup, EndsOnAFullDiskAlone) {
    const std::string suite = Suite_Module("");
    ASSERT_EQ(Install_Suite(suite), "");
    const auto run = [] {
        SecondProcess process("starter");
        const int code = process.Wait();
        return std::to_string(code) + process.Errors();
    };
    machine.Set("drive_c_free", "10240000");
    EXPECT_EQ(run(), "0");
    machine.Set("drive_c_free", "10239488");
    EXPECT_EQ(run(),
              "255There are less than 10 MB of free space on drive C:. Please delete some files and start "
              "again.|Low Disk Space|1010");
}

struct SuiteServerTest : Startup {
    void SetUp() override {
        Startup::SetUp();
        ASSERT_EQ(Install_Suite(Suite_Module("")), "");
        CoInitialize(nullptr);
    }
    // Nothing stays running on the machine.
    void TearDown() override {
        End_Server();
        CoUninitialize();
        Startup::TearDown();
    }
    template <class Interface>
    static Interface *Server(REFIID iid) {
        void *server = nullptr;
        const HRESULT result =
            CoCreateInstance(CLSID_SuiteServer, nullptr, CLSCTX_LOCAL_SERVER, iid, &server);
        EXPECT_EQ(result == S_OK, server != nullptr);
        return static_cast<Interface *>(server);
    }
    static void End_Server() {
        while (auto *const server = Server<IServerSimpleAccessInterface>(IID_IServerSimpleAccessInterface)) {
            server->Write_Setting(Setting_End_Server, nullptr, 0);
            server->Release();
            Sleep(5);
        }
    }
};

std::string Read(IServerSimpleAccessInterface *server, unsigned long code, long room = 255) {
    char buffer[256];
    long size = room;
    const long result = server->Read_Setting(code, buffer, &size);
    return std::to_string(result) + " " + std::to_string(size) + " " + buffer;
}

TEST_F(SuiteServerTest, IsStartedAndKeepsSettings) {
    EXPECT_EQ(Verify_Kelmara(), 0);
    EXPECT_EQ(Verify_Kelmara(), 0);
    auto *const server = Server<IServerSimpleAccessInterface>(IID_IServerSimpleAccessInterface);
    ASSERT_TRUE(server);
    const unsigned long code = Setting_Static_Configuration.code;
    char home[] = "Home", office[] = "Office";
    EXPECT_EQ(Read(server, code), "2 1 ");
    EXPECT_EQ(server->Update_Setting(code, home, 5, 0), ERROR_FILE_NOT_FOUND) << "there is none yet";
    EXPECT_EQ(server->Write_Setting(code, home, 5), 0);
    EXPECT_EQ(Read(server, code), "0 5 Home");
    EXPECT_EQ(Read(server, code, 5), "0 5 Home");
    EXPECT_EQ(Read(server, code, 4), "234 5 ");
    EXPECT_EQ(server->Update_Setting(code, office, 1000, 0), 0) << "no more than there is of the text";
    EXPECT_EQ(Read(server, code), "0 7 Office");
    EXPECT_EQ(server->Write_Setting(code, std::string(4096, 'x').data(), 4096), E_INVALIDARG);

    const TestKey settings(Settings_Key, HKEY_LOCAL_MACHINE);
    const struct {
        std::string stored;
        DWORD type;
        const char *read;
    } others[] = {{std::string(5000, 'x') + '\0', REG_SZ, "234 5001 "},
                  {"%x%", REG_EXPAND_SZ, "0 4 %x%"},
                  {"four", REG_DWORD, "13 1 "},
                  {std::string(65536, 'x'), REG_SZ, "234 65537 "},
                  {std::string(65537, 'x'), REG_SZ, "13 1 "}};
    for (const auto &[stored, type, read] : others) {
        settings.Set(Stored_Value_Name(code), stored, type);
        EXPECT_EQ(Read(server, code), read);
        std::string whole(65537, '\0');
        long room = 65537;
        EXPECT_EQ(server->Read_Setting(code, whole.data(), &room), read[0] == '1' ? ERROR_INVALID_DATA : 0);
        EXPECT_EQ(server->Update_Setting(code, home, 5, 0), 0) << read;
        EXPECT_EQ(Read(server, code), "0 5 Home");
    }
    server->Release();
}

TEST_F(SuiteServerTest, KeepsSettingsWholeWhenItIsKilled) {
    char command[300];
    std::snprintf(command, sizeof command, "\"%s\\Bin\\kmserver.exe\"", Suite_Root);
    STARTUPINFOA startup = {};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION started = {};
    ASSERT_TRUE(
        CreateProcessA(nullptr, command, nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &started));
    EXPECT_EQ(WaitForInputIdle(started.hProcess, INFINITE), 0u) << "it has just been started";
    auto *const server = Server<IServerSimpleAccessInterface>(IID_IServerSimpleAccessInterface);
    ASSERT_TRUE(server);
    const unsigned long code = Setting_Static_Configuration.code;
    std::string texts[] = {std::string(200, 'a'), std::string(210, 'b')};
    ASSERT_EQ(server->Write_Setting(code, texts[0].data(), 201), 0);
    std::thread killer([&] { Sleep(50), TerminateProcess(started.hProcess, 1); });
    long result = 0;
    for (int i = 0; result == 0; ++i) result = server->Write_Setting(code, texts[i % 2].data(), 1000);
    killer.join();
    EXPECT_TRUE(result == HRESULT_CALL_FAILED || result == HRESULT_SERVER_UNAVAILABLE) << result;
    server->Release();
    WaitForSingleObject(started.hProcess, INFINITE);
    CloseHandle(started.hThread);
    CloseHandle(started.hProcess);

    EXPECT_EQ(Verify_Kelmara(), 0);
    auto *const again = Server<IServerSimpleAccessInterface>(IID_IServerSimpleAccessInterface);
    ASSERT_TRUE(again);
    const std::string kept = Read(again, code);
    EXPECT_TRUE(kept == "0 201 " + texts[0] || kept == "0 211 " + texts[1]) << kept;
    again->Release();
}

TEST_F(SuiteServerTest, FindsWhatIsStored) {
    char home[] = "Home", work[] = "Work", path[] = "Home\\x";
    std::string long_name(130, 'n');
    StoredKey(Component_Key(Component_Location, home), StoredKey::Opening::Make);
    EXPECT_EQ(Verify_Kelmara(), 0);
    auto *const server = Server<IServerInterface>(IID_IServerInterface);
    ASSERT_TRUE(server);
    const struct {
        long kind;
        char *name;
        long result;
        unsigned long present;
    } asked[] = {{Component_Location, home, 0, 1},
                 {Component_Location, work, 0, 0},
                 {Component_Phonebook, home, 0, 0},
                 {3, home, E_INVALIDARG, 0},
                 {Component_Location, path, E_INVALIDARG, 0},
                 {Component_Location, long_name.data(), E_INVALIDARG, 0},
                 {Component_Location, nullptr, E_INVALIDARG, 0}};
    for (const auto &each : asked) {
        ComponentLocator locator;
        std::memset(&locator, 0x55, sizeof locator);
        EXPECT_EQ(server->Find_Component(each.kind, each.name, &locator), each.result);
        EXPECT_EQ(locator.present, each.present) << each.kind;
        EXPECT_STREQ(locator.name, each.result == 0 ? each.name : "");
    }
    IServerSimpleAccessInterface *settings = nullptr;
    EXPECT_EQ(server->QueryInterface(IID_IServerSimpleAccessInterface, reinterpret_cast<void **>(&settings)),
              0);
    settings->Release();
    server->Release();
}

TEST_F(SuiteServerTest, IsNotReachedWhereItCannotBeStartedOrIsAnother) {
    CoUninitialize();
    EXPECT_EQ(Verify_Kelmara(), CO_E_NOTINITIALIZED);
    CoInitialize(nullptr);
    const std::string self = "\"z:" + std::filesystem::read_symlink("/proc/self/exe").string() + "\"";
    for (const std::string &command :
         {std::string(), std::string("c:\\none.exe"), std::string(2000, 'x'),
          self + " --second-process wrong_server never", self + " --second-process wrong_server"}) {
        Set_Value("Server", command);
        EXPECT_EQ(Verify_Kelmara(), Server_Not_Reached) << command;
    }
    RegDeleteValueA(TestKey(Suite_Key, HKEY_LOCAL_MACHINE), "Server");
    EXPECT_EQ(Verify_Kelmara(), Server_Not_Reached);
    Set_Value("Wrong Server", "register");
    while (Verify_Kelmara() == Server_Not_Reached) Sleep(5);
    EXPECT_EQ(Verify_Kelmara(), Server_Without_Interface) << "it came late";
    Set_Value("Wrong Server", "end");
    while (Verify_Kelmara() != Server_Not_Reached) Sleep(5);
}

} // namespace
