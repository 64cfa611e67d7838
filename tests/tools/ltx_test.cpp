// String tables and their texts: each is the other's way back, the library takes the tables for its own, and
// nothing that a file may hold brings a command down.

#include <tests/support/test_machine.h>
#include <tests/tools/command_run.h>

#include <kelmara/foundation/safe_str.h>
#include <kelmara/localization/string_table.h>
#include <kelmara/system/file.h>
#include <tools/failure.h>
#include <tools/ltx/checks.h>
#include <tools/ltx/format_places.h>
#include <tools/ltx/merge.h>
#include <tools/ltx/table_image.h>
#include <tools/ltx/table_text.h>
#include <tools/output.h>

#include <chrono>
#include <csignal>
#include <poll.h>
#include <random>

namespace {

using namespace tools::ltx;
using namespace std::chrono_literals;

const std::string Ordinary = "There is no %s.\tKMSTR_NONE\t0\tbutton\n"
                             "&Connect\\tCtrl+O \"C:\\new\"\tKMSTR_CONNECT\t-5\tmenu\\nitem\n"
                             "W\xE4hle\tKMSTR_DIAL\t2147483647\t \n";

/// Content of the kinds that formats stumble over, from a seed that is printed.
class Random {
  public:
    Random() : seed_(std::random_device{}()), numbers_(seed_) { std::printf("seed %u\n", seed_); }

    unsigned Below(unsigned limit) { return static_cast<unsigned>(numbers_()) % limit; }
    std::string Text(std::size_t longest, bool zero) {
        static const std::string pieces[] = {"\t", "\r", "\n",   "\\",   "\\t",  "\\x", "#",    "#new",
                                             " ",  "\"", "\xEF", "\xBB", "\xFF", "%s",  "word", "\x7F"};
        std::string text;
        for (unsigned left = Below(6); left > 0; --left) {
            const char any = static_cast<char>(zero ? Below(256) : 1 + Below(255));
            text += Below(3) == 0 ? std::string(1, any) : pieces[Below(std::size(pieces))];
        }
        return text.substr(0, longest);
    }
    std::vector<LocatedString> Strings(unsigned most) {
        std::vector<LocatedString> strings(Below(most));
        for (LocatedString &each : strings) {
            const std::string identifier = Below(4) ? "ID" + std::to_string(Below(most)) : Text(63, false);
            each.string = {Text(999, true), identifier, Text(127, false), static_cast<long>(numbers_())};
        }
        return strings;
    }

