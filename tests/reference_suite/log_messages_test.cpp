#include <tests/reference_suite/log_companion_fixture.h>

#include <reference_suite/companions/log/message_board.h>

#include <tests/support/failing_new.h>
#include <tests/support/second_process.h>
#include <tests/support/sleepers.h>

#include <atomic>
#include <filesystem>
#include <functional>
#include <mutex>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace {

constexpr DWORD Long_Enough = 20000;

template <class Condition>
bool Comes_True(Condition condition, DWORD milliseconds = Long_Enough) {
    const DWORD start = GetTickCount();
    while (!condition()) {
        if (GetTickCount() - start > milliseconds) return false;
        Sleep(1);
    }
    return true;
}

/// Registered for the length of a scope; keeps what it hears as "sender code size lost data".
class Client {
  public:
    explicit Client(const LogCompanion &companion, long code = 0, bool own_too = true,
                    std::function<void()> action = {})
        : companion_(companion), action_(std::move(action)) {
        EXPECT_EQ(companion.get_messages(code, Hear, this, own_too, &handle), 0);
    }
    ~Client() { companion_.stop_messages(handle); }
    Client(const Client &) = delete;
    Client &operator=(const Client &) = delete;

    std::vector<std::string> Heard() {
        const std::lock_guard guard(lock_);
        return heard_;
    }
    std::vector<std::string> Heard(std::size_t count) {
        EXPECT_TRUE(Comes_True([&] { return Heard().size() >= count; }));
        return Heard();
    }

    void *handle = nullptr;
    std::atomic<long> calls{0}, lost{0};

  private:
    static void Hear(unsigned long sender, long code, char *data, long size, long lost, void *context) {
        auto &client = *static_cast<Client *>(context);
        const bool own = sender == GetCurrentProcessId();
        std::string heard = std::string(own ? "own " : "other ") + std::to_string(code) + " " +
                            std::to_string(size) + " " + std::to_string(lost) + " " +
                            std::string(data).substr(0, 20);
        data[size] = 'x'; // the client's to change
        client.lost += lost;
        {
            const std::lock_guard guard(client.lock_);
            client.heard_.push_back(heard);
        }
        ++client.calls;
        if (client.action_) client.action_();
    }

    const LogCompanion &companion_;
    const std::function<void()> action_;
    std::mutex lock_;
    std::vector<std::string> heard_;
};

/// The places that are taken on the board.
int Places_Taken() {
    const OwnedHandle mapping(CreateFileMappingA(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0,
                                                 sizeof(BoardState), "KELMARA-LOG-MESSAGES-1"));
    const auto *state = static_cast<const BoardState *>(MapViewOfFile(mapping.get(), FILE_MAP_READ, 0, 0, 0));
    const auto taken = Most_Readers - std::ranges::count(state->readers, 0u);
    UnmapViewOfFile(state);
    return static_cast<int>(taken);
}

long Threads() {
    const std::filesystem::directory_iterator tasks("/proc/self/task");
    return std::distance(begin(tasks), end(tasks));
}

class LogMessages : public LogCompanionTest {
  protected:
    void SetUp() override {
        LogCompanionTest::SetUp();
        companion = std::make_unique<LogCompanion>();
    }
    void TearDown() override {
        companion.reset();
        LogCompanionTest::TearDown();
    }
    std::unique_ptr<LogCompanion> companion;
};

