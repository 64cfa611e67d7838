// `kelmara reg` on machines: what is carried over comes back equal, and what is refused changes nothing.

#include <tests/support/failing_new.h>
#include <tests/support/registry_verbs.h>
#include <tests/tools/command_run.h>

#include <tools/failure.h>
#include <tools/reg/export.h>
#include <tools/reg/plan.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <map>
#include <random>

namespace {

using namespace tools::reg;
using ::testing::HasSubstr;
using ::testing::StartsWith;
using RegCommand = RegistryTest;

constexpr char Sample[] = "HKEY_CURRENT_USER\\Sample";

std::string Export(const std::string &path = Sample) {
    return Export_Key(Key_Path_Of(path));
}

std::vector<Change> Import(const std::string &text) {
    Plan plan;
    plan.Do(Read_Registry_Text(text, "file"), "file");
    std::vector<Change> changes = plan.Take_Changes();
    Make_Changes(changes);
    return changes;
}

// A key's whole content: types and bytes under the paths and names in their own letter case.
std::map<std::string, std::string> Walk(const std::string &path, HKEY root = HKEY_CURRENT_USER) {
    std::map<std::string, std::string> all = {{path, ""}};
    const TestKey key(path, root);
    for (const std::string &name : key.Values()) {
        DWORD type = 0;
        RegQueryValueExA(key, name.c_str(), nullptr, &type, nullptr, nullptr);
        all[path + "\\=" + name] = std::to_string(type) + ' ' + key.Get(name);
    }
    for (const std::string &name : key.Subkeys()) all.merge(Walk(path + '\\' + name, root));
    return all;
}

class RandomContent {
  public:
    explicit RandomContent(unsigned seed) : random_(seed) {}

    void Fill(const std::string &path, int depth = 0) {
        const TestKey key(path);
        for (unsigned values = random_() % 6; values > 0; --values)
            key.Set(random_() % 4 ? Text("ab;]=@-\\\" \x8A\xFC", 6) : Text("n", 90), Data(), Type());
        if (depth == 4) return;
        for (unsigned subkeys = random_() % 3; subkeys > 0; --subkeys)
            Fill(path + '\\' + Text("ab[]@-\"= \x9A\xFC", 5) + 'k', depth + 1);
    }

  private:
    std::string Text(const std::string &letters, std::size_t longest) {
        std::string text(random_() % (longest + 1), ' ');
        for (char &letter : text) letter = letters[random_() % letters.size()];
        return text;
    }
    std::string Data() {
        return Text(std::string("a\\\";\r\n\0\xFF", 8), random_() % 5 ? 6 : 300) +
               (random_() % 3 ? std::string(1, '\0') : "");
    }
    DWORD Type() { return random_() % 8 ? random_() % 12 : random_(); }

    std::mt19937 random_;
};

TEST_F(RegCommand, WhatIsExportedComesBackEqualOnAnotherMachine) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(2);
    const unsigned first_seed = std::random_device{}();
    for (unsigned seed = first_seed; seed < first_seed + 60 && std::chrono::steady_clock::now() < end;
         ++seed) {
        const TestMachine from;
        RandomContent(seed).Fill("Sample");
        const auto before = Walk("Sample");
        const std::string text = Export();
        const TestMachine to;
        Import(text);
        ASSERT_EQ(Walk("Sample"), before) << "seed " << seed;
        ASSERT_EQ(Export(), text) << "seed " << seed;
        ASSERT_TRUE(Import(text).empty()) << "seed " << seed;
    }
}

TEST_F(RegCommand, TheTextIsFollowedInItsOrderWhicheverWayAKeyIsReached) {
    TestKey("Sample\\Old\\Below").Set("v", "x");
    TestKey("Class", HKEY_CLASSES_ROOT).Set("kept", "1");
    const std::vector<Change> changes =
        Import("REGEDIT4\n"
               "[-HKCU\\sample\\OLD]\n[HKCU\\Sample\\Old]\n\"v\"=dword:1\n"
               "[-HKLM\\Software\\Classes\\Class]\n[HKCR\\Class]\n\"a\"=\"1\"\n"
               "[HKLM\\Software\\Classes\\Class]\n\"A\"=\"2\"\n");
    EXPECT_EQ(TestKey("Sample").Subkeys(), (std::vector<std::string>{"Old"}));
    EXPECT_TRUE(TestKey("Sample\\Old").Subkeys().empty());
    EXPECT_EQ(TestKey("Class", HKEY_CLASSES_ROOT).Values(), (std::vector<std::string>{"a"}));
    EXPECT_EQ(TestKey("Class", HKEY_CLASSES_ROOT).Get("a"), std::string("2\0", 2));
    EXPECT_EQ(changes.size(), 5u) << "a value and its key gone, a value gone, two new ones";
}

