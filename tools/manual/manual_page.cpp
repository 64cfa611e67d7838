#include <tools/command.h>
#include <tools/manual/command_facts.h>
#include <tools/manual/manual_page.h>

#include <algorithm>
#include <cctype>

namespace tools {

namespace {

constexpr char Exit_Status[] =
    ".SH EXIT STATUS\n"
    ".TP\n0\nIt is done.\n"
    ".TP\n1\nWhat was asked for is not there, or a check failed.\n"
    ".TP\n2\nThe command was not understood, or something cannot be read or written.\n";
constexpr char Environment[] =
    ".SH ENVIRONMENT\n"
    ".TP\n.B KELMARA_MACHINE\nThe folder of the machine that commands work on.\n"
    ".TP\n.B XDG_DATA_HOME\nWithout KELMARA_MACHINE the machine is the folder kelmara in this one, and in\n"
    "~/.local/share without either.\n"
    ".TP\n.B TMPDIR\nWhere passing files and machines are made. Without it files are made in /tmp, and\n"
    "machines in /dev/shm, or in /tmp where that has no room.\n";

constexpr std::size_t Indent = 4; // of lines that stand as they are

std::string Upper(std::string text) {
    for (char &c : text) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return text;
}

/// A description as a sentence, and as what stands behind a dash.
std::string Sentence(std::string text) {
    if (text.empty()) return text;
    text[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(text[0])));
    return text.ends_with('.') ? text : text + ".";
}

std::string Phrase(std::string text) {
    if (text.empty()) return text;
    text[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(text[0])));
    if (text.ends_with('.')) text.pop_back();
    return text;
}

std::string Bold(const std::string &text) {
    return "\\fB" + Roff_Text(text) + "\\fR";
}

std::string Argument(const ArgumentFacts &argument) {
    std::string head;
    for (const std::string &name : argument.names) head += (head.empty() ? "" : ", ") + Bold(name);
    if (!argument.value.empty())
        head += (head.empty() ? "\\fI" : " \\fI") + Roff_Text(argument.value) + "\\fR";
    if (argument.repeats) head += " ...";
    std::string text = ".TP\n" + head + "\n" + Roff_Text(Sentence(argument.description)) + "\n";
    if (!argument.choices.empty() && argument.names.empty()) {
        text += "One of:";
        for (const std::string &choice : argument.choices) text += " " + Bold(choice);
        text += ".\n";
    }
    return text;
}

std::string Arguments(const CLI::App &command) {
    std::string text;
    for (const ArgumentFacts &place : Places_Of(command)) text += Argument(place);
    for (const ArgumentFacts &option : Options_Of(command))
        if (command.get_parent() == nullptr || option.names.back() != "--help") text += Argument(option);
    return text;
}

std::string Written(const CLI::App &command) {
    const std::string synopsis = Synopsis_Of(command);
    return Bold(Full_Name_Of(command)) + (synopsis.empty() ? "" : " " + Roff_Text(synopsis));
}

/// The command itself, or all below it that do something.
std::vector<const CLI::App *> Doers(const CLI::App &command) {
    std::vector<const CLI::App *> doers;
    for (const CLI::App *each : Commands_Of(command))
        for (const CLI::App *doer : Doers(*each)) doers.push_back(doer);
    if (doers.empty()) doers.push_back(&command);
    return doers;
}

std::string Laid_Out(const std::string &text) {
    std::string roff = ".PP\n";
    bool literal = false;
    for (std::size_t start = 0; start <= text.size();) {
        const std::size_t end = std::min(text.find('\n', start), text.size());
        const std::string line = text.substr(start, end - start);
        start = end + 1;
        const bool is_literal = line.starts_with(' ');
        if (is_literal != literal) roff += is_literal ? ".PP\n.RS 4\n.nf\n" : ".fi\n.RE\n.PP\n";
        literal = is_literal;
        if (line.empty())
            roff += ".PP\n";
        else
            roff +=
                Roff_Text(literal ? line.substr(std::min(line.find_first_not_of(' '), Indent)) : line) + "\n";
    }
    return roff + (literal ? ".fi\n.RE\n" : "");
}

/// The help's last words, without those that a command has from the one above it.
std::string Footer_Of(const CLI::App &command) {
    const std::string footer = command.get_footer();
    const bool is_its_own = command.get_parent() == nullptr || command.get_parent()->get_footer() != footer;
    return footer.empty() || !is_its_own ? "" : Laid_Out(footer);
}

/// What the command tells of itself in front of all else.
std::string Told_Description(CommandTree &tree, const CLI::App &command) {
    std::string text;
    for (const auto &[title, told] : tree.Manual_Of(&command))
        if (title == "DESCRIPTION") text += Laid_Out(told);
    return text;
}

