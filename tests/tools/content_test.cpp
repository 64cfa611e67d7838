// Section files, define files and templates: what a command says of a text is what the library makes of it.

#include <tests/content/damaged_texts.h>
#include <tests/support/test_machine.h>
#include <tests/tools/command_run.h>

#include <tools/content/define_lines.h>
#include <tools/content/section_lines.h>
#include <tools/content/template_tokens.h>
#include <tools/json.h>
#include <tools/output.h>

#include <chrono>
#include <random>

namespace {

using namespace tools;
using ContentCommands = MachineTest;

/// Texts of parts, some long, in no order that makes sense.
std::string Random_Text(std::mt19937 &random, const std::vector<std::string> &parts) {
    std::string text;
    for (unsigned count = random() % 30; count > 0; --count) text += parts[random() % parts.size()];
    return text;
}

void Expect_Same(const std::vector<ParsedSection> &whole, const std::vector<ParsedSection> &read) {
    ASSERT_EQ(whole.size(), read.size());
    for (std::size_t i = 0; i < whole.size(); ++i) {
        EXPECT_EQ(whole[i].name, read[i].name);
        ASSERT_EQ(whole[i].items.size(), read[i].items.size());
        for (std::size_t j = 0; j < whole[i].items.size(); ++j) {
            EXPECT_EQ(whole[i].items[j].name, read[i].items[j].name);
            EXPECT_EQ(whole[i].items[j].value, read[i].items[j].value);
        }
    }
}

// A line that does not give what the explanation says makes the reader fail.
void Expect_Explained(const std::string &text, bool strip_quotes) {
    SCOPED_TRACE(testing::PrintToString(text));
    std::vector<ParsedSection> whole, read;
    const long result = Parse_Sections(text, strip_quotes, whole);
    bool fault = false;
    unsigned long lines = 0;
    SectionReader reader(text, strip_quotes);
    for (SectionReader::Line line; reader.Next(line);) {
        for (const ParsedItem &item : line.items) read.back().items.push_back(item);
        for (const ParsedSection &section : line.sections) read.push_back(section);
        EXPECT_EQ(line.look.number, ++lines);
        EXPECT_EQ(line.look.reason.empty() || line.look.is_fault,
                  !line.sections.empty() || !line.items.empty() || line.look.is_fault);
        fault = fault || line.look.is_fault;
    }
    EXPECT_EQ(fault, result != 0);
    Expect_Same(whole, read);
}

TEST_F(ContentCommands, SectionsAreExplainedAsTheyAreParsed) {
    const std::string good =
        "; texts\r\n[Dial Up]\r\nNumber = \"+1 (206)\" ; ours\r\n\r\nfoo\nmy key==b\r[x] y\n"
        "k=[two][3]=4\n";
    for (const bool strip : {true, false}) {
        For_Each_Damage(good, [&](const std::string &text) { Expect_Explained(text, strip); });
        std::mt19937 random(7);
        const std::string name(255, 'n'), zero(1, '\0');
        const std::vector<std::string> parts = {
            "[",     "]",  "[a]", "[b]",           "=", "k", ";", "\"", " ", "\t", "\r", "\n", "\r\n",
            "k=v\n", zero, name,  "[" + name + "]"};
        for (int i = 0; i < 3000; ++i) Expect_Explained(Random_Text(random, parts), strip);
    }
}

TEST_F(ContentCommands, SectionsStandLineByLineUpToTheFault) {
    const CommandRun run({"sections", "-"}, "a\n[one]\nb = \"1\" ;2\nB=[two]\n[bad\nx=1\n");
    EXPECT_EQ(run.exit_code, 2);
    EXPECT_EQ(run.errors, "standard input:5: a section's name has no \"]\" on its line\n");
    EXPECT_EQ(run.output,
              "1  - no \"=\": it begins the name of the next item\n"
              "2  [ONE]\n"
              "3    ab = 1\n"
              "3      (its name begins on line 1)\n"
              "3      (\";\" in column 9 begins a comment: the value is cut there)\n"
              "4  [TWO]\n"
              "4    B = \n"
              "4      (\"[\" in front of a value begins a section: the item is in that one, empty)\n"
              "5  ! a section's name has no \"]\" on its line\n"
              "6  - not read: the parser stopped in front of it\n"
              "2 sections, 2 items\n");
    const CommandRun as_json({"sections", "--json", "--keep-quotes", "-"}, "[one]\nb=\"\x80\"\nB=2\n");
    EXPECT_EQ(as_json.exit_code, 0) << as_json.errors;
    const Json json = Json::parse(as_json.output);
    EXPECT_EQ(json["sections"][0]["items"][0]["value"], "\"\xE2\x82\xAC\"");
    EXPECT_EQ(json["remarks"][0]["text"], "hidden by the item of that name on line 2");
    EXPECT_TRUE(json["fault"].is_null());
    EXPECT_EQ(CommandRun({"sections", machine.Path("missing")}).exit_code, 2);
}

TEST_F(ContentCommands, DefinesAreFoundOnTheirLines) {
    std::mt19937 random(8);
    const std::vector<std::string> parts = {
        "#define", "#define ",           "#define A 'AAAA'\r\n", "'", " ", "\t", "x", "\r", "\n",
        "\r\n",    std::string(70, 'v'), std::string(64, 'n')};
    for (int i = 0; i < 300; ++i) {
        const std::string text =
            Random_Text(random, parts) + (i % 10 == 0 ? std::string("\0#define B 1\n", 13) : "");
        SCOPED_TRACE(testing::PrintToString(text));
        const std::vector<FoundDefine> found = Find_Defines(text);
        std::size_t taken = 0;
        bool all_taken = true;
        for (const FoundDefine &each : found) {
            taken += each.is_taken;
            all_taken = all_taken && each.is_taken;
            // What stands in front of a define's line defines what stands in front of it.
            TextLines lines(text);
            std::size_t start = 0;
            for (std::string_view line; lines.Next(line) && lines.Number() < each.line;)
                start = lines.Behind();
            const auto earlier = std::count_if(found.begin(), found.end(),
                                               [&](const FoundDefine &one) { return one.line < each.line; });
            if (all_taken) {
                EXPECT_EQ(Parse_Defines(text.substr(0, start)).size(), static_cast<std::size_t>(earlier));
            }
        }
        EXPECT_EQ(Parse_Defines(text).size(), taken);
    }
}

TEST_F(ContentCommands, DefinesTellWhatIsLost) {
    const std::string longest(64, 'v');
    const CommandRun run({"defines", "-"}, "// names\r\n#define A 'AAAA'\r\n#define A 'BBBB'\n#define L " +
                                               longest + "v\r\n#define N\r\nM 'NNNN'\r\n");
    EXPECT_EQ(run.exit_code, 0) << run.errors;
    EXPECT_EQ(run.output, "1  - no \"#define\"\n"
                          "2  A      'AAAA'\n"
                          "3  A      'BBBB\n"
                          "3      (hidden by the one of the same name above)\n"
                          "3      (the line ends in a bare line feed: the value loses its last character)\n"
                          "4  L      " +
                              longest.substr(1) + "\n" +
                              "4      (the value is cut to 63 bytes)\n"
                              "5  N\\r\\nM 'NNNN'\n"
                              "5      (the name goes on behind the line's end: no blank stands behind it)\n"
                              "6  - part of the name that begins on line 5\n"
                              "4 defines\n");
    std::string one_line; // of which every define once looked for the end
    for (int i = 0; i < 1000000; ++i) one_line += "#define ";
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(Find_Defines(one_line).size(), 1000000u);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(15));
    EXPECT_EQ(
        Json::parse(CommandRun({"defines", "-", "--json"}, "#define A 'AAAA'\r\n").output)["defines"].dump(),
        R"([{"name":"A","value":"'AAAA'","line":1}])");
}

