// Machines made, copied while they are in use, and checked: nothing half made, nothing lost.

#include <tests/support/registry_verbs.h>
#include <tests/support/second_process.h>
#include <tests/support/window_verbs.h>
#include <tests/tools/command_run.h>

#include <tools/json.h>
#include <tools/machine/settings_text.h>
#include <tools/output.h>

#include <kelmara/shared_state/instances.h>
#include <platform/com.h>

#include <csignal>
#include <filesystem>
#include <poll.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;
using tools::Json;

// Two values that are always the same for who sees them whole, and a file that is always replaced whole.
SECOND_PROCESS(busy_writer) {
    const TestKey key("Busy");
    for (int round = 0;; ++round) {
        key.Set("value", std::string(1000, static_cast<char>('a' + round % 26)));
        if (round == 10) process.Tell("writing");
    }
}

SECOND_PROCESS(short_lived) {
    const TestWindow window(0, {0, 0, 9, 9});
    First_Instance(process.Arguments()[0].c_str(), "x", window);
    First_Instance("Nothing", "x", nullptr);
    process.Tell("ready");
    process.Hear();
    return 0;
}

struct MachineCommand : MachineTest {
    MachineCommand() { fs::create_directories(outside); }
    ~MachineCommand() override { fs::remove_all(outside); }
    std::string Outside(const std::string &name) const { return outside + "/" + name; }
    unsigned long Entries() const {
        return static_cast<unsigned long>(
            std::distance(fs::directory_iterator(outside), fs::directory_iterator()));
    }

    const std::string outside = "/tmp/kelmara-test-machines-" + std::to_string(getpid());
};

TEST_F(MachineCommand, InitMakesOnlyWhereNothingIs) {
    const std::string fresh = Outside("fresh");
    const std::pair<const char *, const char *> wrong[] = {
        {"--windows", "vista"},   {"--screen", "800"},    {"--screen", "800x600x7"},
        {"--screen", "800x600x"}, {"--drive", "c=cdrom"}, {"--drive", "d=tape"}};
    for (const auto &[option, value] : wrong)
        EXPECT_EQ(CommandRun({"machine", "init", fresh, option, value}).exit_code, 2) << value;
    EXPECT_EQ(Entries(), 0u);
    EXPECT_EQ(CommandRun({"machine", "init", fresh, "--windows", "98", "--screen", "800x600x16", "--drive",
                          "D=cdrom"})
                  .exit_code,
              0);
    const Json info = Json::parse(CommandRun({"--machine", fresh, "machine", "info", "--json"}).output);
    EXPECT_EQ(info["windows"]["name"], "98");
    EXPECT_EQ(info["screen"].dump(), R"({"width":800,"height":600,"depth":16})");
    EXPECT_EQ(info["drives"][1]["kind"], "cdrom");

    const CommandRun again({"machine", "init", fresh, "--windows", "xp"});
    EXPECT_EQ(again.exit_code, 2);
    EXPECT_NE(again.errors.find("is a machine already"), std::string::npos);
    EXPECT_EQ(CommandRun({"machine", "init", outside}).exit_code, 2) << "it holds other things";
    EXPECT_EQ(CommandRun({"--machine", Outside("none"), "machine", "info"}).exit_code, 1);
    EXPECT_EQ(Entries(), 1u);
}

// No file may have more bytes: a number fits in, settings do not.
TEST_F(MachineCommand, AFailedInitTakesBackWhatItMade) {
    const std::string here = Outside("here");
    fs::create_directory(here);
    fs::permissions(here, fs::perms::owner_all | fs::perms::group_read);
    rlimit usual = {}, small = {};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &usual), 0);
    const auto before = signal(SIGXFSZ, SIG_IGN); // of the library's loading
    small = {40, usual.rlim_max};
    for (const std::string &folder : {here, Outside("new/new/"), Outside("new/" + std::string(300, 'x'))}) {
        ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
        RunningCommand init({"machine", "init", folder, "--windows", "98", "--screen", "800x600x16"});
        ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &usual), 0);
        EXPECT_EQ(init.Wait(), 2);
    }
    signal(SIGXFSZ, before);
    EXPECT_TRUE(fs::is_empty(here));
    EXPECT_EQ(fs::status(here).permissions(), fs::perms::owner_all | fs::perms::group_read);
    EXPECT_EQ(Entries(), 1u);
}

// For somebody who is bound by modes.
TEST_F(MachineCommand, MakesItsFoldersUnderAnyUmask) {
    const uid_t owner = geteuid() == 0 ? 65534 : geteuid();
    ASSERT_EQ(chown(outside.c_str(), owner, static_cast<gid_t>(-1)), 0);
    const pid_t child = fork();
    if (child == 0) {
        umask(0777);
        bool made = setresuid(owner, owner, owner) == 0;
        for (const std::vector<std::string> &arguments : std::vector<std::vector<std::string>>{
                 {"machine", "init", Outside("new/deep")},
                 {"--machine", Outside("new/deep"), "machine", "clone", Outside("clone")},
                 {"--machine", Outside("none"), "number", "parse", "+1 (206) 555-1212"}}) {
            const int code = RunningCommand(arguments).Wait();
            made = made && (code == 0 || code == 127); // he may not get at the command
        }
        _exit(made ? 0 : 1);
    }
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
}

