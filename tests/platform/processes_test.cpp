#include <platform/user.h>

#include <tests/platform/started.h>
#include <tests/support/file_verbs.h>
#include <tests/support/second_process.h>

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <functional>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

constexpr DWORD Patience = 30000; // milliseconds

// Both handles of a started program, closed at the end.
struct Program {
    PROCESS_INFORMATION information = {};
    ~Program() { Close(); }
    void Close() {
        for (HANDLE *handle : {&information.hProcess, &information.hThread}) {
            EXPECT_TRUE(!*handle || CloseHandle(*handle));
            *handle = nullptr;
        }
    }
    DWORD Code() const {
        DWORD code = 12345;
        EXPECT_TRUE(GetExitCodeProcess(information.hProcess, &code)) << GetLastError();
        return code;
    }
    DWORD End() const {
        EXPECT_EQ(WaitForSingleObject(information.hProcess, Patience), WAIT_OBJECT_0);
        return Code();
    }
};

class Processes : public FileTest {
  protected:
    // 0, or the last error. Null texts are allowed.
    static long Start(Program &program, const char *path, const char *line, const char *directory = nullptr,
                      void *environment = nullptr) {
        std::string writable = line ? line : "";
        return Error_Of(
            ::Start(program.information, line ? writable.data() : nullptr, path, directory, environment));
    }
    static long Start_Line(const std::string &line) {
        Program program;
        return Start(program, nullptr, line.c_str());
    }
    // This program's own path, in quotes, and how it begins a role.
    static std::string In_Role(const std::string &role) {
        char path[MAX_PATH];
        GetModuleFileNameA(nullptr, path, sizeof path);
        return std::string("\"") + path + "\" --second-process " + role + " ";
    }
    // A program on the machine that exits with `code`.
    void Install(const std::string &relative, int code) const {
        const std::string path = On(relative);
        std::filesystem::create_directories(std::filesystem::path(path).parent_path());
        std::filesystem::copy_file(code == 0 ? "/bin/true" : "/bin/false", path);
    }
    // The exit code of what the line starts, or minus the last error.
    static long Outcome(const std::string &line) {
        Program program;
        const long error = Start(program, nullptr, line.c_str());
        return error == 0 ? static_cast<long>(program.End()) : -error;
    }
};

bool Waits_Until(const std::function<bool()> &is_so) {
    for (int i = 0; i < 3000 && !is_so(); ++i) usleep(10000);
    return is_so();
}

bool Is_In_The_Hosts_List(DWORD id) {
    return access(("/proc/" + std::to_string(id)).c_str(), F_OK) == 0;
}

// Writes its words to the file that the first of them names, with the current directory, an environment
// variable and the descriptors that it found open.
SECOND_PROCESS(witness) {
    std::string seen;
    for (const std::string &word : process.Arguments()) seen += "<" + word + ">";
    char directory[MAX_PATH] = "?";
    GetCurrentDirectoryA(sizeof directory, directory);
    const char *variable = std::getenv("WITNESS");
    seen += std::string(" ") + directory + " " + (variable ? variable : "-") + " ";
    const long descriptors = fcntl(100, F_GETFD);
    struct sigaction action;
    sigaction(SIGUSR1, nullptr, &action);
    seen += std::to_string(descriptors) + (action.sa_handler == SIG_DFL ? " default" : " handled");
    FILE *out = Machine_Open_Stream(process.Arguments().at(0).c_str(), "wb");
    if (!out) return 1;
    fputs(seen.c_str(), out);
    fclose(out);
    return 7;
}

TEST_F(Processes, FindTheirWordsFolderAndEnvironment) {
    std::filesystem::create_directories(On("drive_c/Work Folder"));
    signal(SIGUSR1, SIG_IGN);
    dup2(STDERR_FILENO, 100);
    setenv("WITNESS", "mine", 1);
    Program program;
    const std::string line =
        In_Role("witness") +
        "c:\\seen \"a b\"  c\\d \"e\\\\\" \\\"f\\\" \"\" g\"h i\"j \"k\"\"l\" \\\\\\\"m\tn";
    ASSERT_EQ(Start(program, nullptr, line.c_str(), "C:\\WORK folder\\"), 0);
    EXPECT_EQ(program.End(), 7u);
    EXPECT_EQ(machine.Read("drive_c/seen"), "<c:\\seen><a b><c\\d><e\\><\"f\"><><gh ij><k\"l><\\\"m><n>"
                                            " C:\\Work Folder mine -1 default");
    EXPECT_EQ(WaitForSingleObject(program.information.hThread, 0), WAIT_OBJECT_0);
    program.Close();

    char block[] = "WITNESS=other\0KELMARA_MACHINE=/nowhere\0";
    ASSERT_EQ(Start(program, nullptr, (In_Role("witness") + "seen2").c_str(), nullptr, block), 0);
    EXPECT_EQ(program.End(), 7u) << "on this machine, whatever the block says";
    EXPECT_EQ(machine.Read("drive_c/seen2"), "<seen2> C:\\ other -1 default");
    close(100);
    signal(SIGUSR1, SIG_DFL);
    unsetenv("WITNESS");
}