  private:
    unsigned seed_;
    std::mt19937 numbers_;
};

std::string Table(const std::vector<LocatedString> &strings) {
    ImageBuilder builder(strings.size(), 0);
    for (const LocatedString &each : strings) builder.Append(each.string);
    return builder.Finish();
}

bool Is_Damaged(const StringsFile &file) {
    return std::any_of(file.faults.begin(), file.faults.end(), [](const Finding &f) { return f.damage; });
}

std::string Fault_In(const std::string &text) {
    try {
        Compiled("t", text);
    } catch (const tools::FaultInFile &fault) {
        return fault.what();
    }
    return "";
}

std::string All(const std::vector<Finding> &findings) {
    std::string all;
    for (const Finding &each : findings) all += Shown(each) + "\n";
    return all;
}

template <class Work>
void For_A_While(Work work) {
    for (const auto end = std::chrono::steady_clock::now() + 700ms; std::chrono::steady_clock::now() < end;)
        ASSERT_NO_FATAL_FAILURE(work());
}

class Ltx : public MachineTest {
  protected:
    std::string Host(const std::string &name) { return machine.Path("drive_c/" + name); }
    CommandRun Run(std::vector<std::string> arguments, const std::string &input = "") {
        arguments.insert(arguments.begin(), "ltx");
        return CommandRun(arguments, input);
    }
};

TEST_F(Ltx, TablesComeBackFromTheirTextsByteForByte) {
    Random random;
    For_A_While([&] {
        const std::string table = Table(random.Strings(8));
        const std::string text = Dumped(Table_Of("t", table));
        ASSERT_EQ(Compiled("t", text), table) << text;
        ASSERT_EQ(tools::Machine_Text_Of(Encoded(text, true)), text);
        ASSERT_EQ(Dumped(Table_Of("t", Compiled("t", text))), text);
    });
    const std::string longest = Table({{{std::string(32767, '\t'), std::string(63, 'i'), "c", 0}, 0}});
    EXPECT_EQ(Compiled("t", Dumped(Table_Of("t", longest))), longest);
    EXPECT_EQ(Dumped(Table_Of("t", Compiled("t", Ordinary))), Ordinary);
    EXPECT_EQ(Dumped(Table_Of("t", Table({{{"\xEF\xBB\xBF", "i", "", 0}, 0}})))[0], '#') << "it says UTF-8";
}

TEST_F(Ltx, TheLibraryMakesTheSameTablesAndTexts) {
    CStringTable library(true);
    ASSERT_EQ(library.New_Table(), 0);
    std::string lines;
    for (std::size_t at = 0, end; (end = Ordinary.find('\n', at)) != std::string::npos; at = end + 1) {
        const int index = library.Import_String(Ordinary.substr(at, end - at).c_str());
        char line[1400];
        library.Get_Export_String(index, line, sizeof line);
        lines += line;
    }
    const auto saved = [&] {
        CKMFile file;
        EXPECT_EQ(file.Open("c:\\library.ltx", true, true), 0);
        EXPECT_EQ(library.Save_Changes(&file), 0);
        file.Close();
        return machine.Read("drive_c/library.ltx");
    };
    EXPECT_EQ(Compiled("t", Ordinary), saved());
    EXPECT_EQ(Compiled("t", lines), saved()) << "its lines end in two characters";

    EXPECT_EQ(Run({"compile", "-", "c:\\ours.ltx"}, Ordinary).exit_code, 0);
    EXPECT_EQ(Run({"set", "c:\\ours.ltx", "KMSTR_CONNECT", "longer than it was before, by some"}).exit_code,
              0);
    EXPECT_EQ(Run({"set", "c:\\ours.ltx", "KMSTR_NEW", "new", "--add"}).exit_code, 0);
    EXPECT_EQ(Run({"delete", "c:\\ours.ltx", "KMSTR_NONE"}).exit_code, 0);
    library.Set_String(1, CSafeStr("longer than it was before, by some"));
    library.Set_Identifier(library.Set_String(3, CSafeStr("new")), CSafeStr("KMSTR_NEW"));
    library.Delete_String(0);
    EXPECT_EQ(machine.Read("drive_c/ours.ltx"), saved());
}

TEST_F(Ltx, WhatNoTableCanHoldIsToldWithItsLine) {
    const std::pair<std::string, const char *> faulty[] = {
        {"a\tID\n", "t:1: not the four fields"},
        {"\n# remark\n\tID\t0\t5\n", "t:3: not the four fields"}, // an empty text, not the text "ID"
        {"a\tID\t0x\tc\n", "t:1: type \"0x\" is no number"},
        {"a\tID\t2147483648\tc\n", "t:1: type \"2147483648\" is beyond 32 bits"},
        {"a\t" + std::string(64, 'i') + "\t0\tc\n", "t:1: identifier of 64 characters"},
        {"a\tID\t0\t" + std::string(128, 'c'), "t:1: comments of 128 characters"},
        {std::string(32768, 'a') + "\tID\t0\tc", "t:1: text of 32768 characters"},
        {"#1 of %d\tID\t0\tc\n", "t:1: begins with '#'"},
        {"a\rb\tID\t0\tc\n", "t:1: a carriage return"},
        {"#escaped\na\tb\\x00\t0\t\n", "t:2: identifier with a zero byte"},
        {"#escaped\na\\x4\tb\t0\t\n", "t:2: a backslash"},
        {"#escaped\na\tb\t0\tc\td\n", "t:2: not four fields"},
        {"a\tID\t0\tc\n#escaped", "t:2: no line behind"},
    };
    for (const auto &[text, fault] : faulty) EXPECT_TRUE(Fault_In(text).starts_with(fault)) << Fault_In(text);
    for (const char *sound : {"a\tID\t0", "a\tID\t 0 \t", "\t\ta\t\tID\t0\t\tc", "# a\tb\tc\td\n", ""})
        EXPECT_EQ(Fault_In(sound), "") << sound;
}

TEST_F(Ltx, DamageIsFoundWhereverItIs) {
    const std::string table = Compiled("t", Ordinary);
    for (std::size_t length = 0; length < table.size() - 3; ++length)
        EXPECT_TRUE(Is_Damaged(Table_Of("t", table.substr(0, length)))) << length;
    const std::size_t entry = table.find("W\xE4hle") - sizeof(StringEntry);
    const std::pair<std::size_t, const char *> flipped[] = {
        {1, "the first entry is said to be at offset"},
        {4, "bytes per character"},
        {11, "the header says"},
        {entry, "says its size is"},
        {entry + 3, "leads to no other place"},
        {entry + 5, "says its text has"},
        {entry + 198, "reserved bytes"},
    };
    for (const auto &[place, fault] : flipped) {
        std::string damaged = table;
        damaged[place] = static_cast<char>(damaged[place] ^ 0x80);
        const StringsFile file = Table_Of("t", damaged);
        EXPECT_NE(All(file.faults).find(fault), std::string::npos) << place << " " << All(file.faults);
        EXPECT_THROW(Require_Faultless(file), tools::Failure);
    }
    Random random;
    For_A_While([&] {
        std::string bytes = Table(random.Strings(4));
        for (unsigned flips = 1 + random.Below(4); flips > 0; --flips)
            bytes[random.Below(bytes.size())] = static_cast<char>(random.Below(256));
        Check(Table_Of("t", bytes));
        Check(Text_Of("t", bytes));
    });
}

TEST_F(Ltx, FormatPlacesAreThoseThatTakeArguments) {
    const std::pair<const char *, std::vector<std::string>> texts[] = {
        {"%s has %ld of %-08.3lx", {"%s", "%ld", "%lx"}},
        {"%*.*f %i %%", {"*", "*", "%f", "%d"}},
        {"100 % sure, %hd", {"%hd"}},
        {"50%, then %s", {}}, // nothing is put in behind what is not known
        {"%", {}},
    };
    for (const auto &[text, places] : texts) EXPECT_EQ(Format_Places(text), places) << text;
    EXPECT_EQ(Difference_In_Places("%s %ld", "%d %s"), "missing format places %ld, extra format places %d");
    EXPECT_EQ(Difference_In_Places("%s %ld", "%ld %s"),
              "format places %ld %s stand in another order than the source's %s %ld");
}

TEST_F(Ltx, ChecksTellTheLineOrTheEntry) {
    machine.Write("drive_c/source.txt", Ordinary);
    machine.Write("drive_c/de.txt", "Kein %d.\tKMSTR_NONE\t0\tc\nx\tKMSTR_NONE\t0\tc\n"
                                    "y\tKMSTR_DIAL\t0\t" +
                                        std::string(127, 'c') + "\nfaulty\n");
    const std::string de = Host("de.txt"), source = Host("source.txt");
    const CommandRun run = Run({"check", de, "--against", source});
    EXPECT_EQ(run.exit_code, 1);
    EXPECT_EQ(run.output,
              de + ":2: KMSTR_NONE is there already, as line 1, which is the one that counts\n" + //
                  de + ":3: comments may be cut: 127 characters are the most that a table holds\n" + de +
                  ":4: not the four fields text, identifier, type and comments, with tabs between\n" + de +
                  ":1: missing format places %s, extra format places %d\n" + de +
                  ":2: missing format places %s\n" + source + ":2: KMSTR_CONNECT is missing in " + de + "\n");
    machine.Write("drive_c/a", Table({{{"t", "ID", "", 0}, 0}, {{"t", "ID", "", 0}, 1}}));
    EXPECT_EQ(Run({"check", Host("a")}).output,
              Host("a") + ": ID 1: ID is there already, as entry 0, which is the one that counts\n");
    EXPECT_EQ(Run({"check", source, "--against", source}).exit_code, 0);
    EXPECT_EQ(Run({"check", "-", "--json"}, Ordinary).output, "[]\n");
    machine.Write("drive_c/d\xC3\xBC/[a,b]", "");
    EXPECT_THAT(Run({"check", Host("d\xC3\xBC/[a,b]"), "--against", "-", "--json"}, Ordinary).output,
                testing::HasSubstr("KMSTR_DIAL is missing in " + Host("d\xC3\xBC/[a,b]\"")))
        << "names are the host's";
}

TEST_F(Ltx, MergedTranslationsTellWhatIsToBeDone) {
    const auto merge = [&](const std::string &source, const std::string &translation) {
        MergeCounts counts;
        const StringsFile strings = Text_Of("s", source);
        return Merge(strings.strings, Translation_Of(Text_Of("t", translation)), {}, counts).Text();
    };
    const std::string first =
        merge("OK\tOK\t0\tc\nDial\tDIAL\t0\tc\nGone\tGONE\t3\tc\n",
              "# head\n\n# mine\nGut\tOK\t0\tmein\nWahl\tDIAL\t0\tc\nWeg\tGONE\t3\tc\n");
    const std::string source = "New\tNEW\t0\tc\nDial now\tDIAL\t7\tc\nOK\tOK\t0\tc\n";
    const std::string second = merge(source, first);
    EXPECT_EQ(second, "# head\n\n#new\n#source: New\nNew\tNEW\t0\tc\n"
                      "#changed from: Dial\n#source: Dial now\nWahl\tDIAL\t7\tc\n"
                      "# mine\n#source: OK\nGut\tOK\t0\tmein\n#no longer there: GONE: Weg\n#its type: "
                      "3\n#its comments: c\n");
    EXPECT_EQ(merge("Dial\tDIAL\t0\tc\n", second).find("#changed"), std::string::npos) << "it is back";

    Random random;
    For_A_While([&] {
        const std::string old = Dumped(Table_Of("t", Table(random.Strings(8))));
        const std::string now = Dumped(Table_Of("t", Table(random.Strings(8))));
        const std::string merged = merge(now, old);
        ASSERT_EQ(merge(now, merged), merged);
        ASSERT_EQ(Text_Of("m", merged).strings.size(), Text_Of("n", now).strings.size());
    });
}

TEST_F(Ltx, CommandsEndWithTheirCodesAndSpareTheFile) {
    machine.Write("drive_c/t.ltx", Compiled("t", Ordinary));
    machine.Write("drive_c/damaged.ltx", Compiled("t", Ordinary).substr(0, 300));
    machine.Write("drive_c/nothing.ltx", Compiled("t", Ordinary).substr(0, 30));
    const std::string table = machine.Read("drive_c/t.ltx");
    EXPECT_EQ(Run({"get", "c:\\t.ltx", "KMSTR_DIAL", "--utf8"}).output, "W\xC3\xA4hle\n");
    const std::vector<std::string> refused[] = {{"get", "c:\\t.ltx", "kmstr_dial"},
                                                {"set", "c:\\t.ltx", "NONE", "x"},
                                                {"delete", "c:\\t.ltx", "NONE"}};
    for (const auto &arguments : refused) EXPECT_EQ(Run(arguments).exit_code, 1) << arguments[0];
    const std::vector<std::string> unusable[] = {{"set", "c:\\t.ltx", "KMSTR_DIAL", std::string(32768, 'a')},
                                                 {"set", "c:\\t.ltx", "KMSTR_DIAL", "\xE4\xB8\xAD", "--utf8"},
                                                 {"compile", "c:\\missing.txt", "c:\\t.ltx"},
                                                 {"compile", "c:\\damaged.ltx", "c:\\t.ltx"},
                                                 {"dump", "c:\\damaged.ltx", "c:\\t.ltx"},
                                                 {"dump", "c:\\nothing.ltx", "c:\\t.ltx", "--anyway"},
                                                 {"set", "c:\\t.ltx", "KMSTR_DIAL", "x", "--type", ""},
                                                 {"check", "c:\\t.ltx", "--against", ""},
                                                 {"stats", "c:\\damaged.ltx"},
                                                 {"delete", "c:\\damaged.ltx", "KMSTR_NONE"},
                                                 {"merge", "c:\\t.ltx", "c:\\damaged.ltx", "c:\\t.ltx"}};
    for (const auto &arguments : unusable) {
        const CommandRun run = Run(arguments);
        EXPECT_EQ(run.exit_code, 2) << arguments[0];
        EXPECT_FALSE(run.errors.empty());
    }
    EXPECT_EQ(machine.Read("drive_c/t.ltx"), table);
    const CommandRun rescued = Run({"dump", "c:\\damaged.ltx", "--anyway"});
    EXPECT_EQ(rescued.exit_code, 1);
    EXPECT_EQ(rescued.output, Ordinary.substr(0, Ordinary.find('\n') + 1));
    EXPECT_EQ(Run({"merge", "c:\\t.ltx", "/dev/null", "-", "--json"}).errors.substr(0, 13),
              "{\n  \"new\": 3,");
    EXPECT_NE(Run({"stats", "c:\\t.ltx", "--json"}).output.find("\"strings\": 3"), std::string::npos);
}

TEST_F(Ltx, AKilledCommandLeavesTheOldTableOrTheNewOne) {
    std::string text;
    for (int i = 0; i < 20000; ++i) text += "text\tID" + std::to_string(i) + "\t0\tc\n";
    machine.Write("drive_c/new.txt", text);
    const std::string before = Compiled("t", Ordinary), after = Compiled("t", text);
    for (int wait = 0; wait < 40; wait += 4) {
        machine.Write("drive_c/t.ltx", before);
        RunningCommand command({"ltx", "compile", "c:\\new.txt", "c:\\t.ltx"});
        poll(nullptr, 0, wait);
        command.Signal(wait % 8 == 0 ? SIGKILL : SIGTERM);
        command.Wait();
        const std::string now = machine.Read("drive_c/t.ltx");
        EXPECT_TRUE(now == before || now == after) << wait;
    }
}

} // namespace
