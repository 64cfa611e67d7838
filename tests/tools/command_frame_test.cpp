// What all commands have in common: which exit code, what stands on standard error, and that files are
// replaced whole or not at all.

#include <tests/support/test_machine.h>
#include <tests/tools/command_run.h>

#include <tools/failure.h>
#include <tools/files.h>
#include <tools/machine_choice.h>
#include <tools/output.h>
#include <tools/progress.h>

#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using tools::Exit_Unusable;
using CommandFrame = MachineTest;

std::string Failure_Of(const std::function<void()> &work) {
    try {
        work();
    } catch (const tools::Failure &failure) {
        EXPECT_EQ(failure.Code(), Exit_Unusable);
        return failure.what();
    }
    return "";
}

unsigned long Files_In(const std::string &folder) {
    return static_cast<unsigned long>(
        std::distance(std::filesystem::directory_iterator(folder), std::filesystem::directory_iterator()));
}

TEST_F(CommandFrame, UsageDecidesTheExitCode) {
    EXPECT_EQ(CommandRun({"--help"}).exit_code, 0);
    EXPECT_EQ(CommandRun({"--version"}).output, "kelmara 0.1.0\n");
    for (const std::vector<std::string> &arguments :
         std::vector<std::vector<std::string>>{{}, {"nonsense"}, {"--nonsense"}}) {
        const CommandRun run(arguments);
        EXPECT_EQ(run.exit_code, Exit_Unusable);
        EXPECT_FALSE(run.errors.empty());
        EXPECT_TRUE(run.output.empty());
    }
}

TEST_F(CommandFrame, OutputThatCannotBeWrittenIsAFailure) {
    for (const char *output : {"--help", "--version", "manual"}) {
        RunningCommand full({output}, "/dev/null", "/dev/full", machine.Path("errors"));
        EXPECT_EQ(full.Wait(), Exit_Unusable) << output;
        EXPECT_NE(machine.Read("errors").find("standard output: "), std::string::npos) << output;
    }
    EXPECT_EQ(CommandRun({"ltx", "check", machine.Path("\33[2J")}).errors.find('\33'), std::string::npos);
}

