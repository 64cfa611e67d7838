// Servers and clients that end where they stand: nobody waits for them, and nothing of them is left.

#include <tests/platform/com_servers.h>

#include <platform/user.h>

#include <algorithm>
#include <fstream>
#include <future>
#include <random>
#include <sys/wait.h>
#include <thread>

namespace {

bool Is_End(HRESULT result) {
    return result == HRESULT_CALL_FAILED || result == HRESULT_SERVER_UNAVAILABLE ||
           result == REGDB_E_CLASSNOTREG;
}

// An object after the other, each by two interfaces, until the server has ended: what tells that.
HRESULT Use_Until_The_End() {
    HRESULT result = S_OK;
    while (result >= 0) {
        IUnknown *service = nullptr, *number = nullptr;
        result = CoCreateInstance(CLSID_TestService, nullptr, CLSCTX_LOCAL_SERVER, IID_ITestService,
                                  reinterpret_cast<void **>(&service));
        if (result < 0) break;
        char much[] = "much", answer[16];
        result = static_cast<ITestService *>(service)->Do(much, answer, sizeof answer);
        if (result >= 0)
            result = service->QueryInterface(IID_ITestNumber, reinterpret_cast<void **>(&number));
        if (result >= 0) result = static_cast<ITestNumber *>(number)->Number();
        if (number) number->Release();
        EXPECT_EQ(service->Release(), 0u);
    }
    return result;
}

long Open_Descriptors() {
    const std::filesystem::directory_iterator all("/proc/self/fd");
    return std::distance(begin(all), end(all));
}

} // namespace

SECOND_PROCESS(busy_client) {
    CoInitialize(nullptr);
    process.Tell("going");
    Use_Until_The_End();
    return 0;
}