TEST_F(RegCommand, AChangeThatFailsTakesBackThoseBeforeIt) {
    char class_name[] = "class";
    TestKey("Sample\\Gone", HKEY_CURRENT_USER, class_name).Set("v", "x");
    TestKey("Sample").Set("kept", "as it was");
    const auto before = Walk("Sample");
    Plan plan;
    plan.Do(Read_Registry_Text("REGEDIT4\n[-HKCU\\Sample\\Gone]\n[HKCU\\Sample\\New\\Below]\n@=\"\"\n"
                               "[HKCU\\Sample]\n\"kept\"=\"other\"\n",
                               "file"),
            "file");
    std::vector<Change> changes = plan.Take_Changes();
    changes.push_back({Key_Path_Of("HKLM\\Software"), true, "", Value{}, {}});
    try {
        Make_Changes(changes);
        ADD_FAILURE() << "the machine's own key was deleted";
    } catch (const tools::Failure &failure) {
        EXPECT_THAT(failure.what(), HasSubstr("nothing was changed"));
    }
    EXPECT_EQ(Walk("Sample"), before);
    char found[10] = "";
    DWORD size = sizeof found;
    RegQueryInfoKeyA(TestKey("Sample\\Gone"), found, &size, nullptr, nullptr, nullptr, nullptr, nullptr,
                     nullptr, nullptr, nullptr, nullptr);
    EXPECT_STREQ(found, "class");
}

TEST_F(RegCommand, ChangesThatRunOutOfMemoryAreTakenBack) {
    TestKey("Sample").Set("a", "1");
    const auto before = Walk("Sample");
    bool done = false;
    for (unsigned long nth = 1; !done; ++nth) {
        Plan plan;
        plan.Do(Read_Registry_Text("REGEDIT4\n[HKCU\\Sample]\n\"a\"=\"other, and longer than it was\"\n"
                                   "[HKCU\\Sample\\New\\Below]\n@=\"\"\n\"b\"=\"2\"\n",
                                   "file"),
                "file");
        const std::vector<Change> changes = plan.Take_Changes();
        try {
            allocations_until_failure = nth;
            Make_Changes(changes);
            done = std::exchange(allocations_until_failure, 0) > 0;
        } catch (const tools::Failure &failure) {
            done = std::string(failure.what()).starts_with("all is changed");
            if (!done) {
                ASSERT_EQ(Walk("Sample"), before) << nth << " " << failure.what();
            }
        }
    }
    EXPECT_EQ(Walk("Sample").size(), 6u);
}

TEST_F(RegCommand, AnInterruptedImportIsWholeOrNothing) {
    std::string text = "REGEDIT4\n";
    for (int key = 0; key < 4000; ++key)
        text += "[HKCU\\Sample\\" + std::to_string(key) + "]\n\"a\"=\"1\"\n\"b\"=\"2\"\n";
    machine.Write("in.reg", text);
    RunningCommand command({"reg", "import", machine.Path("in.reg")});
    HKEY key = nullptr;
    for (int tries = 0; tries < 10000 && RegOpenKeyA(HKEY_CURRENT_USER, "Sample\\20", &key) != 0; ++tries)
        usleep(500);
    RegCloseKey(key);
    command.Signal(SIGINT);
    const int exit_code = command.Wait();
    EXPECT_TRUE(exit_code == 0 || exit_code == -SIGINT) << exit_code;
    EXPECT_EQ(Walk("Sample").size(), exit_code == 0 ? 12001u : 1u);
}