TEST_F(CommandFrame, FilesAreReplacedWholeAndKeepTheirPermissionsAndLinks) {
    std::filesystem::create_directories(machine.Path("drive_c/texts"));
    const std::string file = machine.Path("drive_c/texts/a.txt");
    tools::Replace_File("c:\\texts\\a.txt", std::string("one\0two", 7));
    EXPECT_EQ(tools::Read_File(file), std::string("one\0two", 7));

    ASSERT_EQ(chmod(file.c_str(), 0640), 0);
    std::filesystem::create_symlink("a.txt", machine.Path("drive_c/texts/link"));
    tools::Replace_File(machine.Path("drive_c/texts/link"), "three");
    EXPECT_EQ(tools::Read_File(file), "three");
    EXPECT_TRUE(std::filesystem::is_symlink(machine.Path("drive_c/texts/link")));
    struct stat now = {};
    ASSERT_EQ(stat(file.c_str(), &now), 0);
    EXPECT_EQ(now.st_mode & 0777, 0640u);
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    tools::Replace_File("/dev/fd/" + std::to_string(ends[1]), "four");
    char through[8] = "";
    EXPECT_EQ(read(ends[0], through, sizeof through), 4) << "a pipe's link leads to no name";
    close(ends[0]), close(ends[1]);
    const int nameless = open(machine.Folder().c_str(), O_TMPFILE | O_RDWR, 0600);
    if (nameless >= 0) {
        tools::Replace_File("/dev/fd/" + std::to_string(nameless), "four");
        EXPECT_EQ(pread(nameless, through, sizeof through, 0), 4) << "a file that was deleted";
        close(nameless);
    }
    std::filesystem::create_symlink("b.txt", machine.Path("drive_c/texts/dangling"));
    std::filesystem::create_symlink(machine.Path("drive_c/texts/dangling"),
                                    machine.Path("drive_c/texts/far"));
    tools::Replace_File(machine.Path("drive_c/texts/far"), "five");
    EXPECT_EQ(tools::Read_File(machine.Path("drive_c/texts/b.txt")), "five");
    EXPECT_TRUE(std::filesystem::is_symlink(machine.Path("drive_c/texts/far")));
    tools::Replace_File(file, "");
    EXPECT_EQ(tools::Read_File("c:\\texts\\A.TXT"), "");
    EXPECT_EQ(Files_In(machine.Path("drive_c/texts")), 5u) << "a working file was left";

    const std::string pipe = machine.Path("drive_c/texts/pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    const int held = open(pipe.c_str(), O_RDWR);
    tools::Replace_File(pipe, "four");
    char passed[5] = {};
    EXPECT_EQ(read(held, passed, 4), 4);
    close(held);
    EXPECT_STREQ(passed, "four");
    EXPECT_TRUE(std::filesystem::is_fifo(pipe));
}

TEST_F(CommandFrame, WhatCannotBeReadOrWrittenIsNamed) {
    std::filesystem::create_directories(machine.Path("drive_c/texts"));
    const std::string folder = machine.Path("drive_c/texts");
    for (const std::string &name : {folder, folder + "/missing/a.txt", std::string("q:\\a.txt")}) {
        EXPECT_TRUE(Failure_Of([&] { tools::Replace_File(name, "x"); }).starts_with(name)) << name;
        EXPECT_TRUE(Failure_Of([&] { tools::Read_File(name); }).starts_with(name)) << name;
    }
    EXPECT_NE(Failure_Of([&] { tools::Machine_Path(folder + "/\xE2\x82\xAC\xE4\xB8\xAD"); }), "");
    EXPECT_NE(Failure_Of([&] { tools::Machine_Path("/" + std::string(300, 'a')); }), "");
    EXPECT_EQ(Files_In(folder), 0u);
}

TEST_F(CommandFrame, PassingMachinesOfKilledCommandsAreTakenAwayAndNoOthers) {
    const std::string place = machine.Path("places");
    std::filesystem::create_directories(place + "/kelmara-passing-killed");
    machine.Write("places/somebody's", "");
    setenv("TMPDIR", place.c_str(), 1);
    {
        const tools::PassingMachine in_use;
        const auto long_ago = std::filesystem::file_time_type::clock::now() - std::chrono::hours(1);
        for (const auto &each : std::filesystem::directory_iterator(place))
            last_write_time(each.path(), long_ago);
        std::filesystem::create_directory(place + "/kelmara-passing-just-begun");
        EXPECT_EQ(Files_In(place), 4u);
        const tools::PassingMachine another;
        EXPECT_EQ(Files_In(place), 4u) << "in use, just begun, another, and somebody's";
    }
    unsetenv("TMPDIR");
    EXPECT_EQ(Files_In(place), 2u);
}

/// What a terminal is given by work of slow steps that writes in between.
std::string Shown_By_Slow_Work() {
    const int terminal = posix_openpt(O_RDWR | O_NOCTTY);
    grantpt(terminal);
    unlockpt(terminal);
    const pid_t worker = fork();
    if (worker == 0) {
        const int end = open(ptsname(terminal), O_RDWR | O_NOCTTY);
        dup2(end, STDOUT_FILENO);
        dup2(end, STDERR_FILENO);
        tools::Progress whole("working", 4);
        for (int step = 0; step < 4; ++step) {
            usleep(step == 0 ? 0 : step == 1 ? 1200000 : 150000);
            whole.Step();
            tools::Print(step == 2 ? "begun " : "text\n");
            tools::Flush_Output();
        }
        _exit(0);
    }
    waitpid(worker, nullptr, 0);
    std::string shown;
    for (char c; read(terminal, &c, 1) == 1;) shown += c;
    close(terminal);
    return shown;
}

TEST_F(CommandFrame, ProgressIsShownAfterASecondAndStandsInNobodysWay) {
    // The work before it counts: the first step may be shown where tests have gone before.
    EXPECT_THAT(Shown_By_Slow_Work(),
                testing::EndsWith("text\r\n"
                                  "\r\033[Kworking [###############...............]  50 %\r\033[Ktext\r\n"
                                  "\r\033[Kworking [######################........]  75 %\r\033[Kbegun "
                                  "text\r\n"));
}

TEST_F(CommandFrame, EveryByteGoesThroughJsonAndBack) {
    std::string all;
    for (int byte = 0; byte < 256; byte++) all += static_cast<char>(byte);
    EXPECT_EQ(tools::Machine_Text_Of(tools::Utf8_Of(all)), all);
    EXPECT_EQ(tools::Utf8_Of("\x80\xFC"), "\xE2\x82\xAC\xC3\xBC");
    for (const char *beyond :
         {"\xE4\xB8\xAD", "\xF0\x9F\x98\x80", "\xC3", "\xFF", "\xC1\x81", "\xE0\x83\xBC"})
        EXPECT_NE(Failure_Of([&] { tools::Machine_Text_Of(beyond); }), "") << beyond;
}

} // namespace
