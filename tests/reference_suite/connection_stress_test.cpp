// Programs of the suite on one machine that connect, lose, watch and reconfigure in random order, and are
// killed in the middle of it.

#include <kelmara/connectivity/connection_utility.h>
#include <kelmara/connectivity/phone_numbers.h>
#include <kelmara/connectivity/tapi.h>

#include <reference_suite/companions/log/shared_objects.h>
#include <reference_suite/components/component_store.h>
#include <reference_suite/components/connection/connection_fate.h>
#include <reference_suite/components/connection/status_handlers.h>

#include <tests/reference_suite/installed_components.h>
#include <tests/support/second_process.h>
#include <tests/support/window_verbs.h>

#include <atomic>
#include <csignal>
#include <cstdlib>
#include <optional>
#include <random>
#include <thread>

namespace {

// Makes and ends connections from within what it is told.
class MeddlingHandler final : public IConnectionHandlerInterface, public IConnectionStatusInterface {
  public:
    HRESULT QueryInterface(REFIID, void **out) override {
        *out = static_cast<IConnectionStatusInterface *>(this);
        return AddRef(), S_OK;
    }
    ULONG AddRef() override { return ++references; }
    ULONG Release() override { return --references; }
    void Status_Changed(long stage, char *) override {
        if (stage == 2 && utility) utility->Close();
        if (stage == 0 && utility) utility->Remove_Status_Handler(this);
    }
    ULONG references = 1;
    CConnectionUtility *utility = nullptr;
};

class RestlessProgram {
  public:
    explicit RestlessProgram(unsigned seed) : random_(seed) {
        Setup_TAPI(nullptr);
        pouring_ = std::thread([this, lasting = HWND(lasting_)] {
            for (; !over_; Sleep(1)) PostMessageA(lasting, WM_USER, 0, 0);
        });
    }
    ~RestlessProgram() {
        utility_.reset();
        EXPECT_EQ(handler_.references, 1u);
        over_ = true;
        pouring_.join();
    }
    void Step() {
        std::optional<TestWindow> brief;
        if (Below(8) == 0) brief.emplace(WS_POPUP, RECT());
        const HWND window = brief ? HWND(*brief) : HWND(lasting_);
        char text[256] = "";
        switch (Below(16)) {
        case 0:
            handler_.utility = &utility_.emplace();
            [[fallthrough]];
        case 1:
            utility_->Set_Config(Any({"Home", "Travel", "Office LAN", "Nobody's"}));
            break;
        case 2:
            utility_->Monitor_Connections(window);
            break;
        case 3:
            utility_->Monitor_Disconnections(window);
            break;
        case 4:
            Below(2) ? utility_->Stop_Connection_Monitor() : utility_->Stop_Disconnection_Monitor();
            break;
        case 5:
        case 6:
            Connect(Below(2));
            break;
        case 7:
            utility_->Close();
            break;
        case 8:
            utility_->Is_Connected(text);
            EXPECT_TRUE(Is_Known(text)) << text;
            break;
        case 9:
            utility_->Get_Connected_Status_String(text);
            break;
        case 10:
            Create_Dial_Number("+1 (206) 555-1212", Any({"Home", "Office", "Hotel"}), text, nullptr);
            EXPECT_EQ(*text & ~4, 'P') << text; // or T
            break;
        case 11:
            Set_Fate(Any({"Dial Time", "Lost After", "Result"}), Below(4));
            break;
        case 12: {
            const OwnedHandle lock(CreateMutexA(nullptr, FALSE, "KELMARA-CONNECTION-LOCK"));
            const MutexLock held(lock, 5000);
            Sleep(Below(10)); // and may be killed with it
            break;
        }
        case 13:
            utility_->Set_Last_Mobile_Number(Any({"1", "a number of some length", ""}));
            utility_->Get_Last_Mobile_Number(text);
            break;
        case 14:
            utility_->Add_Status_Handler(&handler_);
            if (Below(2)) utility_->Remove_Status_Handler(&handler_);
            break;
        default:
            for (MSG message; PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE);) DispatchMessageA(&message);
        }
    }
    unsigned Below(unsigned end) { return random_() % end; }

