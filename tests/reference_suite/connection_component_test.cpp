#include <kelmara/connectivity/connection_utility.h>

#include <reference_suite/components/component_store.h>
#include <reference_suite/components/connection/connection_fate.h>
#include <reference_suite/components/connection/kept_connection.h>
#include <reference_suite/components/connection/status_handlers.h>

#include <tests/reference_suite/installed_components.h>
#include <tests/support/second_process.h>
#include <tests/support/window_verbs.h>

#include <platform/user.h>

#include <cstring>

namespace {

constexpr long Line_Busy = 676;

long Connect(CConnectionUtility &utility, bool wait = true) {
    ConnectParams params = {};
    utility.Initialize_Connect_Params(&params);
    std::strcpy(params.first_dial_string, "T555-0100");
    return utility.Connect(&params, false, wait);
}

std::string Active(CConnectionUtility &utility) {
    char name[256];
    utility.Is_Connected(name);
    return name;
}

void Set_Fate(const char *name, unsigned char number, unsigned char hundreds = 0) {
    TestKey(Fate_Key, HKEY_LOCAL_MACHINE)
        .Set(name, {static_cast<char>(number), static_cast<char>(hundreds), 0, 0}, REG_DWORD);
}

struct ConnectionLife : InstalledComponents {
    void SetUp() override {
        InstalledComponents::SetUp();
        RegDeleteValueA(TestKey(Suite_Key, HKEY_LOCAL_MACHINE), "Log"); // it would stay loaded
        utility = new CConnectionUtility;
        window = new TestWindow(WS_POPUP, {0, 0, 9, 9});
        EXPECT_EQ(utility->Set_Config("Home"), 0);
        utility->Monitor_Connections(*window);
        utility->Monitor_Disconnections(*window);
    }
    void TearDown() override {
        if (utility) utility->Close();
        delete utility;
        Heard(0);
        delete window;
        InstalledComponents::TearDown();
    }
    // "+-" for a connection that was lost again; waits for so many messages.
    static std::string Heard(std::size_t count) {
        std::string heard;
        MSG message;
        for (int tries = 0; tries < 5000; ++tries, Sleep(1)) {
            while (PeekMessageA(&message, nullptr, Connection_Message, Connection_Message, PM_REMOVE))
                heard += message.wParam ? "+" : "-";
            if (heard.size() >= count) break;
        }
        return heard;
    }
    std::string Status() const {
        char text[256];
        utility->Get_Connected_Status_String(text);
        return text;
    }
    CConnectionUtility *utility = nullptr;
    TestWindow *window = nullptr;
};

TEST_F(ConnectionLife, IsDialledThenUpThenClosed) {
    EXPECT_EQ(Active(*utility) + Status(), "Not connected");
    EXPECT_EQ(Connect(*utility), 0);
    EXPECT_EQ(Heard(1) + Active(*utility) + Status(), "+HomeConnected to Home for 0 seconds");
    EXPECT_EQ(Connect(*utility), Connection_Busy);
    utility->Close();
    EXPECT_EQ(Heard(1) + Active(*utility), "-");
    EXPECT_EQ(utility->Set_Config("Office LAN"), 0);
    IConnectionInterface *const lan = utility->Get_Connection();
    char unknown[] = "pigeon", name[256];
    EXPECT_EQ(lan->Use_Method(unknown), E_INVALIDARG);
    EXPECT_EQ(lan->Connect(nullptr, true), E_INVALIDARG) << "no configuration is set";
    StoredKey(Settings_Key, StoredKey::Opening::Make).Write(Setting_Static_Configuration.code, "Office LAN");
    EXPECT_EQ(lan->Connect(nullptr, true), 0);
    lan->Get_Active_Config(name);
    EXPECT_STREQ(name, "Office LAN");

    utility->Close();
    ConnectParams unterminated = {};
    std::memset(unterminated.configuration_name, 'n', sizeof unterminated.configuration_name);
    EXPECT_EQ(lan->Connect(&unterminated, true), E_INVALIDARG);
    for (const std::size_t length : {256u, 255u}) {
        StoredKey(Settings_Key, StoredKey::Opening::Make)
            .Write(Setting_Static_Configuration.code, std::string(length, 'n'));
        EXPECT_EQ(lan->Connect(nullptr, true), length == 255 ? 0 : E_INVALIDARG);
    }
    lan->Get_Active_Config(name);
    EXPECT_EQ(name, std::string(255, 'n')) << "whole: cut, it would be another's";
}

TEST_F(ConnectionLife, EndsAsItsFateWants) {
    Set_Fate("Result", Line_Busy & 0xFF, Line_Busy >> 8);
    EXPECT_EQ(Connect(*utility), As_Component_Code(Line_Busy));
    EXPECT_EQ(Connect(*utility, false), 0);
    EXPECT_EQ(Active(*utility), "");
    while (Status() != "Not connected") Sleep(1);
    Set_Fate("Result", 0), Set_Fate("Lost After", 20);
    for (const bool wait : {true, false, true}) {
        EXPECT_EQ(Connect(*utility, wait), 0);
        EXPECT_EQ(Heard(2), "+-");
        EXPECT_EQ(Active(*utility), "");
    }
    Set_Fate("Dial Time", 0, 40); // ten seconds
    EXPECT_EQ(Connect(*utility, false), 0);
    EXPECT_EQ(Active(*utility) + Status(), "Dialling T555-0100");
    EXPECT_EQ(Connect(*utility), Connection_Busy);
    utility->Close();
    EXPECT_EQ(Status() + Heard(0), "Not connected") << "what never was up is not lost";
}

TEST_F(ConnectionLife, LetsItsModuleGoWhenItEndsAfterAllObjects) {
    Set_Fate("Lost After", 20);
    EXPECT_EQ(Connect(*utility), 0);
    delete std::exchange(utility, nullptr);
}

SECOND_PROCESS(connecting) {
    CoInitialize(nullptr);
    {
        CConnectionUtility utility;
        process.Tell(std::to_string(utility.Set_Config("Travel")));
        for (std::string word; !(word = process.Hear()).empty();)
            process.Tell(word == "connect" ? std::to_string(Connect(utility)) : Active(utility));
    }
    CoUninitialize();
    return 0;
}

TEST_F(ConnectionLife, IsSeenByAllProcessesAndLostWithItsOwn) {
    for (const bool kill : {false, true}) {
        SecondProcess other("connecting");
        EXPECT_EQ(other.Hear(), "0");
        other.Tell("connect");
        EXPECT_EQ(other.Hear(), "0");
        EXPECT_EQ(Heard(1), "+");
        EXPECT_EQ(Active(*utility), "Travel");
        EXPECT_EQ(Connect(*utility), Connection_Busy);
        kill ? other.Kill() : utility->Close();
        EXPECT_TRUE(!kill || other.Wait() == -9);
        EXPECT_EQ(Active(*utility), "") << "with the next look";
        EXPECT_EQ(Heard(1), "-");
        if (!kill) {
            EXPECT_EQ(Connect(*utility), 0);
            other.Tell("active");
            EXPECT_EQ(other.Hear() + Heard(1), "Home+");
            utility->Close();
            EXPECT_EQ(Heard(1), "-");
        }
    }
}

SECOND_PROCESS(locking) {
    const HANDLE lock = CreateMutexA(nullptr, FALSE, "KELMARA-CONNECTION-LOCK");
    process.Tell(std::to_string(WaitForSingleObject(lock, 5000)));
    process.Hear();
    return 0;
}

TEST_F(ConnectionLife, OutlivesWhoIsKilledWithItsLock) {
    EXPECT_EQ(Connect(*utility), 0);
    SecondProcess other("locking");
    EXPECT_EQ(other.Hear(), "0");
    other.Kill();
    EXPECT_EQ(other.Wait(), -9);
    EXPECT_EQ(Active(*utility), "Home");
    utility->Close();
    EXPECT_EQ(Connect(*utility), 0);
}

class Handler final : public IConnectionHandlerInterface, public IConnectionStatusInterface {
  public:
    HRESULT QueryInterface(REFIID iid, void **out) override {
        const bool known = IsEqualGUID(iid, IID_IConnectionStatusInterface);
        *out = known ? static_cast<IConnectionStatusInterface *>(this) : nullptr;
        if (known) AddRef();
        return known ? S_OK : E_NOINTERFACE;
    }
    ULONG AddRef() override { return ++references; }
    ULONG Release() override {
        const ULONG left = --references;
        if (clinging) clinging->Remove_Status_Handler(this);
        return left;
    }
    void Status_Changed(long stage, char *text) override {
        told += std::to_string(stage) + text + "|";
        if (connection) connection->Remove_Status_Handler(this);
    }
    ULONG references = 1;
    std::string told;
    IConnectionInterface *connection = nullptr; // to remove itself from
    IConnectionInterface *clinging = nullptr;   // the same, as it goes
};

TEST_F(ConnectionLife, IsToldToHandlers) {
    Handler staying, leaving;
    leaving.connection = utility->Get_Connection();
    for (Handler *handler : {&leaving, &staying, &staying}) utility->Add_Status_Handler(handler);
    utility->Add_Status_Handler(nullptr);
    EXPECT_EQ(Connect(*utility), 0);
    utility->Close();
    EXPECT_EQ(staying.told, "2Connected to Home for 0 seconds|0Not connected|");
    EXPECT_EQ(leaving.told, "2Connected to Home for 0 seconds|");
    EXPECT_EQ(leaving.references, 1u);
    staying.clinging = leaving.connection;
    EXPECT_EQ(utility->Set_Config("Travel"), 0);
    EXPECT_EQ(staying.references, 1u);
}

TEST_F(ConnectionLife, KeepsNoPlaceForEventsThatNobodyHas) {
    IConnectionInterface *const connection = utility->Get_Connection();
    std::vector<HANDLE> held;
    for (HANDLE event = nullptr; connection->Get_Monitor_Events(&event, nullptr) == 0;) held.push_back(event);
    EXPECT_EQ(Connect(*utility), 0);
    for (const HANDLE event : held) {
        EXPECT_EQ(WaitForSingleObject(event, 0), WAIT_OBJECT_0);
        CloseHandle(event);
    }
    HANDLE up = nullptr, down = nullptr;
    EXPECT_EQ(connection->Get_Monitor_Events(&up, &down), 0);
    utility->Close();
    EXPECT_EQ(WaitForSingleObject(up, 0) + WaitForSingleObject(down, 0), WAIT_TIMEOUT);
    CloseHandle(up), CloseHandle(down);
}

} // namespace