TEST_F(Processes, AreFoundAsWindowsFindsThem) {
    Install("drive_c/Program Files/Suite/Tool.exe", 1);
    Install("drive_c/program.exe", 0);
    Install("drive_c/windows/helper.exe", 1);
    Install("drive_c/windows/SYSTEM32/deep.exe", 1);
    Install("drive_c/windows/both.exe", 1);
    Install("drive_c/both.exe", 0);
    Install("drive_c/odd.ext", 1);
    std::filesystem::create_directories(On("drive_c/windows/folder.exe"));
    const ByOutcome<long> rows = {
        {1,
         {"\"c:\\PROGRAM files\\suite\\tool.EXE\" x", "\"c:\\program files\\suite\\tool\"",
          "C:\\\\windows/helper", "helper x y", "  Helper.EXE", "deep", "windows\\both", "odd.ext",
          "z:\\bin\\false"}},
        // The current directory's before the Windows folder's, the host's by its PATH; c:\program.exe comes
        // first.
        {0, {"both", "true", "true.", "c:\\program files\\suite\\tool x"}},
        {-ERROR_FILE_NOT_FOUND,
         {"none", "\"none x\" true", "odd", "both.", "folder", "c:\\", "", "\"\"", "\"", "   "}},
        {-ERROR_PATH_NOT_FOUND, {"c:\\none\\true", "q:\\true"}}};
    for (const auto &[outcome, lines] : rows) {
        for (const auto &line : lines) EXPECT_EQ(Outcome(line), outcome) << line;
    }
    std::filesystem::remove(On("drive_c/program.exe"));
    EXPECT_EQ(Outcome("c:\\program files\\suite\\tool x"), 1);
    EXPECT_EQ(Outcome("c:\\program files\\suite\\none x"), -ERROR_FILE_NOT_FOUND);

    Program program;
    EXPECT_EQ(Start(program, "c:\\program files\\suite\\tool.exe", nullptr), 0);
    EXPECT_EQ(program.End(), 1u);
    Program other;
    EXPECT_EQ(Start(other, "c:\\both", "both"), ERROR_FILE_NOT_FOUND) << "a path is what it is";
}

TEST_F(Processes, ThatCannotBeStartedAreNot) {
    machine.Write("drive_c/text.exe", "no program");
    chmod(On("drive_c/text.exe").c_str(), 0700);
    machine.Write("drive_c/plain.exe", "x");
    const unsigned long before = Open_Handle_Count();
    EXPECT_EQ(Start_Line("text"), ERROR_BAD_EXE_FORMAT);
    EXPECT_EQ(Start_Line("plain"), ERROR_ACCESS_DENIED) << "nothing that the host runs";
    EXPECT_EQ(Start_Line("true " + std::string(32763, 'x')), ERROR_FILENAME_EXCED_RANGE);
    EXPECT_EQ(Start_Line(std::string(300, 'x')), ERROR_FILENAME_EXCED_RANGE);
    Program program;
    EXPECT_EQ(Start(program, nullptr, "true", "c:\\none"), ERROR_DIRECTORY);
    EXPECT_EQ(Start(program, nullptr, nullptr), ERROR_INVALID_PARAMETER);
    char line[] = "true";
    PROCESS_INFORMATION information = {};
    for (const DWORD flags : {0x10u, 0x4u})
        EXPECT_FALSE(::Start(information, line, nullptr, nullptr, nullptr, flags));
    EXPECT_FALSE(information.hProcess || program.information.hProcess);
    EXPECT_EQ(Open_Handle_Count(), before);
}

TEST_F(Processes, LeaveNothingBehindThoughNobodyWaits) {
    std::vector<DWORD> ids;
    for (int i = 0; i < 20; ++i) {
        Program program;
        ASSERT_EQ(Start(program, nullptr, i % 2 ? "true" : "sleep 0.1"), 0);
        ids.push_back(program.information.dwProcessId);
    }
    for (const DWORD id : ids) EXPECT_TRUE(Waits_Until([&] { return !Is_In_The_Hosts_List(id); })) << id;
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD);
}