TEST_F(MachineCommand, CloneIsWholeAndTheMachinesOwn) {
    machine.Write("drive_c/folder/a.txt", "text");
    machine.Set("windows", "98");
    fs::create_symlink("a.txt", machine.Path("drive_c/folder/link"));
    fs::create_directories(Outside("shared/deep"));
    fs::create_symlink(fs::relative(Outside("shared"), machine.Path("")), machine.Path("drive_d"));
    fs::create_symlink("drive_c/folder", machine.Path("drive_e"));
    fs::create_symlink(machine.Path("drive_e"), machine.Path("drive_f"));
    fs::create_symlink("../" + fs::path(machine.Folder()).filename().string() + "/drive_c",
                       machine.Path("drive_g"));
    fs::create_symlink("drive_e/../folder", machine.Path("drive_h"));
    fs::permissions(machine.Path("drive_c/folder/a.txt"), fs::perms::owner_read);
    fs::permissions(machine.Path("drive_c/folder"), fs::perms::owner_read | fs::perms::owner_exec);
    SecondProcess writer("busy_writer");
    ASSERT_EQ(writer.Hear(), "writing");
    fs::create_directories(Outside("place"));
    const std::string clone = Outside("place/clone");
    const CommandRun run({"machine", "clone", clone});
    ASSERT_EQ(run.exit_code, 0) << run.errors;
    writer.Kill();
    writer.Wait();

    EXPECT_TRUE(fs::is_symlink(clone + "/drive_c/folder/link"));
    EXPECT_EQ(fs::canonical(clone + "/drive_d"), Outside("shared"));
    EXPECT_EQ(fs::canonical(clone + "/drive_e"), clone + "/drive_c/folder");
    EXPECT_EQ(fs::canonical(clone + "/drive_f"), clone + "/drive_c/folder");
    EXPECT_EQ(fs::canonical(clone + "/drive_g"), clone + "/drive_c");
    EXPECT_EQ(fs::read_symlink(clone + "/drive_h"), "drive_e/../folder") << "as it stands";
    EXPECT_EQ(fs::status(clone + "/drive_c/folder/a.txt").permissions(), fs::perms::owner_read);
    EXPECT_EQ(CommandRun({"--machine", clone, "machine", "check"}).output, "nothing is wrong\n");
    const Json info = Json::parse(CommandRun({"--machine", clone, "machine", "info", "--json"}).output);
    EXPECT_EQ(info["windows"]["name"], "98");
    EXPECT_EQ(info["registry"]["damaged"], 0);
    EXPECT_GE(info["registry"]["values"], 1);

    EXPECT_EQ(CommandRun({"machine", "clone", clone}).exit_code, 2) << "there is one";
    EXPECT_EQ(CommandRun({"machine", "clone", machine.Path("drive_c/inside")}).exit_code, 2);
    EXPECT_EQ(CommandRun({"machine", "clone", Outside("none/clone")}).exit_code, 2);
    EXPECT_EQ(Entries(), 2u);
    fs::permissions(machine.Path("drive_c/folder"), fs::perms::owner_all);
    fs::permissions(clone + "/drive_c/folder", fs::perms::owner_all);
    EXPECT_TRUE(Remove_Machine(clone.c_str())) << "a machine with a number of its own";
}

TEST_F(MachineCommand, AnInterruptedCloneLeavesNothing) {
    machine.Write("drive_c/locked/large", "");
    fs::resize_file(machine.Path("drive_c/locked/large"), 4ull << 30);
    RunningCommand clone({"machine", "clone", Outside("clone")});
    for (int tries = 0; tries < 1000 && Entries() == 0; ++tries) poll(nullptr, 0, 5);
    EXPECT_EQ(Entries(), 1u);
    clone.Signal(SIGINT);
    EXPECT_EQ(clone.Wait(), -SIGINT);
    EXPECT_EQ(Entries(), 0u);
}

