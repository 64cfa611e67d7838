#include <tests/reference_suite/log_companion_fixture.h>

#include <tests/support/second_process.h>

#include <algorithm>
#include <filesystem>
#include <set>
#include <sstream>
#include <thread>
#include <unistd.h>

namespace {

using LogFiles = LogCompanionTest;

/// The entries' markup, each line having been found to be a whole one.
std::vector<std::string> Entries(const std::string &log) {
    EXPECT_TRUE(log.starts_with("<!DOCTYPE html>") && log.ends_with("\n")) << log.substr(0, 100);
    std::vector<std::string> entries;
    std::istringstream lines(log);
    std::string text;
    std::getline(lines, text); // the head
    while (std::getline(lines, text)) {
        text.erase(text.find_last_not_of(' ') + 1); // what covers a torn line
        const std::size_t stamp = std::min(text.find("</span> "), text.size() - 8) + 8;
        EXPECT_THAT(text.substr(0, stamp),
                    testing::MatchesRegex("<p><time>[-0-9]+ [:.0-9]+</time> "
                                          "<span class=\"process\">[^<]* [0-9]+</span> "));
        EXPECT_TRUE(text.ends_with("</p>")) << text;
        entries.push_back(text.substr(stamp, text.size() - stamp - 4));
    }
    return entries;
}

TEST_F(LogFiles, PassThroughTheMarkupThatCannotReachBeyondAnEntry) {
    const std::pair<std::string, std::string> rows[] = {
        {"plain text", "plain text"},
        {"<font color=red> <b>DEBUG MESSAGE:</b></font>&nbspa & b &amp; c",
         "<font color=\"red\"> <b>DEBUG MESSAGE:</b></font>&nbsp;a &amp; b &amp; c"},
        {"<FONT SIZE=\"+1\"  color=#F00 >x", "<font size=\"+1\" color=\"#F00\">x</font>"},
        {"<b><i>both</b> after</i>", "<b><i>both</i></b> after&lt;/i&gt;"},
        {"one\ntwo\r\nthree\rfour<br>five\n\r\n", "one<br>two<br>three<br>four<br>five"},
        {"<script>x</script>", "&lt;script&gt;x&lt;/script&gt;"},
        {"<b onclick=x>", "&lt;b onclick=x&gt;"},
        {"<font color=\"red\" onclick=x>", "&lt;font color=\"red\" onclick=x&gt;"},
        {"<font color=\"red>", "&lt;font color=\"red&gt;"},
        {"</p></body><p>", "&lt;/p&gt;&lt;/body&gt;&lt;p&gt;"},
        {"<font col", "&lt;font col"},
        {"<", "&lt;"},
        {"<!-- &#60; ", "&lt;!-- &amp;#60; "},
        {std::string("tab\tbell\a\x7F\xE4", 11), "tab bell  \xE4"},
        {"", ""},
        {"\n", ""},
    };
    const LogCompanion log;
    std::vector<std::string> expected;
    for (const auto &[text, markup] : rows) {
        log.Write(text);
        expected.push_back(markup);
    }
    char unterminated[] = {'a', 'b', 'c'};
    log.queue_entry(unterminated, 2, 0, 0);
    log.queue_entry(unterminated, 0, 0, 0);
    log.queue_entry(unterminated, -1, 0, 0);
    log.queue_entry(nullptr, 5, 0, 0);
    log.Write(std::string(8193, 'x'));
    expected.insert(expected.end(), {"ab", std::string(8192, 'x')});
    EXPECT_EQ(Entries(Log()), expected);
}

SECOND_PROCESS(log_writer) {
    const LogCompanion log;
    process.Tell("ready");
    process.Hear();
    std::vector<std::jthread> threads;
    for (int thread = 0; thread < 3; ++thread)
        threads.emplace_back([&, thread] {
            const std::string name = std::to_string(getpid()) + "." + std::to_string(thread) + ".";
            for (int entry = 0; entry < 100; ++entry) log.Write(name + std::to_string(entry));
        });
    return 0;
}

TEST_F(LogFiles, TakeEntriesOfManyThreadsAndProcesses) {
    {
        SecondProcess first("log_writer"), second("log_writer");
        for (SecondProcess *writer : {&first, &second}) EXPECT_EQ(writer->Hear(), "ready");
        for (SecondProcess *writer : {&first, &second}) writer->Tell("go");
        for (SecondProcess *writer : {&first, &second}) EXPECT_EQ(writer->Wait(), 0) << writer->Errors();
    }
    const std::vector<std::string> entries = Entries(Log());
    EXPECT_EQ(entries.size(), 600u);
    EXPECT_EQ(std::set<std::string>(entries.begin(), entries.end()).size(), 600u);
}

TEST_F(LogFiles, MendWhatIsTornAtEachPlace) {
    const LogCompanion log;
    log.Write("first");
    const std::string one = Log();
    log.Write("second one");
    const std::string two = Log();
    for (std::size_t size = 0; size <= two.size(); ++size) {
        machine.Write("drive_c/suite/log.html", two.substr(0, size));
        log.Write("next");
        std::vector<std::string> expected = {"next"};
        if (size == two.size()) expected.insert(expected.begin(), "second one");
        if (size >= one.size()) expected.insert(expected.begin(), "first");
        ASSERT_EQ(Entries(Log()), expected) << size;
    }
    const std::string other(100000, 'o'); // no writer's of ours
    machine.Write("drive_c/suite/log.html", other);
    log.Write("mine");
    EXPECT_TRUE(Log().starts_with(other + "\n<p>"));
}

SECOND_PROCESS(tireless_writer) {
    const LogCompanion log;
    process.Tell("ready");
    for (;;) log.Write(std::string(8000, '<'));
}

TEST_F(LogFiles, StandWritersThatAreKilledAtAnyMoment) {
    const LogCompanion log;
    for (int round = 0; round < 8; ++round) {
        SecondProcess writer("tireless_writer"), other("tireless_writer");
        EXPECT_EQ(writer.Hear(), "ready");
        EXPECT_EQ(other.Hear(), "ready");
        usleep(static_cast<useconds_t>(500 + 137 * round));
        writer.Kill();
        log.Write("after the kill");
    }
    std::vector<std::string> entries = Entries(Log());
    EXPECT_EQ(std::ranges::count(entries, "after the kill"), 8);
    std::erase(entries, "after the kill");
    std::string whole;
    for (int i = 0; i < 8000; ++i) whole += "&lt;";
    for (const std::string &entry : entries) ASSERT_EQ(entry, whole);
}

TEST_F(LogFiles, TakeARootFolderAsLongAsAPathCanBe) {
    TestKey key("Software\\Dunmerit Software\\KelMara", HKEY_LOCAL_MACHINE);
    const std::string longest = "c:\\" + std::string(256, 'r');
    key.Set("Root", {longest.c_str(), longest.size() + 1});
    const LogCompanion log;
}

TEST_F(LogFiles, TellHowManyEntriesWereLostAndBeginAnewWhereTheyAreDeleted) {
    const LogCompanion log;
    log.Write("first");
    std::filesystem::permissions(Path(), std::filesystem::perms::owner_read);
    for (int i = 0; i < 3; ++i) log.Write("lost");
    std::filesystem::permissions(Path(), std::filesystem::perms::owner_all);
    log.Write("second");
    log.Write("third");
    EXPECT_EQ(Entries(Log()),
              (std::vector<std::string>{"first", "<span class=\"lost\">3 entries were lost</span>", "second",
                                        "third"}));
    std::filesystem::remove(Path());
    log.Write("new");
    EXPECT_EQ(Entries(Log()), std::vector<std::string>{"new"});
}

} // namespace
