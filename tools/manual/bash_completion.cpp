#include <tools/manual/bash_completion.h>
#include <tools/manual/command_facts.h>

namespace tools {

namespace {

constexpr char Functions[] = R"(
# What may stand there: file, folder, =CHOICE,CHOICE, or any.
_kelmara_offer() { # KIND BEGINNING
    case $1 in
        file) mapfile -t COMPREPLY < <(compgen -f -- "$2") ;;
        folder) mapfile -t COMPREPLY < <(compgen -d -- "$2") ;;
        =*) mapfile -t COMPREPLY < <(compgen -W "${1//[=,]/ }" -- "$2") ;;
    esac
    case $1 in file | folder) compopt -o filenames 2> /dev/null ;; esac
}

_kelmara() {
    local command=kelmara current=${COMP_WORDS[COMP_CWORD]} kind='' place=0 word i
    local -a kinds
    COMPREPLY=()
    for ((i = 1; i < COMP_CWORD; i++)); do
        word=${COMP_WORDS[i]}
        if [ "$word" = = ]; then
            continue
        elif [ -n "$kind" ]; then
            kind=''
        elif [[ $word == -?* ]]; then
            kind=${_kelmara_values["$command $word"]-}
        elif [ -n "${_kelmara_commands[$command]-}" ]; then
            command="$command $word"
        else
            place=$((place + 1))
        fi
    done
    [ "$current" != = ] || current=''
    if [ -n "$kind" ]; then
        _kelmara_offer "$kind" "$current"
    elif [[ $current == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "${_kelmara_options[$command]-}" -- "$current")
    elif [ -n "${_kelmara_commands[$command]-}" ]; then
        mapfile -t COMPREPLY < <(compgen -W "${_kelmara_commands[$command]}" -- "$current")
    else
        read -ra kinds <<< "${_kelmara_places[$command]-}"
        if [ "$place" -ge ${#kinds[@]} ] && [ ${#kinds[@]} -gt 0 ] && [[ ${kinds[-1]} == *+ ]]; then
            place=$((${#kinds[@]} - 1))
        fi
        kind=${kinds[place]-any}
        _kelmara_offer "${kind%+}" "$current"
    fi
}

complete -F _kelmara kelmara
)";

std::string Kind_Of(const ArgumentFacts &argument) {
    if (!argument.choices.empty()) {
        std::string kind;
        for (const std::string &choice : argument.choices) kind += (kind.empty() ? "=" : ",") + choice;
        return kind;
    }
    if (argument.kind == ArgumentFacts::Kind::File) return "file";
    return argument.kind == ArgumentFacts::Kind::Folder ? "folder" : "any";
}

/// Between single quotes, whatever it holds.
std::string Quoted(const std::string &text) {
    std::string quoted = "'";
    for (const char c : text) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
}

struct Tables {
    std::string commands, options, values, places;
};

void Set(std::string &table, const std::string &key, const std::string &value) {
    if (!value.empty()) table += "    [" + Quoted(key) + "]=" + Quoted(value) + "\n";
}

void Add(std::string &list, const std::string &word) {
    list += (list.empty() ? "" : " ") + word;
}

void Fill(Tables &tables, const CLI::App &command, const CLI::App &root) {
    const std::string name = Full_Name_Of(command);
    std::vector<ArgumentFacts> options = Options_Of(command);
    if (&command != &root)
        for (const ArgumentFacts &option : Options_Of_All(root)) options.push_back(option);
    std::string commands, names, kinds;
    for (const ArgumentFacts &option : options) {
        Add(names, option.names.back());
        for (const std::string &each : option.names)
            if (!option.value.empty()) Set(tables.values, name + " " + each, Kind_Of(option));
    }
    for (const ArgumentFacts &place : Places_Of(command))
        Add(kinds, Kind_Of(place) + (place.repeats ? "+" : ""));
    for (const CLI::App *each : Commands_Of(command)) Add(commands, each->get_name());
    Set(tables.commands, name, commands);
    Set(tables.options, name, names);
    Set(tables.places, name, kinds);
    for (const CLI::App *each : Commands_Of(command)) Fill(tables, *each, root);
}

} // namespace

std::string Bash_Completion(const CLI::App &root) {
    Tables tables;
    Fill(tables, root, root);
    const auto table = [](const char *name, const std::string &entries) {
        return std::string("declare -gA _kelmara_") + name + "=(\n" + entries + ")\n";
    };
    return "# Completion of the kelmara command for bash: `kelmara completion bash` made it.\n\n" +
           table("commands", tables.commands) + table("options", tables.options) +
           table("values", tables.values) + table("places", tables.places) + Functions;
}

} // namespace tools