TEST_F(MachineCommand, CheckTellsAndRepairMends) {
    EXPECT_EQ(CommandRun({"machine", "check"}).output, "nothing is wrong\n");
    TestKey("Kept").Set("first", std::string(100, 'x'));
    TestKey("Kept").Set("second", "kept");
    std::string registry = machine.Read("registry/registry.log");
    registry[registry.find("xxxx")] = 'y';
    machine.Write("registry/registry.log", registry + std::string(24, '\x7F'));
    machine.Write("registry/registry.log.new", "half");
    machine.Write("drive_c/f\xC3\xBCr.txt.kelmara-new999999999", "half");
    machine.Write("drive_c/b.txt.kelmara-new999999999-1760000000", "half");
    machine.Write("drive_c/report.new2024", "the user's own");
    machine.Write("drive_c/a.txt.kelmara-new" + std::to_string(getpid()), "of a living process");
    fs::create_hard_link(machine.Path("registry/registry.log"),
                         machine.Path("registry/registry.log.damaged-1-2"));
    machine.Write("registry/registry.log.damaged-1", "of an earlier time");
    SecondProcess killed("short_lived", {"G\xC3\xB6ne"}), living("short_lived", {"Here"});
    ASSERT_EQ(killed.Hear() + living.Hear(), "readyready");
    killed.Kill();
    killed.Wait();

    const CommandRun check({"machine", "check"});
    EXPECT_EQ(check.exit_code, 1);
    for (const char *finding : {"damaged bytes", "24 bytes that a writer left", "a rewriting was left",
                                "f\xC3\xBCr.txt.kelmara-new999999999: working file",
                                "b.txt.kelmara-new999999999-1760000000: working file",
                                "\"G\xC3\xB6ne\", \"x\" is gone", "\"Nothing\", \"x\" has no window"})
        EXPECT_NE(check.output.find(finding), std::string::npos) << finding << " in\n" << check.output;
    EXPECT_EQ(std::count(check.output.begin(), check.output.end(), '\n'), 7);

    const CommandRun repair({"machine", "check", "--repair", "--json"});
    EXPECT_EQ(repair.exit_code, 0) << repair.output;
    for (const Json &each : Json::parse(repair.output)) EXPECT_FALSE(each["mended"].is_null()) << each;
    for (const char *text : {"/drive_c/f\xC3\xBCr.txt.kelmara-new", "G\xC3\x83\xC2\xB6ne"})
        EXPECT_NE(repair.output.find(text), std::string::npos) << text << " in\n" << repair.output;
    EXPECT_EQ(CommandRun({"machine", "check"}).output, "nothing is wrong\n");
    EXPECT_EQ(TestKey("Kept").Get("second"), "kept");
    EXPECT_TRUE(fs::exists(machine.Path("drive_c/a.txt.kelmara-new" + std::to_string(getpid()))));
    EXPECT_TRUE(fs::exists(machine.Path("drive_c/report.new2024")));
    EXPECT_EQ(machine.Read("registry/registry.log.damaged-1"), "of an earlier time");
    EXPECT_NE(machine.Read("registry/registry.log.damaged-1-2").find("yxxx"), std::string::npos);
    EXPECT_FALSE(fs::exists(machine.Path("registry/registry.log.damaged-1-3")));

    machine.Set("windows", "vista");
    EXPECT_EQ(CommandRun({"machine", "check", "--repair"}).exit_code, 1);
    machine.Write("registry/registry.log", "no registry at all");
    EXPECT_NE(CommandRun({"machine", "check"}).output.find("not a registry"), std::string::npos);
}

TEST_F(MachineCommand, RefusesWhatOthersMayWriteTo) {
    ASSERT_EQ(mkfifo(machine.Path("machine.conf").c_str(), 0600), 0);
    const CommandRun check({"machine", "check"});
    EXPECT_EQ(check.exit_code, 1);
    EXPECT_NE(check.output.find("machine.conf: not a file of this user alone"), std::string::npos);
    fs::permissions(machine.Folder(), fs::perms(0770));
    for (const std::vector<std::string> &command :
         {std::vector<std::string>{"machine", "check"}, {"reg", "query", "HKCU"}}) {
        const CommandRun run(command);
        EXPECT_EQ(run.exit_code, 2);
        EXPECT_EQ(run.errors, "kelmara: " + machine.Folder() +
                                  ": not a machine of this user alone; it is left as it is\n");
    }
    EXPECT_EQ(fs::status(machine.Folder()).permissions(), fs::perms(0770));
    fs::permissions(machine.Folder(), fs::perms(0700));
}

TEST(SettingsText, OnlyWhatTheMachineDoesNotTakeIsAFault) {
    std::string text = "# remark\n\n WINDOWS = XP # new\nscreen_width=0\nno setting\ndrive_d = tape\r\n"
                       "drive_d_free = 12\ndrive_e_size = x\nwindows_version = 5\nanything = goes\n= 1\n"
                       "windows_version = 5.1\ndrive_c = fixed\nwindows_version = 10.0.19045\n";
    for (const char *wrong : {"5..1", "1234.5", "5.1.2.3", "5.1.", "5.1.123456", "5.1x"})
        text += std::string("windows_version = ") + wrong + "\n";
    text += "drive_c = cdrom\ndrive_z = remote\n";
    std::vector<unsigned long> lines;
    for (const tools::SettingFault &fault : tools::Faults_In_Settings(text)) lines.push_back(fault.line);
    EXPECT_EQ(lines, (std::vector<unsigned long>{4, 5, 6, 8, 9, 11, 15, 16, 17, 18, 19, 20, 21, 22}));
}

} // namespace
