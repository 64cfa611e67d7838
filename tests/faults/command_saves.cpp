// What commands save, in this process: the target is a file of the machine, its registry, or a machine
// beside.

#include <tests/faults/save_paths.h>
#include <tests/support/registry_verbs.h>
#include <tools/command.h>

#include <platform/machine_contents.h>

#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

std::string Registry_File() {
    return Machine_Folder() + std::string("/registry/registry.log");
}

const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);

// A command ends with one of three exit codes, whatever fails.
int Exit_Code_Of(std::vector<const char *> arguments) {
    dup2(nowhere, STDOUT_FILENO);
    dup2(nowhere, STDERR_FILENO);
    arguments.insert(arguments.begin(), "kelmara");
    tools::CommandTree tree;
    tools::Add_All(tree);
    const int code = tree.Run(static_cast<int>(arguments.size()), arguments.data());
    if (code < 0 || code > 2) std::abort();
    return code;
}

bool Run(const std::vector<const char *> &arguments) {
    return Exit_Code_Of(arguments) == 0;
}

const std::string Strings = "one\tONE\t1\tcomment\ntwo\tTWO\t2\t \n";

bool Compile() {
    return Run({"ltx", "compile", "c:\\text", Target});
}
bool Set() {
    return Run({"ltx", "set", Target, "TWO", "new"});
}
// Once it is gone there is none of that identifier.
bool Delete() {
    const int code = Exit_Code_Of({"ltx", "delete", Target, "TWO"});
    return code == 0 || (code == 1 && Look_At_Target() == "new");
}
bool Merge() {
    return Run({"ltx", "merge", "c:\\text", "c:\\translation", Target});
}
bool Expand() {
    return Run({"expand", "c:\\template", "--var", "NAME=all", "--output", Target});
}
bool Export() {
    return Run({"reg", "export", "HKCU\\Faults", Target});
}
bool Complete() {
    return Run({"completion", "bash", "--output", Target});
}

/// What the command reads; what it saves where nothing goes wrong; and `old` in its place.
template <bool Save()>
void Prepare() {
    TestKey("Faults").Set("value", "text");
    Put("c:\\text", Strings);
    Put("c:\\translation", "zwei\tTWO\t2\t \n");
    Put("c:\\template", "Dear ^NAME^");
    Compile();
    const std::string old = Content_Of(Target);
    Save();
    Begin_With(old, Content_Of(Target));
}

// --- the registry -----------------------------------------------------------------------------------------

std::string Imported(const char *text) {
    std::string all = "REGEDIT4\r\n\r\n";
    for (const char *key : {"[HKEY_CURRENT_USER\\Faults]", "[HKEY_CURRENT_USER\\Faults\\Below]"})
        all += std::string(key) + "\r\n\"a\"=\"" + text + "\"\r\n\"b\"=\"" + text + "\"\r\n\r\n";
    return all;
}

bool Import() {
    return Run({"reg", "import", "c:\\new"});
}

void Prepare_Import() {
    Put("c:\\old", Imported("old"));
    Put("c:\\new", Imported("new"));
    Run({"reg", "import", "c:\\old"});
}

/// "partly" if they are not all the same.
std::string Together(const std::vector<std::string> &each) {
    for (const std::string &one : each) {
        if (one != "old" && one != "new") return "damaged: " + one;
    }
    return std::count(each.begin(), each.end(), each[0]) == std::ssize(each) ? each[0] : "partly";
}

std::string Look_At_Import() {
    const TestKey key("Faults"), below("Faults\\Below");
    std::vector<std::string> values;
    for (const TestKey *each : {&key, &below}) {
        for (const char *name : {"a", "b"}) values.emplace_back(each->Get(name).c_str());
    }
    return Together(values);
}

// A record in the middle that is none any more.
void Prepare_Repair() {
    for (const char *name : {"before", "damaged", "behind"}) TestKey("Faults").Set(name, name);
    std::fstream file(Registry_File(), std::ios::binary | std::ios::in | std::ios::out);
    const std::string stored{std::istreambuf_iterator<char>(file), {}};
    file.seekp(static_cast<long>(stored.find("damaged"))) << '!';
}