namespace {

struct ComServerEnds : ComServers {
    std::mt19937 random{std::random_device()()};
    void Pause() { usleep(random() % 10000); }
    void Use_A_Server_That_Is_Killed();
};

void ComServerEnds::Use_A_Server_That_Is_Killed() {
    Server server;
    ITestService *const shared = Made();
    std::thread other([shared] {
        HRESULT result;
        while ((result = Result(shared, "much")) >= 0) {
        }
        EXPECT_TRUE(Is_End(result)) << result;
    });
    DWORD killed = 0;
    std::thread killer([&] { Pause(), killed = GetTickCount(), server.Kill(); });
    const HRESULT result = Use_Until_The_End();
    EXPECT_TRUE(Is_End(result)) << result;
    other.join();
    killer.join();
    EXPECT_LT(GetTickCount() - killed, 1000u);
    EXPECT_EQ(shared->Release(), 0u);
}

TEST_F(ComServerEnds, AreToldAtOnceAtAnyMomentAndServersComeAgain) {
    Use_A_Server_That_Is_Killed();
    const long descriptors = Open_Descriptors();
    for (const DWORD begin = GetTickCount(); GetTickCount() - begin < 1000;) Use_A_Server_That_Is_Killed();
    EXPECT_EQ(Open_Descriptors(), descriptors);

    Server server;
    ITestService *const service = Made();
    for (const DWORD begin = GetTickCount(); GetTickCount() - begin < 500;) {
        SecondProcess client("busy_client");
        EXPECT_EQ(client.Hear(), "going");
        Pause();
        client.Kill();
    }
    Expect_Living(service, "1");
    EXPECT_EQ(service->Release(), 0u);
    Sleep(50);
    EXPECT_EQ(server.Wait(), 0) << "nothing was left in it";
}

TEST_F(ComServerEnds, ComeWithTheEndOfTheThreadThatServes) {
    Server first_thread;
    ITestService *service = Made();
    EXPECT_EQ(Result(service, "leave"), HRESULT_CALL_FAILED);
    EXPECT_EQ(service->Release(), 0u);
    EXPECT_EQ(Create(IID_ITestService, service), REGDB_E_CLASSNOTREG);

    const ULONG factory_count = factory.count;
    std::promise<void> registered;
    std::thread own([&] {
        CoInitialize(nullptr);
        Register();
        registered.set_value();
        MSG message;
        GetMessageA(&message, nullptr, 0, 0);
    });
    registered.get_future().wait();
    service = Made();
    EXPECT_EQ(Result(service, "leave"), HRESULT_CALL_FAILED);
    own.join();
    EXPECT_EQ(service->Release(), 0u);
    EXPECT_EQ(factory.count, factory_count);
    EXPECT_EQ(living, 0);
}

TEST_F(ComServerEnds, AreNoConcernOfAForkedChild) {
    Server server;
    ITestService *service = Made();
    const pid_t child = std::stoi(Ask(service, "fork"));
    ITestService *const another = Made(); // it is still listed
    const pid_t heir = fork();
    if (heir == 0) _exit(Result(service, "living") == HRESULT_SERVER_UNAVAILABLE ? 0 : 1);
    int status = -1;
    EXPECT_EQ(waitpid(heir, &status, 0), heir);
    EXPECT_EQ(status, 0) << "the connection is its parent's";
    server.Kill();
    EXPECT_EQ(Result(service, "living"), HRESULT_CALL_FAILED);
    EXPECT_EQ(service->Release() + another->Release(), 0u);
    EXPECT_EQ(Create(IID_ITestService, service), REGDB_E_CLASSNOTREG) << "which the child's sockets say not";
    kill(child, SIGKILL);
}

TEST_F(ComServerEnds, OfAClassLeadToWhoServesInItsPlace) {
    const DWORD cookie = Register();
    std::promise<void> connected, revoked;
    auto made = std::async(std::launch::async, [&] {
        CoInitialize(nullptr);
        void *remote = nullptr, *service = nullptr;
        CoGetClassObject(CLSID_TestService, CLSCTX_LOCAL_SERVER, nullptr, IID_IClassFactory, &remote);
        auto *const remote_factory = static_cast<IClassFactory *>(remote);
        connected.set_value();
        revoked.get_future().wait();
        const HRESULT result = remote_factory->CreateInstance(nullptr, IID_ITestService, &service);
        EXPECT_EQ(remote_factory->Release(), 0u);
        if (service) static_cast<IUnknown *>(service)->Release();
        CoUninitialize();
        return result;
    });
    connected.get_future().wait();
    Sleep(50); // it is accepted
    EXPECT_EQ(CoRevokeClassObject(cookie), S_OK);
    Server server;
    revoked.set_value();
    MSG message;
    while (made.wait_for(std::chrono::milliseconds(1)) != std::future_status::ready)
        PeekMessageA(&message, nullptr, 0, 0, PM_NOREMOVE);
    EXPECT_EQ(made.get(), S_OK);
}

// The other thread's call has the connection until this thread has answered the server's own.
TEST_F(ComServerEnds, NeverComeOfThreeThatWaitForEachOther) {
    Server server;
    Register(CLSID_TestProxy);
    ITestService *const shared = Made();
    std::thread other([shared] { EXPECT_EQ(Result(shared, "back"), 17); });
    Sleep(50);
    const DWORD begin = GetTickCount();
    EXPECT_EQ(Result(shared, "living"), 6);
    EXPECT_LT(GetTickCount() - begin, 5000u);
    other.join();
    EXPECT_EQ(shared->Release(), 0u);
}

TEST_F(ComServerEnds, LeaveNoHalfListedClass) {
    SecondProcess killed("busy_client");
    killed.Kill();
    killed.Wait();
    Register();
    const std::filesystem::path folder = Class_Socket().parent_path();
    const auto aside = [&](pid_t maker) {
        return folder / ("new{5B0A3A10-77C1-4D0E-9122-3F5E016C2011}-0000000001.000000000-" +
                         std::to_string(maker) + "-1");
    };
    for (const pid_t maker : {killed.Id(), getpid()}) std::ofstream(aside(maker)).put('s');
    Register(CLSID_TestProxy);
    EXPECT_FALSE(exists(aside(killed.Id())));
    EXPECT_TRUE(std::filesystem::remove(aside(getpid()))) << "it may be about to listen";
}

} // namespace
