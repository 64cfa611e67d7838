#include <tools/command.h>
#include <tools/manual/command_facts.h>

#include <algorithm>

namespace tools {

namespace {

constexpr int Many = 1 << 20; // more than any stated number of values

bool Has_Any(const std::string &text, std::initializer_list<const char *> words) {
    return std::any_of(words.begin(), words.end(),
                       [&](const char *word) { return text.find(word) != text.npos; });
}

ArgumentFacts::Kind Kind_Of(const std::string &value, const std::string &description) {
    if (Has_Any(value, {"FOLDER"})) return ArgumentFacts::Kind::Folder;
    const bool is_file = Has_Any(value, {"FILE", "TEMPLATE", "TABLE", "SOURCE", "TRANSLATION"}) ||
                         Has_Any(description, {"standard input", "standard output"});
    return is_file ? ArgumentFacts::Kind::File : ArgumentFacts::Kind::Any;
}

/// "TEXT:{a,b}" has the choices a and b.
std::vector<std::string> Choices_In(const std::string &type) {
    const std::size_t open = type.find('{'), close = type.find('}', open);
    std::vector<std::string> choices;
    if (open == type.npos || close == type.npos) return choices;
    std::string rest = type.substr(open + 1, close - open - 1);
    for (std::size_t comma = 0; comma != rest.npos; rest.erase(0, comma + 1)) {
        comma = rest.find(',');
        choices.push_back(rest.substr(0, comma));
        if (comma == rest.npos) break;
    }
    return choices;
}

std::string Joined(const std::vector<std::string> &parts) {
    std::string joined;
    for (const std::string &part : parts) joined += (joined.empty() ? "" : "|") + part;
    return joined;
}

ArgumentFacts Facts_Of(const CLI::Option &option) {
    ArgumentFacts facts;
    for (const std::string &name : option.get_snames()) facts.names.push_back("-" + name);
    for (const std::string &name : option.get_lnames()) facts.names.push_back("--" + name);
    facts.description = option.get_description();
    facts.is_required = option.get_required();
    facts.repeats = option.get_items_expected_max() >= Many;
    if (option.get_items_expected_max() == 0) return facts;
    const std::string type = option.get_type_name();
    const std::string place = option.get_positional() ? option.get_name(true) : "";
    facts.choices = Choices_In(type);
    facts.kind = Kind_Of(place + " " + type.substr(0, type.find(':')), facts.description);
    facts.value = !place.empty()           ? place
                  : !facts.choices.empty() ? Joined(facts.choices)
                                           : type.substr(0, type.find(':'));
    return facts;
}

template <class Keep>
std::vector<ArgumentFacts> All_Of(const CLI::App &command, Keep keep) {
    std::vector<ArgumentFacts> all;
    for (const CLI::Option *option : command.get_options())
        if (!option->get_group().empty() && keep(*option)) all.push_back(Facts_Of(*option));
    return all;
}

std::string Written(const ArgumentFacts &argument) {
    std::string text = argument.names.empty() ? "" : argument.names.back();
    if (!text.empty() && !argument.value.empty()) text += " ";
    text += argument.value;
    return argument.is_required ? text : "[" + text + "]";
}

} // namespace

std::vector<ArgumentFacts> Places_Of(const CLI::App &command) {
    return All_Of(command, [](const CLI::Option &option) { return !option.nonpositional(); });
}

std::vector<ArgumentFacts> Options_Of(const CLI::App &command) {
    return All_Of(command, [](const CLI::Option &option) { return option.nonpositional(); });
}

std::vector<ArgumentFacts> Options_Of_All(const CLI::App &root) {
    return All_Of(root, [&](const CLI::Option &option) {
        return option.nonpositional() && &option != root.get_help_ptr() && &option != root.get_version_ptr();
    });
}

std::vector<const CLI::App *> Commands_Of(const CLI::App &command) {
    return command.get_subcommands(
        [](const CLI::App *each) { return !each->get_group().empty() && !each->get_name().empty(); });
}

std::string Full_Name_Of(const CLI::App &command) {
    const CLI::App *const parent = command.get_parent();
    return parent == nullptr ? command.get_name() : Full_Name_Of(*parent) + " " + command.get_name();
}

std::string Synopsis_Of(const CLI::App &command) {
    std::string text;
    const auto add = [&](const ArgumentFacts &argument) {
        text += (text.empty() ? "" : " ") + Written(argument) + (argument.repeats ? "..." : "");
    };
    for (const ArgumentFacts &option : Options_Of(command))
        if (option.names.back() != "--help") add(option);
    for (const ArgumentFacts &place : Places_Of(command)) add(place);
    if (!Commands_Of(command).empty()) text += text.empty() ? "COMMAND ..." : " COMMAND ...";
    return text;
}

} // namespace tools