TEST_F(Processes, LeaveNothingBehindInAForkedProgramEither) {
    ASSERT_EQ(Start_Line("true"), 0);
    const pid_t forked = fork();
    if (forked == 0) {
        Program program;
        const bool started = Start(program, nullptr, "true") == 0;
        const DWORD id = program.information.dwProcessId;
        program.Close();
        _exit(started && Waits_Until([&] { return !Is_In_The_Hosts_List(id); }) ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(waitpid(forked, &status, 0), forked);
    EXPECT_EQ(status, 0);
}

// Ends in the way that it is told.
SECOND_PROCESS(finisher) {
    const std::string way = process.Arguments().at(0);
    const rlimit no_core = {0, 0};
    setrlimit(RLIMIT_CORE, &no_core);
    if (way == "exit") ExitProcess(0x1FE);
    if (way == "self") TerminateProcess(GetCurrentProcess(), 9);
    if (way == "break") DebugBreak();
    if (way == "abort") {
        signal(SIGABRT, SIG_DFL);
        std::abort();
    }
    if (way == "fault") {
        signal(SIGSEGV, SIG_DFL);
        raise(SIGSEGV);
    }
    for (;;) pause();
}

TEST_F(Processes, EndWithTheCodesOfWindows) {
    for (const auto &[way, code] : {std::pair{"exit", 0xFEu},
                                    {"self", 9u},
                                    {"break", 0x80000003u},
                                    {"abort", 3u},
                                    {"fault", 0xC0000005u}}) {
        Program program;
        ASSERT_EQ(Start(program, nullptr, (In_Role("finisher") + way).c_str()), 0);
        EXPECT_EQ(program.End(), code) << way;
    }
    Program program;
    ASSERT_EQ(Start(program, nullptr, (In_Role("finisher") + "never").c_str()), 0);
    const HANDLE process = program.information.hProcess;
    EXPECT_EQ(program.Code(), STILL_ACTIVE);
    const DWORD id = program.information.dwProcessId;
    const HANDLE again = OpenProcess(PROCESS_ALL_ACCESS, TRUE, id);
    std::thread killer([&] {
        Sleep(50);
        EXPECT_TRUE(TerminateProcess(again, 0xFFFFFFFF));
    });
    EXPECT_EQ(WaitForSingleObject(process, INFINITE), WAIT_OBJECT_0);
    killer.join();
    EXPECT_EQ(program.Code(), 0xFFFFFFFFu);
    EXPECT_EQ(Error_Of(TerminateProcess(process, 1)), ERROR_ACCESS_DENIED);
    EXPECT_FALSE(Is_In_The_Hosts_List(id)) << "who has waited finds nothing left";
    EXPECT_TRUE(CloseHandle(again));
    EXPECT_EQ(OpenProcess(PROCESS_ALL_ACCESS, FALSE, id), nullptr);
}

TEST_F(Processes, OfOthersAreOpenedByTheirNumber) {
    auto other = std::make_unique<SecondProcess>("finisher", std::vector<std::string>{"never"});
    const auto id = static_cast<DWORD>(other->Id());
    const HANDLE process = OpenProcess(PROCESS_ALL_ACCESS, TRUE, id);
    ASSERT_TRUE(process);
    DWORD code = 0;
    EXPECT_TRUE(GetExitCodeProcess(process, &code));
    EXPECT_EQ(code, STILL_ACTIVE);
    EXPECT_TRUE(TerminateProcess(process, 5));
    EXPECT_EQ(WaitForSingleObject(process, Patience), WAIT_OBJECT_0);
    EXPECT_EQ(Error_Of(GetExitCodeProcess(process, &code)), ERROR_ACCESS_DENIED);
    EXPECT_EQ(OpenProcess(0, FALSE, id), nullptr) << "dead, though its parent has not looked";
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
    EXPECT_EQ(other->Wait(), -SIGKILL) << "which finds it where it was";
    EXPECT_TRUE(CloseHandle(process));
    EXPECT_TRUE(GetExitCodeProcess(GetCurrentProcess(), &code));
    EXPECT_EQ(code, STILL_ACTIVE);
}

// Starts programs where its own children are none of its business.
SECOND_PROCESS(careless) {
    signal(SIGCHLD, SIG_IGN);
    for (int i = 0; i < 20; ++i) {
        char line[] = "true";
        PROCESS_INFORMATION information;
        if (!Start(information, line)) return 2;
        DWORD code = 0;
        if (WaitForSingleObject(information.hProcess, Patience) != WAIT_OBJECT_0) return 3;
        if (!GetExitCodeProcess(information.hProcess, &code) || (code != 0xC0000001 && code != 0)) return 4;
    }
    return 0;
}

TEST_F(Processes, CanBeStartedByAProgramThatIgnoresItsChildren) {
    SecondProcess careless("careless");
    EXPECT_EQ(careless.Wait(), 0);
}

} // namespace