TEST_F(LogMessages, TellTheirSenderCodeBytesAndWhatWasLost) {
    Client all(*companion), fives(*companion, 5), others(*companion, 0, false);
    companion->Send(5, "five");
    companion->Send(-6, "");
    companion->Send(5, std::string(Longest_Message + 1, 'l'));
    companion->queue_entry(nullptr, 7, 8, 2);
    companion->Send(5, std::string(Longest_Message, 'w'));
    const std::string longest = "own 5 65536 0 wwwwwwwwwwwwwwwwwwww";
    EXPECT_EQ(all.Heard(4),
              (std::vector<std::string>{"own 5 4 0 five", "own -6 0 0 ", "own 8 0 1 ", longest}));
    EXPECT_EQ(fives.Heard(2),
              (std::vector<std::string>{"own 5 4 0 five", "own 5 65536 1 wwwwwwwwwwwwwwwwwwww"}));
    EXPECT_EQ(others.Heard(), std::vector<std::string>{});
    void *untouched = this;
    EXPECT_EQ(companion->get_messages(0, nullptr, nullptr, false, &untouched), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(untouched, this);
    EXPECT_EQ(std::filesystem::exists(Path()), false) << "messages are no entries";
}

SECOND_PROCESS(message_client) {
    const LogCompanion companion;
    std::vector<std::unique_ptr<Client>> clients;
    const int count = std::stoi(process.Arguments().at(0));
    for (int i = 0; i < count; ++i) clients.push_back(std::make_unique<Client>(companion));
    process.Tell("registered");
    for (std::string wanted; !(wanted = process.Hear()).empty();)
        process.Tell(clients.back()->Heard(std::stoul(wanted)).back());
    return 0;
}

TEST_F(LogMessages, GoToTheClientsOfAllProcesses) {
    Client here(*companion, 0, false);
    SecondProcess first("message_client", {"1"}), second("message_client", {"1"});
    for (SecondProcess *process : {&first, &second}) EXPECT_EQ(process->Hear(), "registered");
    for (int i = 1; i <= 20; ++i) {
        companion->Send(i, "to all");
        for (SecondProcess *process : {&first, &second}) {
            process->Tell(std::to_string(i));
            EXPECT_EQ(process->Hear(), "other " + std::to_string(i) + " 6 0 to all");
        }
    }
    EXPECT_EQ(here.calls, 0) << "its own process is not meant";
    first.Kill();
    first.Wait();
    EXPECT_EQ(second.Wait(), 0) << second.Errors();
    EXPECT_EQ(Places_Taken(), 2);
    companion->run_cleanup();
    EXPECT_EQ(Places_Taken(), 1) << "the living keep theirs";
}

TEST_F(LogMessages, LoseTheOldestWithSlowClientsAloneAndSayHowMany) {
    std::atomic<bool> go_on{false};
    Client slow(*companion, 0, true, [&] { Comes_True([&] { return go_on.load(); }); });
    Client quick(*companion);
    constexpr long Count = 400;
    for (long i = 1; i <= Count; ++i) {
        companion->Send(i, std::string(1000, 'm'));
        ASSERT_TRUE(Comes_True([&] { return quick.calls == i; }));
    }
    EXPECT_EQ(quick.lost, 0);
    EXPECT_EQ(slow.calls, 1);
    go_on = true;
    EXPECT_TRUE(Comes_True([&] { return slow.calls + slow.lost == Count; }))
        << slow.calls << " " << slow.lost;
    EXPECT_EQ(slow.calls, 1 + static_cast<long>(Board_Room / (1000 + sizeof(MessageHead))))
        << "what the bound holds";
    EXPECT_TRUE(slow.Heard().back().starts_with("own 400 "));
}

TEST_F(LogMessages, EndWithStopWhoeverCallsIt) {
    const long threads = Threads();
    { // the client itself
        std::function<void()> stop;
        Client client(*companion, 0, true, [&] { stop(); });
        stop = [&] { companion->stop_messages(client.handle); };
        for (int i = 0; i < 5; ++i) companion->Send(1, "stop");
        EXPECT_TRUE(Comes_True([] { return Places_Taken() == 0; })) << "free for others at once";
        companion->run_cleanup();
        EXPECT_EQ(Threads(), threads);
        Client later(*companion);
        companion->Send(2, "on");
        later.Heard(1);
        EXPECT_EQ(client.calls, 1);
    }
    { // two other threads, while a message is handed over
        std::atomic<bool> inside{false}, stopped{false}, late{false};
        Client client(*companion, 0, true, [&] {
            inside = true;
            Sleep(50);
            late = late || stopped;
        });
        for (int i = 0; i < 5; ++i) companion->Send(1, "stop");
        EXPECT_TRUE(Comes_True([&] { return inside.load(); }));
        const auto stop = [&] { companion->stop_messages(client.handle), stopped = true; };
        std::jthread one(stop), other(stop);
        one.join();
        other.join();
        EXPECT_EQ(client.calls, 1);
        EXPECT_FALSE(late);
    }
    { // two clients each other
        std::function<void()> stop_second, stop_first;
        Client first(*companion, 0, true, [&] { stop_second(); }),
            second(*companion, 0, true, [&] { stop_first(); });
        std::atomic<int> inside{0};
        const auto meet = [&] { ++inside, Comes_True([&] { return inside == 2; }); };
        stop_second = [&] { meet(), companion->stop_messages(second.handle); };
        stop_first = [&] { meet(), companion->stop_messages(first.handle); };
        companion->Send(1, "stop each other");
        companion->Send(2, "nobody hears it");
        EXPECT_TRUE(Comes_True([&] { return inside == 2; }));
    }
    EXPECT_EQ(Places_Taken(), 0);
}

TEST_F(LogMessages, HaveAsManyClientsAsThereArePlacesForTheLiving) {
    {
        SecondProcess many("message_client", {std::to_string(Most_Readers)});
        EXPECT_EQ(many.Hear(), "registered");
        void *untouched = this;
        const auto none = [](unsigned long, long, char *, long, long, void *) {};
        EXPECT_EQ(companion->get_messages(0, none, nullptr, true, &untouched), ERROR_TOO_MANY_OPEN_FILES);
        EXPECT_EQ(untouched, this);
    }
    EXPECT_EQ(Places_Taken(), Most_Readers) << "killed";
    Client client(*companion);
    companion->Send(1, "one");
    client.Heard(1);
    EXPECT_EQ(Places_Taken(), 1);
}

SECOND_PROCESS(tireless_sender) {
    const LogCompanion companion;
    process.Tell("ready");
    for (int i = 0;; ++i)
        companion.Send(i % 26,
                       std::string(static_cast<std::size_t>(i * 37 % 5000), static_cast<char>('a' + i % 26)));
}

TEST_F(LogMessages, ArriveWholeWhenSendersAreKilledAtAnyMoment) {
    static std::atomic<long> torn, heard;
    torn = heard = 0;
    void *client = nullptr;
    const auto check = [](unsigned long, long code, char *data, long size, long, void *) {
        ++heard;
        for (long i = 0; i < size; ++i) torn += data[i] != 'a' + code;
    };
    ASSERT_EQ(companion->get_messages(0, check, nullptr, false, &client), 0);
    for (int round = 0; round < 8; ++round) {
        SecondProcess killed("tireless_sender"), other("tireless_sender");
        EXPECT_EQ(killed.Hear(), "ready");
        EXPECT_EQ(other.Hear(), "ready");
        usleep(static_cast<useconds_t>(500 + 137 * round));
    }
    companion->stop_messages(client);
    EXPECT_EQ(torn, 0);
    EXPECT_GT(heard, 100);
    Client after(*companion);
    companion->Send(7, "still there");
    EXPECT_EQ(after.Heard(1).front(), "own 7 11 0 still there");
}

TEST_F(LogMessages, EndTheirThreadsWhenTheCompanionGoes) {
    const long threads = Threads();
    static std::atomic<bool> there, go_on, back, goes;
    static std::atomic<long> calls, late;
    static decltype(&Get_Messages) get_messages;
    there = go_on = back = goes = false;
    calls = late = 0;
    void *client = nullptr;
    const auto count = [](unsigned long, long, char *, long, long, void *) { ++calls; };
    const auto stay = [](unsigned long, long, char *, long, long, void *) {
        there = true;
        Comes_True([] { return goes.load(); });
        const auto none = [](unsigned long, long, char *, long, long, void *) {};
        void *other = nullptr;
        Comes_True([&] { return (late = get_messages(0, none, nullptr, true, &other)) != 0; });
        Comes_True([] { return go_on.load(); });
        back = true;
    };
    ASSERT_EQ(companion->get_messages(1, count, nullptr, true, &client), 0);
    ASSERT_EQ(companion->get_messages(2, count, nullptr, true, &client), 0);
    companion.reset();
    EXPECT_EQ(Threads(), threads);
    companion = std::make_unique<LogCompanion>();
    EXPECT_EQ(Places_Taken(), 0);
    ASSERT_EQ(companion->get_messages(0, stay, nullptr, true, &client), 0);
    get_messages = companion->get_messages;
    companion->Send(1, "stay");
    EXPECT_TRUE(Comes_True([] { return there.load(); }));
    goes = true;
    companion.reset(); // does not wait for ever
    EXPECT_EQ(late, ERROR_INVALID_FUNCTION) << "no new client while it goes";
    go_on = true;
    EXPECT_TRUE(Comes_True([&] { return back && Threads() == threads; })) << "and its code was still there";
    EXPECT_EQ(calls, 0);
    companion = std::make_unique<LogCompanion>();
    EXPECT_TRUE(Comes_True([] { return Places_Taken() == 0; }));
}

SECOND_PROCESS(forking_client) {
    const LogCompanion companion;
    Client client(companion);
    companion.Send(1, "one");
    client.Heard(1); // its thread no longer starts, with locks of the host's that a fork would keep
    const DWORD start = GetTickCount();
    const pid_t forked = fork();
    if (forked == 0) {
        companion.stop_messages(client.handle); // waits for no thread that is not here
        void *fresh = nullptr;
        const auto nothing = [](unsigned long, long, char *, long, long, void *) {};
        const long refused = companion.get_messages(0, nothing, nullptr, true, &fresh);
        if (refused != ERROR_INVALID_FUNCTION) std::abort();
        std::exit(0);
    }
    int status = -1;
    waitpid(forked, &status, 0);
    process.Tell(WIFEXITED(status) && GetTickCount() - start < 1500 ? "at once" : "late");
    companion.Send(2, "two");
    client.Heard(2);
    return 0;
}

TEST_F(LogMessages, AreNoConcernOfAForkedProcess) {
    SecondProcess forking("forking_client");
    EXPECT_EQ(forking.Hear(), "at once");
    EXPECT_EQ(forking.Wait(), 0) << forking.Errors();
}

TEST_F(LogMessages, SurviveLackOfMemoryAtEachPlace) {
    void *client = nullptr;
    const std::string path = "z:" + Suite_Module("kmlog.so");
    const auto none = [](unsigned long, long, char *, long, long, void *) {};
    const std::pair<const char *, std::function<bool()>> calls[] = {
        {"a whole life",
         [&] {
             companion.reset();
             const HMODULE module = LoadLibraryA(path.c_str());
             const auto initialize = reinterpret_cast<long (*)()>(GetProcAddress(module, "Initialize"));
             const bool done = initialize && initialize() == 0;
             if (module) FreeLibrary(module);
             const unsigned long left = std::exchange(allocations_until_failure, 0);
             companion = std::make_unique<LogCompanion>();
             allocations_until_failure = left;
             return done;
         }},
        {"client",
         [&] {
             client = nullptr;
             const bool done = companion->get_messages(0, none, nullptr, true, &client) == 0;
             EXPECT_EQ(done, client != nullptr);
             companion->stop_messages(client);
             return done;
         }},
        {"entry and message",
         [&] {
             companion->queue_entry(const_cast<char *>("<b>entry</b>"), 12, 0, 0);
             companion->queue_entry(const_cast<char *>("message"), 7, 1, 1);
             companion->run_cleanup();
             return true;
         }},
    };
    for (const auto &[name, call] : calls) {
        ASSERT_TRUE(call()) << name;
        const unsigned long handles = Open_Handle_Count();
        for (unsigned long at = 1; at < 1000; ++at) {
            allocations_until_failure = at;
            call();
            const bool reached = allocations_until_failure == 0;
            allocations_until_failure = 0;
            if (!reached) break;
        }
        EXPECT_EQ(Open_Handle_Count(), handles) << name;
        EXPECT_TRUE(call()) << name << " no longer works";
        EXPECT_EQ(Places_Taken(), 0) << name;
    }
}

} // namespace
