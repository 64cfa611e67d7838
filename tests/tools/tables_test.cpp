// The views of the machine's shared tables: right while programs use them, and without a trace of the viewer.

#include <tests/support/second_process.h>
#include <tests/support/window_verbs.h>
#include <tests/tools/command_run.h>

#include <tools/json.h>
#include <tools/output.h>
#include <tools/tables/shared_images.h>

#include <kelmara/shared_state/atom_table.h>
#include <kelmara/shared_state/instances.h>

#include <csignal>
#include <cstring>
#include <filesystem>
#include <poll.h>
#include <unistd.h>

namespace {

using tools::Json;

SECOND_PROCESS(table_user) {
    CAtomTable atoms;
    atoms.Initialize("SUITE");
    atoms.New_Atom(0x434F4E4E, 7, "hello", 6); // 'CONN'
    const TestWindow window(WS_VISIBLE | WS_MINIMIZE, {0, 0, 100, 100}, nullptr, 0, {}, "Caf\xE9");
    First_Instance("Suite", "Dialer", window);
    process.Tell("ready");
    while (process.Hear() == "atom") {
        atoms.New_Atom(1, 2, "\1\2\xFF", 3);
        process.Tell("made");
    }
    return 0;
}

struct TablesTest : MachineTest {
    bool Shows(const std::string &text) const { return Comes_To_Hold(machine.Path("watched"), text); }
    // Files of the machine's shared memory, whoever made them.
    unsigned long Blocks() const {
        unsigned long count = 0;
        for (const auto &folder : std::filesystem::directory_iterator("/dev/shm")) {
            if (folder.path().string().ends_with(machine.Read("machine.id")))
                count += static_cast<unsigned long>(std::distance(std::filesystem::directory_iterator(folder),
                                                                  std::filesystem::directory_iterator()));
        }
        return count;
    }
};

TEST_F(TablesTest, ShowWhatProgramsShare) {
    SecondProcess user("table_user");
    ASSERT_EQ(user.Hear(), "ready");
    const Json atoms = Json::parse(CommandRun({"atoms", "SUITE", "--json"}).output);
    EXPECT_EQ(atoms["tables"][0]["processes"][0], user.Id());
    EXPECT_EQ(atoms["atoms"].dump(), R"([{"slot":0,"group":1129270862,"id":7,"bytes":5,)"
                                     R"("data":"68656c6c6f","text":"hello"}])");
    EXPECT_NE(CommandRun({"atoms"}).output.find("   0  'CONN'   7      5  \"hello\"\n"), std::string::npos);
    EXPECT_EQ(CommandRun({"atoms", "OTHER"}).exit_code, 1);

    const Json instance = Json::parse(CommandRun({"instances", "--json"}).output)[0];
    const Json window = Json::parse(CommandRun({"windows", "--json"}).output)[0];
    EXPECT_EQ(instance["state"], "running");
    EXPECT_EQ(instance["window"], window["window"]);
    EXPECT_EQ(window["process"], user.Id());
    EXPECT_EQ(window["class"], TestWindow::Class());
    EXPECT_EQ(window["title"], "Caf\xC3\xA9");
    EXPECT_TRUE(window["visible"] && window["iconic"] && window["program"] == "test_tools");
    EXPECT_EQ(CommandRun({"instances", "suite"}).exit_code, 1) << "keys count with their case";

    user.Kill();
    user.Wait();
    EXPECT_EQ(CommandRun({"windows"}).output, "no program has a window\n");
    EXPECT_EQ(CommandRun({"atoms"}).output, "no program has an atom table open\n");
}

TEST_F(TablesTest, WatchingFollowsAndLeavesNothing) {
    const std::string none = "/dev/null", errors = machine.Path("errors");
    {
        SecondProcess user("table_user");
        ASSERT_EQ(user.Hear(), "ready");
        RunningCommand watch({"atoms", "--watch"}, none, machine.Path("watched"), errors);
        EXPECT_TRUE(Shows("\"hello\""));
        user.Tell("atom");
        EXPECT_TRUE(Shows("01 02 ff"));
        user.Kill();
        user.Wait();
        EXPECT_TRUE(Shows("no program has"));
        watch.Signal(SIGINT);
        EXPECT_EQ(watch.Wait(), -SIGINT);
    }
    for (const int signal : {SIGTERM, SIGHUP, SIGKILL}) {
        std::filesystem::remove(machine.Path("watched"));
        CommandRun({"windows"}); // throws away what the killed program left
        ASSERT_EQ(Blocks(), 0u);
        const int ignored = signal == SIGHUP ? SIGTERM : SIGHUP;
        RunningCommand watch({"instances", "--watch", "--json"}, none, machine.Path("watched"), errors,
                             ignored);
        EXPECT_TRUE(Shows("[]\n"));
        watch.Signal(ignored);
        poll(nullptr, 0, 200);
        watch.Signal(signal);
        EXPECT_EQ(watch.Wait(), -signal);
        EXPECT_EQ(Blocks(), 0u) << signal;
    }
}

TEST(SharedImages, AnyBytesAreReadAndDamageIsSeen) {
    std::string block(Atom_Block_Size, '\0');
    const auto put = [&](std::size_t at, long value) { std::memcpy(block.data() + at, &value, 4); };
    put(4, -1);
    put(8, -1);
    for (long i = 0; i < Atom_Capacity; ++i) put(12 + 4 * static_cast<std::size_t>(i), i);
    EXPECT_TRUE(tools::Read_Atoms(block).faults.empty());
    for (const std::size_t word : {0u, 4u, 8u, 12u, 12u + 1020u, 1036u + 4u}) {
        const std::string whole = block;
        put(word, 77);
        EXPECT_FALSE(tools::Read_Atoms(block).faults.empty()) << word;
        block = whole;
    }
    unsigned seed = 1;
    for (int round = 0; round < 200; ++round) {
        for (std::size_t i = 0; i < 8000; ++i)
            block[i] = static_cast<char>((seed = seed * 1103515245 + 12345) >> 16);
        put(4, round % 256);
        tools::Read_Atoms(block);
        tools::Read_Instances(block.substr(0, sizeof(InstanceTable)));
    }
    EXPECT_FALSE(tools::Read_Atoms("").faults.empty());
    EXPECT_FALSE(tools::Read_Instances("short").faults.empty());
}

} // namespace