TEST_F(RegCommand, ExitCodesAndWhatIsLeftBehind) {
    machine.Write("late.reg", "REGEDIT4\n[HKCU\\Late]\n@=\"1\"\n[-HKLM\\System]\n");
    machine.Write("fault.reg", "REGEDIT4\n[HKCU\\Late]\n@=\"1\"\n\"x\n");
    machine.Write("kept.reg", "kept");
    TestKey("Bad").Set("line\nend", "");
    TestKey("Bad2\\a] ;b");
    struct Row {
        std::vector<std::string> arguments;
        int exit_code;
        std::string output, errors; // how they begin
    };
    const std::string file = machine.Path("kept.reg");
    for (const Row &row : std::vector<Row>{
             {{"query", "hkcu\\none"}, 1, "", "kelmara: HKEY_CURRENT_USER\\none: no such key"},
             {{"query", "hkxx"}, 2, "", "kelmara: 'hkxx' is no root"},
             {{"set", "hkcu\\Made", "", "[a,b]"}, 0, "", ""},
             {{"set", "hkcu\\made", "list", "[a,b]\nc\n", "--type", "multi_sz"}, 0, "", ""},
             {{"set", "hkcu\\made", "n", "256", "--type", "dword"}, 0, "", ""},
             {{"set", "hkcu\\made", "n", "x", "--type", "dword"}, 2, "", "kelmara: 'x' is no number"},
             {{"query", "hkcu\\made", "--value", ""}, 0, "[a,b]\n", ""},
             {{"query", "hkcu\\made", "--value", "LIST"}, 0, "[a,b]\nc\n", ""},
             {{"query", "hkcu\\MADE"}, 0, "HKEY_CURRENT_USER\\Made\n    (default)  sz        [a,b]\n", ""},
             {{"query", "hkcu", "--value", "n", "--recursive"},
              0,
              "HKEY_CURRENT_USER\\Made\n    n  dword  256 (0x00000100)\n",
              ""},
             {{"delete", "hkcu\\made", "--value", "n", "--dry-run"},
              0,
              "deleted  HKEY_CURRENT_USER\\made  \"n\"=dword:00000100\nkeys: 0",
              ""},
             {{"delete", "hkcu\\made", "--value", "none"}, 1, "", "kelmara: hkcu\\made: no value"},
             {{"delete", "hkcu\\made"},
              0,
              "keys: 0 created, 1 deleted; values: 0 created, 0 changed, 3 d",
              ""},
             {{"delete", "hkcu\\made"}, 1, "", "kelmara: hkcu\\made: no such key"},
             {{"delete", "hkcr"}, 2, "", "kelmara: HKEY_CLASSES_ROOT: the machine's own key"},
             {{"import", machine.Path("late.reg")}, 2, "", machine.Path("late.reg") + ":4: "},
             {{"import", machine.Path("fault.reg")}, 2, "", machine.Path("fault.reg") + ":4: "},
             {{"import", machine.Folder()}, 2, "", "kelmara: " + machine.Folder()},
             {{"export", "hkcu\\bad", file}, 2, "", "kelmara: HKEY_CURRENT_USER\\Bad: a line end"},
             {{"export", "hkcu\\bad2", file}, 2, "", "kelmara: HKEY_CURRENT_USER\\Bad2\\a] ;b: ']' and ';'"},
             {{"export", "hkcu\\none", file}, 1, "", "kelmara: HKEY_CURRENT_USER\\none: no such key"},
         }) {
        std::vector<std::string> arguments = row.arguments;
        arguments.insert(arguments.begin(), "reg");
        const CommandRun run(arguments);
        const std::string what = testing::PrintToString(row.arguments) + run.errors;
        EXPECT_EQ(run.exit_code, row.exit_code) << what;
        EXPECT_THAT(run.output, StartsWith(row.output)) << what;
        EXPECT_THAT(run.errors, StartsWith(row.errors)) << what;
    }
    EXPECT_EQ(machine.Read("kept.reg"), "kept");
    HKEY late = nullptr;
    EXPECT_EQ(RegOpenKeyA(HKEY_CURRENT_USER, "Late", &late), ERROR_FILE_NOT_FOUND);
}

TEST_F(RegCommand, TheUsersPolicyIsKept) {
    const DWORD one = 1;
    RegSetValueExA(TestKey("Software\\Microsoft\\Windows\\CurrentVersion\\Policies\\System"),
                   "DisableRegistryTools", 0, REG_DWORD, reinterpret_cast<const BYTE *>(&one), sizeof one);
    const CommandRun refused({"reg", "set", "HKCU\\Sample", "a", "b"});
    EXPECT_EQ(refused.exit_code, 2);
    EXPECT_THAT(refused.errors, StartsWith("[Access Denied] Direct access"));
    EXPECT_EQ(CommandRun({"reg", "set", "HKCU\\Sample", "a", "b", "--dry-run"}).exit_code, 0);
    EXPECT_EQ(CommandRun({"reg", "query", "HKCU\\Sample"}).exit_code, 1);
}

} // namespace
