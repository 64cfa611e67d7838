// The client side of the log, with companions that tell what they are asked, each time in a process of its
// own: what it was asked, and what the debugger heard, is the process's standard error.

#include <kelmara/foundation/new_delete.h>
#include <kelmara/shared_state/log.h>

#include <platform/kernel.h>

#include <tests/support/companion_test.h>

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

void *client = nullptr;
void (*while_initializing)() = nullptr;

void Hear(const char *text, void *) {
    std::fputs(text, stderr);
    if (while_initializing && std::strncmp(text, "Initialize", 10) == 0) while_initializing();
}

void Callback(unsigned long, long, char *, long, long, void *) {}

void Add_Client() {
    const long result = Add_Message_Client(3, Callback, reinterpret_cast<void *>(4), true, &client);
    std::fprintf(stderr, "add: %ld %p\n", result, client);
}

void Tell_Where() {
    std::fprintf(stderr, "in %s\n", std::filesystem::current_path().filename().c_str());
}

void Log_From_Here() {
    Std_Log_Entry("nested");
    Debug_Log_Entry("nested");
    Release_Object(nullptr);
    Add_Client();
}

void Log_From_A_Thread() {
    std::thread([] { Std_Log_Entry("from a thread"); }).join();
}

const std::map<std::string, void (*)()> verbs = {
    {"entry", [] { Std_Log_Entry("%s %d", "entry", 1); }},
    {"debug", [] { Debug_Log_Entry("fault %d", 2); }},
    {"nothing", [] { static_cast<void (*)(const char *, ...)>(Std_Log_Entry)(nullptr); }},
    {"broadcast", [] { Broadcast_Message(5, "data", 3); }},
    {"broadcast null", [] { Broadcast_Message(6, nullptr, 0); }},
    {"add", Add_Client},
    {"remove", [] { Remove_Message_Client(client); }},
    {"cleanup", Run_Message_Cleanup_Thread},
    {"where", Tell_Where},
    {"nested", [] { while_initializing = Log_From_Here; }},
    {"thread", [] { while_initializing = Log_From_A_Thread; }},
    {"switch", [] { std::ofstream(std::getenv("LOG_SWITCH")); }},
};

SECOND_PROCESS(logger) {
    Set_Debug_Output_Sink(Hear, nullptr);
    SetLastError(42);
    for (const std::string &verb : process.Arguments()) verbs.at(verb)();
    return static_cast<int>(GetLastError()); // which none of the calls changes
}

class Log : public CompanionTest {
  protected:
    void SetUp() override {
        CompanionTest::SetUp();
        unsetenv("LOG_COMPANION");
        setenv("LOG_SWITCH", machine.Path("drive_c/suite/logVars.txt").c_str(), 1);
        std::filesystem::create_directories(machine.Path("drive_c/suite/bin"));
        std::filesystem::create_directories(machine.Path("drive_c/home"));
        before_ = std::filesystem::current_path();
        std::filesystem::current_path(machine.Path("drive_c/home"));
        Write_Value("Root", "c:\\suite\\");
    }
    void TearDown() override {
        std::filesystem::current_path(before_);
        CompanionTest::TearDown();
    }
    void Install(const std::string &module) const {
        CompanionTest::Install("log_companion_" + module, "Log", "c:\\suite\\bin\\log.dll");
    }
    static std::string Told(const std::vector<std::string> &arguments) {
        const auto [code, said] = Run("logger", arguments);
        EXPECT_EQ(code, 42) << said;
        return said;
    }

  private:
    std::filesystem::path before_;
};

const std::string Begun = "loaded\nInitialize in C:\\suite\\bin\n";

TEST_F(Log, ForwardsToItsCompanionLoadedAtFirstNeed) {
    Install("whole");
    EXPECT_EQ(Told({"remove", "where"}), "in home\n") << "nothing was loaded";
    EXPECT_EQ(Told({"entry", "where", "nothing", "broadcast", "broadcast null", "add", "remove", "cleanup",
                    "debug", "switch", "debug"}),
              Begun + "Queue_Entry 8 0 0: entry 1\nin home\nQueue_Entry 3 5 1: dat\nQueue_Entry 0 6 1: \n"
                      "Get_Messages 3 1 0x4 1\nadd: 17 0x77\nStop_Messages 0x77\nRun_Cleanup_Thread\n"
                      "unloaded\n");
    EXPECT_EQ(Told({"debug"}), Begun + "Queue_Entry 58 0 0: <font color=red> <b>DEBUG MESSAGE:</b></font>"
                                       "&nbspfault 2\nfault 2\nunloaded\n")
        << "the switch is there when the companion is loaded";
}

TEST_F(Log, DoesWithoutACompanionThatIsNotWholeOrDoesNotWork) {
    const std::string not_added = "add: -1 (nil)\n", home = "in home\n";
    const std::vector<std::string> calls = {"entry", "broadcast", "add", "remove", "where"};
    EXPECT_EQ(Told(calls), not_added + home) << "none is named";
    for (const char *path : {"", "c:\\suite\\bin\\nowhere.dll", "nowhere.dll"}) {
        Write_Value("Log", path);
        EXPECT_EQ(Told(calls), not_added + home) << path;
    }
    Write_Value("Log", "c:\\" + std::string(253, 'p'));
    EXPECT_EQ(Told(calls), not_added + home) << "one character more than fits";
    const std::string one_load = "loaded\nunloaded\n";
    Install("without_initialize");
    EXPECT_EQ(Told(calls), one_load + one_load + one_load + not_added + home) << "tried anew";
    Install("without_queue_entry");
    EXPECT_EQ(Told({"entry", "where"}), Begun + "unloaded\n" + home);
    Install("whole");
    for (const char *answer : {"fail", "throw"}) {
        setenv("LOG_COMPANION", answer, 1);
        EXPECT_EQ(Told({"entry", "where"}), Begun + "unloaded\n" + home) << answer;
    }
    unsetenv("LOG_COMPANION");
    Install("without_messages");
    client = nullptr;
    EXPECT_EQ(Told({"add", "remove", "cleanup", "where"}), Begun + not_added + home + "unloaded\n");
}