/// What the engine makes of a text whose tokens have no values.
std::string Without_Tokens(const std::string &text) {
    std::string left;
    std::size_t at = 0;
    const auto take_to = [&](std::size_t end) {
        for (; at < end; at += std::string_view("$%&<^").find(text[at]) != std::string::npos ? 2 : 1)
            left += text[at];
    };
    for (const TemplateToken &token : Find_Tokens(text)) {
        take_to(token.place);
        if (token.end == TemplateToken::Missing) return left;
        at = token.place + token.text.size();
    }
    take_to(text.size());
    return left;
}

TEST_F(ContentCommands, TokensAreFoundAsTheEngineFindsThem) {
    ComponentDescriptor descriptor = {};
    CTokenizer tokenizer;
    tokenizer.Use_Component_Desc(&descriptor);
    std::mt19937 random(9);
    const std::vector<std::string> parts = {"%", "%", "<", ">", "a", "\n", std::string(254, 'n')};
    for (int i = 0; i < 3000; ++i) {
        const std::string text = Random_Text(random, parts);
        std::string result(text.size() + 1, '\0');
        ASSERT_TRUE(tokenizer.Tokenize(text.c_str(), result.data(), static_cast<int>(result.size())));
        EXPECT_EQ(result.c_str(), Without_Tokens(text)) << text;
    }
}