/// The told texts of the page's commands, by title: the examples, or all others.
std::string Told(CommandTree &tree, const CLI::App &command, bool examples) {
    std::vector<std::pair<std::string, std::string>> sections;
    const auto add = [&](const CLI::App *each) {
        for (const auto &[title, text] : tree.Manual_Of(each)) {
            if ((title == "EXAMPLES") != examples || title == "DESCRIPTION") continue;
            const auto place =
                std::find_if(sections.begin(), sections.end(),
                             [&, &wanted = title](const auto &one) { return one.first == wanted; });
            if (place == sections.end())
                sections.emplace_back(title, Laid_Out(text));
            else
                place->second += Laid_Out(text);
        }
    };
    add(&command);
    if (command.get_parent() != nullptr)
        for (const CLI::App *doer : Doers(command))
            if (doer != &command) add(doer);
    std::string text;
    for (const auto &[title, section] : sections) text += ".SH " + Roff_Text(title) + "\n" + section;
    return text;
}

std::string Body_Of_Root(const CLI::App &root) {
    std::string text = ".SH COMMANDS\n";
    for (const CLI::App *each : Commands_Of(root))
        text += ".TP\n" + Bold(each->get_name()) + "\n" + Roff_Text(Sentence(each->get_description())) +
                "\nSee " + Bold(Page_Name(*each)) + "(1).\n";
    return text + ".SH OPTIONS\n" + Arguments(root);
}

std::string Body_Of_Command(const CLI::App &command, const CLI::App &root) {
    std::string text;
    const bool is_group = !Commands_Of(command).empty();
    if (is_group) text += ".SH COMMANDS\n";
    for (const CLI::App *doer : Doers(command)) {
        if (is_group)
            text += ".SS " + Roff_Text(Full_Name_Of(*doer)) + "\n" +
                    Roff_Text(Sentence(doer->get_description())) + "\n";
        else
            text += ".SH OPTIONS\n";
        text += Arguments(*doer);
        if (is_group) text += Footer_Of(*doer);
    }
    if (is_group) text += ".SH OPTIONS OF ALL COMMANDS\n";
    for (const ArgumentFacts &option : Options_Of_All(root)) text += Argument(option);
    return text + ".TP\n\\fB\\-h\\fR, \\fB\\-\\-help\\fR\nTell what the command does, and its arguments.\n";
}

std::string See_Also(const CLI::App &command, const CLI::App &root) {
    std::string text;
    for (const CLI::App *each : Commands_Of(root))
        if (each != &command && (command.get_parent() == nullptr))
            text += (text.empty() ? "" : ",\n") + Bold(Page_Name(*each)) + "(1)";
    if (command.get_parent() != nullptr) text = Bold(Page_Name(root)) + "(1)";
    return ".SH SEE ALSO\n" + text + "\n";
}

} // namespace

std::string Roff_Text(const std::string &text) {
    std::string roff;
    for (const char c : text) {
        const bool at_start = roff.empty() || roff.back() == '\n';
        if (at_start && (c == '.' || c == '\'')) roff += "\\&";
        if (c == '\\')
            roff += "\\e";
        else if (c == '-')
            roff += "\\-";
        else if (c == '^' || c == '~' || c == '`' || c == '\'')
            roff += c == '^' ? "\\(ha" : c == '~' ? "\\(ti" : c == '`' ? "\\(ga" : "\\(aq";
        else
            roff += c;
    }
    return roff;
}

std::string Page_Name(const CLI::App &command) {
    std::string name = Full_Name_Of(command);
    std::replace(name.begin(), name.end(), ' ', '-');
    return name;
}

std::string Manual_Page(CommandTree &tree, const CLI::App &command) {
    const CLI::App &root = tree.Root();
    const bool is_root = &command == &root;
    std::string text = ".TH " + Roff_Text(Upper(Page_Name(command))) +
                       " 1 \"\" \"kelmara " KELMARA_VERSION "\" \"The kelmara command\"\n";
    text += ".SH NAME\n" + Roff_Text(Page_Name(command)) + " \\- " +
            Roff_Text(Phrase(command.get_description())) + "\n.SH SYNOPSIS\n";
    for (const CLI::App *each : is_root ? std::vector<const CLI::App *>{&root} : Doers(command))
        text += Written(*each) + "\n.br\n";
    text += ".SH DESCRIPTION\n" + Roff_Text(Sentence(command.get_description())) + "\n" + Footer_Of(command) +
            Told_Description(tree, command);
    text += is_root ? Body_Of_Root(root) : Body_Of_Command(command, root);
    return text + Told(tree, command, false) + Exit_Status + Environment + Told(tree, command, true) +
           See_Also(command, root);
}

} // namespace tools