bool Repair() {
    return Run({"machine", "check", "--repair"});
}

/// With what was damaged kept beside it.
std::string Look_At_Repaired() {
    MachineRegistry registry = {};
    if (const LONG error = Look_At_Registry(&registry)) return "error " + std::to_string(error);
    const TestKey key("Faults");
    for (const std::string name : {"before", "behind"}) {
        if (key.Get(name) != name) return "lost: " + name;
    }
    if (registry.damaged > 0) return "old";
    for (const auto &entry : fs::directory_iterator(fs::path(Registry_File()).parent_path())) {
        if (entry.path().filename().string().starts_with("registry.log.damaged-")) return "new";
    }
    return "nothing kept";
}

// --- manual pages -----------------------------------------------------------------------------------------

bool Write_Pages() {
    return Run({"manual", "--all", Target});
}

std::vector<std::string> Pages() {
    std::vector<std::string> names;
    for (const auto &page : fs::directory_iterator(Machine_Folder() + std::string("/drive_c/expected")))
        names.push_back(page.path().filename());
    return names;
}

void Prepare_Pages() {
    Run({"manual", "--all", Expected});
    fs::create_directory(Machine_Folder() + std::string("/drive_c/target"));
    for (const std::string &name : Pages()) Put((std::string(Target) + "\\" + name).c_str(), "old");
}

std::string Look_At_Pages() {
    std::vector<std::string> each;
    for (const std::string &name : Pages()) {
        const std::string page = Content_Of((std::string(Target) + "\\" + name).c_str());
        const std::string expected = Content_Of((std::string(Expected) + "\\" + name).c_str());
        each.push_back(page == expected ? "new" : page);
    }
    return Together(each);
}

// --- machines ---------------------------------------------------------------------------------------------

void Prepare_Machine() {
    TestKey("Faults").Set("value", "text");
    Put("c:\\file", std::string(100000, 'f'));
    fs::create_directory_symlink("file", Machine_Folder() + std::string("/drive_c/link"));
}

std::string Clone_Folder() {
    return Machine_Folder() + std::string(Beside);
}

bool Clone() {
    const std::string folder = Clone_Folder();
    return fs::exists(folder) || Run({"machine", "clone", folder.c_str()});
}

std::string Look_At_Clone() {
    const std::string folder = Clone_Folder();
    if (!fs::exists(folder)) return "none";
    if (!Enter_Machine(folder.c_str())) return "no machine";
    const bool is_whole = Content_Of("c:\\file") == std::string(100000, 'f') &&
                          fs::is_symlink(folder + "/drive_c/link") &&
                          TestKey("Faults").Get("value").c_str() == std::string("text");
    return is_whole ? "new" : "damaged";
}

} // namespace

std::vector<SavePath> Command_Save_Paths() {
    using enum SaveWay;
    return {
        {"ltx compile", "old", [] { Prepare<Compile>(), Put(Target, "old"), Put(Former, "old"); }, Compile,
         Look_At_Target},
        {"ltx set", "old", Prepare<Set>, Set, Look_At_Target},
        {"ltx delete", "old", Prepare<Delete>, Delete, Look_At_Target},
        {"ltx merge", "old", Prepare<Merge>, Merge, Look_At_Target},
        {"expand", "old", Prepare<Expand>, Expand, Look_At_Target},
        {"reg export", "old", Prepare<Export>, Export, Look_At_Target},
        {"completion", "old", Prepare<Complete>, Complete, Look_At_Target},
        {"reg import", "old", Prepare_Import, Import, Look_At_Import, Takes_Back},
        {"machine check repair", "old", Prepare_Repair, Repair, Look_At_Repaired},
        {"manual pages", "old", Prepare_Pages, Write_Pages, Look_At_Pages, In_Steps},
        {"machine clone", "none", Prepare_Machine, Clone, Look_At_Clone},
    };
}
