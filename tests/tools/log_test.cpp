// The suite's log followed, and its messages heard, beside programs that write and broadcast.

#include <tests/support/second_process.h>
#include <tests/support/test_machine.h>
#include <tests/tools/command_run.h>

#include <reference_suite/installer/install_suite.h>
#include <tools/json.h>
#include <tools/log/broadcasts.h>
#include <tools/log/log_line.h>
#include <tools/output.h>

#include <kelmara/shared_state/log.h>

#include <csignal>

namespace {

using tools::Json;

SECOND_PROCESS(log_writer) {
    for (std::string order; !(order = process.Hear()).empty(); process.Tell("done")) {
        if (order == "entry") Std_Log_Entry("<b>one</b> & %s", "two\nthree");
        if (order == "message") Broadcast_Message(17, "text", 5);
        char large[60000] = {};
        for (int i = 0; order == "flood" && i < 50; ++i) Broadcast_Message(17, large, sizeof large);
        if (order == "code") Broadcast_Message(0x434F4E4E, "\1\2", 2);
    }
    return 0;
}

struct LogCommand : MachineTest {
    bool Shows(const std::string &text) const { return Comes_To_Hold(machine.Path("output"), text); }
};

TEST_F(LogCommand, WithoutASuiteThereIsNothingToFollow) {
    EXPECT_EQ(CommandRun({"log"}).exit_code, 1);
    EXPECT_EQ(CommandRun({"log", "--once"}).exit_code, 1);
    EXPECT_EQ(CommandRun({"log", "--code", "abc"}).exit_code, 2);
}

TEST_F(LogCommand, FollowsEntriesAndHearsMessages) {
    ASSERT_EQ(Install_Suite(TEST_SUITE_FOLDER), "");
    SecondProcess writer("log_writer");
    const auto order = [&](const char *what) {
        writer.Tell(what);
        return writer.Hear();
    };
    ASSERT_EQ(order("entry"), "done");
    const CommandRun once({"log", "--once", "--json"});
    const Json entry = Json::parse(once.output);
    EXPECT_EQ(entry["text"], "one & two\nthree");
    EXPECT_EQ(entry["process"], writer.Id());

    RunningCommand log({"log", "--code", "CONN", "--last", "0"}, "/dev/null", machine.Path("output"),
                       machine.Path("errors"));
    order("entry");
    while (!Shows("one & two\n    three")) order("entry");
    order("message");
    order("code");
    EXPECT_TRUE(Shows("message 'CONN', 2 bytes 0102"));
    EXPECT_EQ(machine.Read("output").find("text"), std::string::npos) << "a message of another code";
    log.Signal(SIGSTOP);
    order("flood");
    log.Signal(SIGCONT);
    EXPECT_TRUE(Shows("messages were lost"));
    log.Signal(SIGTERM);
    EXPECT_EQ(log.Wait(), -SIGTERM);
    EXPECT_EQ(machine.Read("errors"), "");
}

TEST(LogLine, IsTakenApartOrPassedOver) {
    constexpr char line[] = "<p><time>2024</time> <span class=\"process\">a&amp;b 12</span> "
                            "<font color=\"red\"> <b>D:</b></font>&nbsp;x &lt;y&gt;<br>z</p>   ";
    const auto entry = tools::Read_Log_Line(line);
    ASSERT_TRUE(entry);
    EXPECT_EQ(entry->program + "|" + std::to_string(entry->process) + "|" + entry->text,
              "a&b|12|D: x <y>\nz");
    const std::string whole = line;
    for (std::size_t length = 0; length < whole.rfind("</p>") + 4; ++length)
        EXPECT_FALSE(tools::Read_Log_Line(whole.substr(0, length))) << length;
}

TEST(BroadcastCode, IsANumberOrFourCharacters) {
    const std::tuple<const char *, bool, long> rows[] = {
        {"17", true, 17},           {"0x8002", true, 0x8002},
        {"-1", true, -1},           {"4294967295", true, -1},
        {"CONN", true, 0x434F4E4E}, {"'1234'", true, 0x31323334},
        {"'1234'5", false, 0},      {"", false, 0},
        {"abc", false, 0},          {"4294967296", false, 0}};
    for (const auto &[text, good, expected] : rows) {
        long code = 0;
        EXPECT_EQ(tools::Read_Code(text, code), good) << text;
        EXPECT_EQ(code, expected) << text;
    }
}

} // namespace
