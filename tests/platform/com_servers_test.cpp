#include <platform/com_marshalling.h>

#include <tests/platform/com_servers.h>

#include <platform/kernel.h>
#include <platform/user.h>

#include <memory>
#include <poll.h>
#include <sys/fsuid.h>
#include <sys/wait.h>
#include <thread>

namespace {

void Run_Messages() {
    MSG message;
    while (GetMessageA(&message, nullptr, 0, 0) > 0) DispatchMessageA(&message);
}

} // namespace

// Serves until it is killed or its input ends.
SECOND_PROCESS(service) {
    CoInitialize(nullptr);
    Register();
    const DWORD server = static_cast<DWORD>(gettid());
    std::thread([&process, server] {
        process.Tell(std::to_string(server));
        process.Hear();
        PostThreadMessageA(server, WM_QUIT, 0, 0);
    }).detach();
    MSG message;
    PeekMessageA(&message, nullptr, 0, 0, PM_NOREMOVE);
    Run_Messages();
    // What clients have let go of may not have been heard of yet.
    for (int i = 0; i < 500 && living != 0; ++i, Sleep(10))
        PeekMessageA(&message, nullptr, 0, 0, PM_NOREMOVE);
    const long left_before = living;
    CoUninitialize();
    return left_before == 0 && living == 0 && factory.count == 1 ? 0 : 1;
}

// Holds an object, and ends without giving it back.
SECOND_PROCESS(forgetful_client) {
    CoInitialize(nullptr);
    static ITestService *service = nullptr; // found by whoever looks for leaks
    const HRESULT result = CoCreateInstance(CLSID_TestService, nullptr, CLSCTX_LOCAL_SERVER, IID_ITestService,
                                            reinterpret_cast<void **>(&service));
    process.Tell(result == S_OK ? "holds" : "failed");
    process.Hear();
    return 0;
}

