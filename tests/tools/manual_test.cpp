// Manual pages and completion: all that the command tree has stands in them, in a form that their readers
// take.

#include <tests/support/test_machine.h>
#include <tests/tools/command_run.h>

#include <tools/command.h>
#include <tools/manual/command_facts.h>
#include <tools/manual/manual_page.h>

#include <cstdio>
#include <filesystem>
#include <memory>
#include <set>

namespace {

using namespace tools;

class ManualCommands : public MachineTest {
  protected:
    void SetUp() override {
        MachineTest::SetUp();
        Add_All(tree);
    }
    /// Standard output and error of bash.
    static std::string Bash(const std::string &script) {
        const std::unique_ptr<FILE, int (*)(FILE *)> pipe(
            popen(("LC_ALL=C.UTF-8 bash -c '{ " + script + "; } 2>&1'").c_str(), "r"), pclose);
        std::string output;
        for (int c = std::fgetc(pipe.get()); c != EOF; c = std::fgetc(pipe.get()))
            output += static_cast<char>(c);
        return output;
    }

    CommandTree tree;
};

template <class Use>
void For_Each_Command(const CLI::App &command, Use use) {
    use(command);
    for (const CLI::App *each : Commands_Of(command)) For_Each_Command(*each, use);
}

TEST_F(ManualCommands, EveryCommandHasItsPlaceInAPageThatReadersTake) {
    const std::string folder = machine.Path("man");
    ASSERT_EQ(CommandRun({"manual", "--all", folder}).exit_code, 0);
    EXPECT_EQ(static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(folder), {})),
              Commands_Of(tree.Root()).size() + 1);
    const bool has_groff = Bash("command -v groff") != "";
    for (const CLI::App *top : Commands_Of(tree.Root())) {
        const std::string file = "man/" + Page_Name(*top) + ".1", page = machine.Read(file);
        EXPECT_EQ(page, Manual_Page(tree, *top));
        if (has_groff) {
            EXPECT_EQ(Bash("groff -man -ww -z -Tutf8 " + machine.Path(file)), "") << page;
        }
        for (const char *part : {".TH ", ".SH NAME\n", ".SH SYNOPSIS\n", ".SH OPTIONS", ".SH EXIT STATUS\n"})
            EXPECT_NE(page.find(part), page.npos) << part;
        For_Each_Command(*top, [&](const CLI::App &command) {
            EXPECT_FALSE(command.get_description().empty()) << Full_Name_Of(command);
            for (const ArgumentFacts &option : Options_Of(command))
                EXPECT_NE(page.find("\\fB" + Roff_Text(option.names.back()) + "\\fR"), page.npos)
                    << Full_Name_Of(command) << " " << option.names.back();
        });
        EXPECT_NE(machine.Read("man/kelmara.1").find(Roff_Text(Page_Name(*top))), page.npos);
    }
    EXPECT_EQ(Roff_Text(".x\n'y\\-"), "\\&.x\n\\&\\(aqy\\e\\-");
    EXPECT_EQ(CommandRun({"manual", "number", "dial"}).exit_code, 0);
    EXPECT_EQ(CommandRun({"manual", "number", "none"}).errors,
              "kelmara: kelmara number has no command \"none\"\n");
}

TEST_F(ManualCommands, BashCompletesWhateverTheTreeHas) {
    const std::string script = machine.Path("completion");
    ASSERT_EQ(CommandRun({"completion", "bash", "--output", script}).exit_code, 0);
    EXPECT_EQ(Bash("bash -n " + script), "");
    const auto complete = [&](const std::string &words) {
        return Bash("cd " + machine.Path("") + "; source " + script + "; COMP_WORDS=(" + words +
                    "); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _kelmara; echo \"${COMPREPLY[*]}\"");
    };
    For_Each_Command(tree.Root(), [&](const CLI::App &command) {
        std::string commands, options;
        for (const CLI::App *each : Commands_Of(command))
            commands += (commands.empty() ? "" : " ") + each->get_name();
        if (!commands.empty()) {
            EXPECT_EQ(complete(Full_Name_Of(command) + " \"\""), commands + "\n");
        }
        const std::string offered = " " + complete(Full_Name_Of(command) + " -");
        for (const ArgumentFacts &option : Options_Of(command))
            EXPECT_NE(offered.find(" " + option.names.back()), offered.npos) << Full_Name_Of(command);
    });
    machine.Write("here/one file.sct", "");
    for (const auto &[words, reply] : std::vector<std::pair<std::string, std::string>>{
             {"kelmara num", "number"},
             {"kelmara --machine here number d", "dial"},
             {"kelmara number dial 911 --e", "--explain"},
             {"kelmara completion \"\"", "bash"},
             {"kelmara sections he", "here"},
             {"kelmara sections here/o", "here/one file.sct"},
             {"kelmara expand x --fields = here/", "here/one file.sct"},
             {"kelmara manual --all he", "here"},
             {"kelmara ltx check --against here/o", "here/one file.sct"},
             {"kelmara number dial 911 --from \"\"", ""},
             {"kelmara sections here/x here/", ""},
             {"kelmara none \"\"", ""}})
        EXPECT_EQ(complete(words), reply + "\n") << words;
}

} // namespace