  private:
    const char *Any(std::initializer_list<const char *> names) {
        return names.begin()[Below(static_cast<unsigned>(names.size()))];
    }
    static bool Is_Known(const std::string &name) {
        return name.empty() || name == "Home" || name == "Travel" || name == "Office LAN" ||
               name == "Nobody's";
    }
    static void Set_Fate(const char *name, unsigned number) {
        TestKey(Fate_Key, HKEY_LOCAL_MACHINE)
            .Set(name, std::string({static_cast<char>(number), 0, 0, 0}), REG_DWORD);
    }
    void Connect(bool wait) {
        ConnectParams params = {};
        utility_->Initialize_Connect_Params(&params);
        utility_->Connect(&params, Below(2), wait);
    }

    std::mt19937 random_;
    TestWindow lasting_{WS_POPUP, {}};
    MeddlingHandler handler_;
    std::optional<CConnectionUtility> utility_{std::in_place};
    std::atomic<bool> over_{false};
    std::thread pouring_;
};

SECOND_PROCESS(restless) {
    CoInitialize(nullptr);
    std::atomic<bool> over{false};
    {
        RestlessProgram program(static_cast<unsigned>(std::stoul(process.Arguments().back())));
        std::thread listening([&] { over = process.Hear().empty(); });
        while (!over) program.Step();
        listening.join();
    }
    CoUninitialize();
    return testing::Test::HasFailure();
}

SECOND_PROCESS(calm) {
    CoInitialize(nullptr);
    {
        const TestWindow window(WS_POPUP, {});
        CConnectionUtility utility;
        EXPECT_EQ(utility.Set_Config("Home"), 0);
        EXPECT_EQ(utility.Set_Last_Mobile_Number("1"), 0) << "whoever held the lock is gone";
        utility.Close();
        EXPECT_TRUE(utility.Can_Connect());
        utility.Monitor_Connections(window), utility.Monitor_Disconnections(window);
        ConnectParams params = {};
        utility.Initialize_Connect_Params(&params);
        EXPECT_EQ(utility.Connect(&params, false, true), 0);
        EXPECT_TRUE(utility.Is_Connected(nullptr));
        utility.Close();
        int heard = 0;
        MSG message;
        for (int tries = 0; heard < 2 && tries < 5000; ++tries, Sleep(1))
            while (PeekMessageA(&message, window, Connection_Message, Connection_Message, PM_REMOVE)) ++heard;
        EXPECT_EQ(heard, 2) << "up and down";
    }
    CoUninitialize();
    return testing::Test::HasFailure();
}

struct ConnectionStress : InstalledComponents {
    using Others = std::vector<std::unique_ptr<SecondProcess>>;

    static void Begin(std::unique_ptr<SecondProcess> &other, unsigned seed) {
        other = std::make_unique<SecondProcess>("restless", std::vector{std::to_string(seed)});
    }
    static void End(std::unique_ptr<SecondProcess> &other, bool kill) {
        if (kill) other->Kill();
        EXPECT_EQ(other->Wait(), kill ? -SIGKILL : 0) << other->Hear() << other->Errors();
    }
};

TEST_F(ConnectionStress, LeavesAMachineThatConnects) {
    const char *const given = std::getenv("KELMARA_TEST_SEED");
    const unsigned seed = given ? static_cast<unsigned>(std::stoul(given)) : std::random_device()();
    std::printf("KELMARA_TEST_SEED=%u\n", seed), std::fflush(stdout);
    RegDeleteValueA(TestKey(Suite_Key, HKEY_LOCAL_MACHINE), "Log"); // it would stay loaded
    Others others(3);
    {
        RestlessProgram program(seed);
        unsigned next_seed = seed;
        for (auto &other : others) Begin(other, ++next_seed);
        for (const DWORD start = GetTickCount(); GetTickCount() - start < 2000;) {
            program.Step();
            if (program.Below(25) != 0) continue;
            auto &other = others[program.Below(3)];
            End(other, program.Below(4) != 0);
            Begin(other, ++next_seed);
        }
        for (auto &other : others) End(other, program.Below(2));
    }
    RegDeleteKeyA(HKEY_LOCAL_MACHINE, Fate_Key);
    SecondProcess calm("calm"); // which holds nothing by accident
    EXPECT_EQ(calm.Wait(), 0) << calm.Hear() << calm.Errors();
}

} // namespace