namespace {

TEST_F(ComServers, AnswerOnTheirThreadAndKeepAnObjectsIdentity) {
    Server server;
    ITestService *service = Made();
    ITestNumber *number = nullptr, *number_again = nullptr;
    IUnknown *identity = nullptr, *other_identity = nullptr;
    EXPECT_EQ(Ask(service, "thread"), server.thread);
    EXPECT_EQ(Ask(service, "much"), std::string(900000, 'm'));
    ASSERT_EQ(service->QueryInterface(IID_ITestNumber, reinterpret_cast<void **>(&number)), S_OK);
    EXPECT_EQ(number->Number(), 17);
    ASSERT_EQ(number->QueryInterface(IID_ITestNumber, reinterpret_cast<void **>(&number_again)), S_OK);
    EXPECT_EQ(number, number_again);
    EXPECT_EQ(service->QueryInterface(IID_IUnknown, reinterpret_cast<void **>(&identity)), S_OK);
    EXPECT_EQ(number->QueryInterface(IID_IUnknown, reinterpret_cast<void **>(&other_identity)), S_OK);
    EXPECT_EQ(identity, other_identity);
    EXPECT_EQ(Ask(service, "living"), "1");
    ITestService *second = Made();
    EXPECT_EQ(Ask(service, "living"), "2");
    EXPECT_EQ(second->Release(), 0u);
    Expect_Living(service, "1");

    for (const GUID &none : {IID_IClassFactory, IID_IMalloc}) {
        void *out = &out;
        EXPECT_EQ(service->QueryInterface(none, &out), E_NOINTERFACE);
        EXPECT_EQ(out, nullptr);
        EXPECT_EQ(Create(none, second), E_NOINTERFACE);
    }
    EXPECT_EQ(Result(service, "throw"), RPC_E_SERVERFAULT);
    EXPECT_EQ(Result(service, std::string(Largest_Message, 'x').c_str()), E_INVALIDARG);
    Expect_Living(service, "1");
    for (IUnknown *reference :
         std::initializer_list<IUnknown *>{number, number_again, identity, other_identity})
        reference->Release();
    EXPECT_EQ(Ask(service, "living"), "1") << "one reference is left";
    EXPECT_EQ(service->Release(), 0u);
    Sleep(50);
    EXPECT_EQ(server.Wait(), 0) << "nothing was left in it";
    EXPECT_EQ(Create(IID_ITestService, service), REGDB_E_CLASSNOTREG);
}

TEST_F(ComServers, EndWithAnErrorAtOnceWhereverTheyAreKilled) {
    auto server = std::make_unique<Server>();
    ITestService *const held = Made(), *const idle = Made(), *fresh = nullptr;
    IClassFactory *remote = nullptr;
    ASSERT_EQ(CoGetClassObject(CLSID_TestService, CLSCTX_LOCAL_SERVER, nullptr, IID_IClassFactory,
                               reinterpret_cast<void **>(&remote)),
              S_OK);
    EXPECT_EQ(Result(held, "die"), HRESULT_CALL_FAILED);
    EXPECT_EQ(Result(held, "living"), HRESULT_SERVER_UNAVAILABLE);
    EXPECT_EQ(server->Wait(), -SIGKILL);
    EXPECT_EQ(Result(idle, "living"), HRESULT_SERVER_UNAVAILABLE);
    ITestNumber *number = nullptr;
    EXPECT_EQ(idle->QueryInterface(IID_ITestNumber, reinterpret_cast<void **>(&number)),
              HRESULT_SERVER_UNAVAILABLE);
    void *out = nullptr;
    EXPECT_EQ(remote->CreateInstance(nullptr, IID_ITestService, &out), HRESULT_SERVER_UNAVAILABLE);
    EXPECT_EQ(Create(IID_ITestService, fresh), REGDB_E_CLASSNOTREG);

    Server again;
    EXPECT_EQ(Result(idle, "living"), HRESULT_SERVER_UNAVAILABLE) << "it is another object's server";
    ASSERT_EQ(remote->CreateInstance(nullptr, IID_ITestService, reinterpret_cast<void **>(&fresh)), S_OK);
    EXPECT_EQ(Ask(fresh, "living"), "1");
    for (IUnknown *reference : std::initializer_list<IUnknown *>{held, idle, fresh, remote})
        EXPECT_EQ(reference->Release(), 0u);
}

TEST_F(ComServers, TakeBackWhatClientsLeaveAndTakeNoRubbish) {
    Server server;
    ITestService *const service = Made();
    SecondProcess forgetful("forgetful_client"), killed("forgetful_client");
    EXPECT_EQ(forgetful.Hear() + killed.Hear(), "holdsholds");
    EXPECT_EQ(Ask(service, "living"), "3");
    killed.Kill();
    EXPECT_EQ(forgetful.Wait(), 0);
    Expect_Living(service, "1");

    // A frame of another shape, one too large, one out of turn, one that is never finished.
    const std::string magic("CKM1", 4), iid(16, '\0'), zero(4, '\0');
    const std::string too_large = magic + std::string("\3\0\0\0", 4) + iid + zero + zero + "\xFF\xFF\xFF\x7F";
    const std::string out_of_turn = magic + std::string("\3\0\0\0", 4) + iid + zero + zero + zero;
    std::vector<int> sockets;
    for (const std::string &rubbish : {std::string(100, 'r'), too_large, out_of_turn, magic}) {
        const int client = Connect_To(Class_Socket());
        ASSERT_GE(client, 0);
        EXPECT_EQ(send(client, rubbish.data(), rubbish.size(), 0), static_cast<ssize_t>(rubbish.size()));
        sockets.push_back(client);
    }
    char byte;
    for (const int turned_away : {0, 1}) EXPECT_LE(recv(sockets[turned_away], &byte, 1, 0), 0);
    EXPECT_EQ(Ask(service, "living"), "1") << "while one of them hangs";
    for (const int each : sockets) close(each);
    EXPECT_EQ(service->Release(), 0u);
}

constexpr uid_t Other = 65534;

// Of another user who can get at files as root can: 0 when the server lets go, 1 when it goes on.
int Wait_As_Another(int (*connect)(const std::filesystem::path &), const std::filesystem::path &path) {
    if (setresuid(0, Other, 0) != 0 || setfsuid(0) != static_cast<int>(Other)) return 2;
    pollfd end = {connect(path), POLLIN, 0};
    if (end.fd < 0) return 3;
    char byte;
    return poll(&end, 1, 5000) == 1 && read(end.fd, &byte, 1) <= 0 ? 0 : 1;
}

TEST_F(ComServers, HaveNoConnectionsWithOtherUsers) {
    if (geteuid() != 0) GTEST_SKIP() << "only root can be another user";
    Server server;
    const std::filesystem::path listed = Class_Socket();
    const pid_t another = fork();
    if (another == 0) _exit(Wait_As_Another(Connect_To, listed));
    int status = -1;
    waitpid(another, &status, 0);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(Made()->Release(), 0u) << "the server itself goes on";
    EXPECT_EQ(server.Wait(), 0);
}

TEST_F(ComServers, AreReachedFromTheirOwnProcessAndWhileTheyCallOut) {
    const DWORD cookie = Register();
    EXPECT_EQ(factory.count, 2u);
    ITestService *direct = Made();
    EXPECT_EQ(Ask(direct, "thread"), std::to_string(gettid()));
    EXPECT_EQ(direct->Release(), 0u) << "no proxy lies between";

    // Another thread's calls are made by this one, which waits for another server meanwhile.
    Server server;
    Register(CLSID_TestProxy);
    EXPECT_EQ(CoRevokeClassObject(cookie), S_OK);
    busy_elsewhere = Made();
    const std::string own = std::to_string(gettid());
    const DWORD begin = GetTickCount();
    std::thread client([&] {
        CoInitialize(nullptr);
        ITestService *service = nullptr;
        ASSERT_EQ(Create(IID_ITestService, service, CLSID_TestProxy), S_OK);
        EXPECT_EQ(Ask(service, "thread"), own);
        EXPECT_EQ(Result(service, "again"), RPC_E_CALL_REJECTED);
        EXPECT_LT(GetTickCount() - begin, 1000u);
        service->Release();
        CoUninitialize();
    });
    EXPECT_EQ(Result(busy_elsewhere, "sleep"), 5);
    client.join();
    EXPECT_EQ(busy_elsewhere->Release(), 0u);
    MSG message;
    for (int i = 0; i < 500 && living; ++i) PeekMessageA(&message, nullptr, 0, 0, PM_NOREMOVE), Sleep(1);
    EXPECT_EQ(living, 0);
    EXPECT_EQ(CoRevokeClassObject(cookie), CO_E_OBJNOTREG);
    EXPECT_EQ(factory.count, 2u);
    CoUninitialize();
    EXPECT_EQ(factory.count, 1u) << "with the thread's use of COM goes what it offers";
    CoInitialize(nullptr);
    EXPECT_EQ(Create(IID_ITestService, direct, CLSID_TestProxy), REGDB_E_CLASSNOTREG);
}

} // namespace