TEST_F(Log, LeavesADirectoryThatHasNoWindowsPath) {
    Install("whole");
    const std::string folder = machine.Path("drive_c/\xE2\x98\xBA");
    std::filesystem::create_directories(folder);
    std::filesystem::current_path(folder);
    EXPECT_THAT(Told({"entry", "where"}), testing::HasSubstr("in \xE2\x98\xBA\n"));
}

TEST_F(Log, IsSwitchedToDebuggingByTheRootFolderAlone) {
    Install("whole");
    machine.Write("drive_c/suite/bin/logVars.txt", "");
    machine.Write("drive_c/suitelogVars.txt", "");
    EXPECT_EQ(Told({"debug"}), Begun + "unloaded\n");
    Write_Value("Root", "c:\\suite");
    EXPECT_THAT(Told({"debug"}), testing::HasSubstr("fault 2")) << "nothing is put between";
    TestKey key("Software\\Dunmerit Software\\KelMara", HKEY_LOCAL_MACHINE);
    RegDeleteValueA(key, "Root");
    EXPECT_EQ(Told({"debug"}), Begun + "unloaded\n");
}

// Tells how each text that it hears begins, how long it is, and whether a line feed ends it.
SECOND_PROCESS(long_winded) {
    Set_Debug_Output_Sink(
        [](const char *text, void *) {
            const std::string heard = text;
            if (heard.size() > 100)
                std::fprintf(stderr, "%.16s %zu %d\n", text, heard.size(), heard.back() == '\n');
        },
        nullptr);
    for (int length : {1024, 1025, 5000}) Std_Log_Entry("%s", std::string(length, 'x').c_str());
    for (int length : {205, 206, 2047, 2048, 5000}) Debug_Log_Entry("%s", std::string(length, 'y').c_str());
    return 0;
}

TEST_F(Log, CutsWhatIsTooLong) {
    Install("whole");
    machine.Write("drive_c/suite/logVars.txt", "");
    // The companion says "Queue_Entry SIZE 0 0: " in front and a line feed behind.
    const std::string y(16, 'y'), cut = "Queue_Entry 1025 1047 1\n", debug_cut = "Queue_Entry 256  277 1\n";
    EXPECT_EQ(Run("long_winded").second,
              cut + cut + cut + debug_cut + y + " 206 1\n" + debug_cut + y + " 207 1\n" + //
                  debug_cut + y + " 2048 1\n" + debug_cut + y + " 2048 1\n" +             //
                  debug_cut + y + " 2048 1\n");
}

SECOND_PROCESS(racers) {
    Set_Debug_Output_Sink(Hear, nullptr);
    std::atomic<int> ready{0};
    std::vector<std::jthread> threads;
    for (int i = 0; i < 8; ++i)
        threads.emplace_back([&] {
            for (++ready; ready < 8;) Sleep(0);
            Std_Log_Entry("raced");
        });
    return 0;
}

TEST_F(Log, IsLoadedOnceByThreadsThatComeTogether) {
    Install("whole");
    for (int round = 0; round < 5; ++round) {
        std::string expected = Begun;
        for (int i = 0; i < 8; ++i) expected += "Queue_Entry 6 0 0: raced\n";
        EXPECT_EQ(Run("racers").second, expected + "unloaded\n");
    }
}

TEST_F(Log, IsNotComeBackToNorWaitedForWithoutEndWhileItIsLoaded) {
    Install("whole");
    machine.Write("drive_c/suite/logVars.txt", "");
    const std::string entry = "Queue_Entry 8 0 0: entry 1\n";
    EXPECT_EQ(Told({"nested", "entry"}), Begun + "add: -1 (nil)\n" + entry + "unloaded\n");
    EXPECT_EQ(Told({"thread", "entry"}), Begun + entry + "unloaded\n");
}

void Log_At_The_Very_End(int, void *) {
    Std_Log_Entry("too late");
    Remove_Message_Client(nullptr);
}

// Registered before any library is initialised: it runs after the exit routines of all libraries.
void Register_Before_Libraries(int, char **, char **) {
    on_exit(Log_At_The_Very_End, nullptr);
}
[[gnu::section(".preinit_array"),
  gnu::used]] void (*const before_libraries)(int, char **, char **) = Register_Before_Libraries;

// The process ends while a thread is in the companion.
SECOND_PROCESS(leaver) {
    static std::atomic<bool> inside{false};
    Set_Debug_Output_Sink(
        [](const char *text, void *) {
            if (std::strncmp(text, "Queue", 5) == 0) inside = true, Sleep(300);
            std::fputs(text, stderr);
        },
        nullptr);
    std::thread([] { Std_Log_Entry("last words"); }).detach();
    while (!inside) Sleep(1);
    const DWORD start = GetTickCount();
    const pid_t forked = fork();
    if (forked == 0) close(STDERR_FILENO), std::exit(0);
    waitpid(forked, nullptr, 0);
    return GetTickCount() - start < 1500 ? 0 : 1; // whose threads are none of the forked one's
}

TEST_F(Log, GoesWithTheProcessWhenNobodyIsInIt) {
    Install("whole");
    EXPECT_EQ(Run("leaver"), Outcome(0, Begun + "Queue_Entry 11 0 0: last words\nunloaded\n"));
}

} // namespace