TEST_F(ContentCommands, TemplatesAreFilledInWholeOrNotAtAll) {
    machine.Write("a.def", "#define Name 'NAME'\r\n#define Short 'N'\r\n");
    machine.Write("a.sct", "[CUST]\nName=Ann\nT=x\n[SERV]\nPROV=^no^\n");
    const std::vector<std::string> options = {"expand",        "-",
                                              "--var",         "greeting=Hi",
                                              "--define-file", machine.Path("a.def"),
                                              "--fields",      machine.Path("a.sct"),
                                              "--descriptor",  "One, two,CODE,-3"};
    EXPECT_EQ(CommandRun(options, "^Greeting^ &Name& $'SERV','PROV'$ $'CUST','T   '$ 100%% <name> <VERSION> "
                                  "<SERIALCODE>%NONE%.")
                  .output,
              "Hi Ann ^no^ x 100% One, two -3 CODE.");
    const struct {
        std::string text, error;
    } faults[] = {
        {"\n100% sure",
         "standard input:2: \"%\" begins a token that has no end; the character itself is written \"%%\"\n"},
        {"^A^\r\n^a^", "standard input:1: ^A^: no variable \"A\"; --var NAME=VALUE gives one\n"},
        {"a\r\nb\r&Short&",
         "standard input:3: &Short&: & tokens need --define-file and --fields, and a define of a quote and "
         "four characters\n"},
        {"$'NONE','PROV'$", "standard input:1: $'NONE','PROV'$: no section of that name in --fields\n"},
        {"$'SERV','NONE'$",
         "standard input:1: $'SERV','NONE'$: no such field in that section of the fields\n"},
        {"%" + std::string(256, 'a') + "%", "standard input:1: a token's name has at most 255 characters\n"},
        {std::string("a\0b", 3), "standard input:1: a zero byte, at which a template ends\n"},
    };
    machine.Write("out", "before");
    for (const auto &[text, error] : faults) {
        std::vector<std::string> arguments = options;
        arguments.insert(arguments.end(), {"--output", machine.Path("out")});
        const CommandRun run(arguments, text);
        EXPECT_EQ(run.exit_code, 2);
        EXPECT_EQ(run.errors, error);
        EXPECT_EQ(machine.Read("out"), "before");
    }
    for (const char *option : {"--fields", "--define-file"})
        EXPECT_EQ(CommandRun({"expand", "-", option, ""}).exit_code, 2) << option;
    for (const char *descriptor : {"", "a,b", "a,CODES,1", "a,CODE,1x", "a,CODE,99999999999"})
        EXPECT_EQ(CommandRun({"expand", "-", "--descriptor", descriptor}).exit_code, 2) << descriptor;

    std::string longer; // than the room that is tried first
    for (int i = 0; i < 3000; ++i) longer += "^v^";
    const std::string value(1024, 'v');
    EXPECT_EQ(
        CommandRun({"expand", "-", "--var", "V=" + value, "--output", machine.Path("out")}, longer).exit_code,
        0);
    EXPECT_EQ(machine.Read("out").size(), 3000u * 1024);
}

} // namespace
