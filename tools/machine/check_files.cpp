// What a check looks at on the disk: settings, the registry's file, working files that were left.

#include <tools/machine/findings.h>

#include <tools/failure.h>
#include <tools/files.h>
#include <tools/interruption.h>
#include <tools/machine/settings_text.h>
#include <tools/working_file.h>

#include <platform/errors.h>
#include <platform/machine.h>
#include <platform/machine_contents.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace tools {

namespace {

constexpr std::size_t Largest_Settings = 1 << 20;
constexpr unsigned Long_Enough_To_Write = 500; // milliseconds

std::string In_Machine(const char *name) {
    return std::string(Machine_Folder()) + "/" + name;
}

// Damaged beyond doubt: what is only being written has gone on by the second look.
LONG Look_Twice(MachineRegistry &registry) {
    if (const LONG error = Look_At_Registry(&registry); error != ERROR_SUCCESS) return error;
    if (registry.torn == 0 && registry.left_aside == 0) return ERROR_SUCCESS;
    const MachineRegistry first = registry;
    Pause_Or_End(Long_Enough_To_Write);
    const LONG error = Look_At_Registry(&registry);
    if (registry.file_size != first.file_size) registry.torn = 0;
    return error;
}

void Add_Registry_Findings(const MachineRegistry &registry, const std::string &file, Findings &findings,
                           bool is_mended) {
    const auto add = [&](const std::string &text, const std::string &how) {
        findings.Add(file + ": " + text);
        if (is_mended) findings.Mended(how);
    };
    if (registry.damaged > 0)
        add(std::to_string(registry.damaged) + " damaged bytes, which are passed over",
            "written anew without them; the old file is kept beside it as registry.log.damaged-" +
                std::to_string(registry.generation) + ", or with a further number where there was one");
    if (registry.torn > 0)
        add(std::to_string(registry.torn) + " bytes that a writer left unfinished", "cut off");
    if (registry.left_aside) add("a rewriting was left unfinished beside it", "removed");
}

bool Are_Digits(const char *begin, const char *end) {
    return begin != end && std::all_of(begin, end, [](char c) { return c >= '0' && c <= '9'; });
}

/// Of a command (Working_Mark) whose process is there no more.
bool Is_Left_Working_File(const std::string &name) {
    const std::size_t mark = name.rfind(Working_Mark);
    if (mark == name.npos) return false;
    long process = 0;
    const char *const begin = name.data() + mark + std::strlen(Working_Mark), *const end =
                                                                                  name.data() + name.size();
    const auto [stop, error] = std::from_chars(begin, end, process);
    const bool is_whole = stop == end || (*stop == '-' && Are_Digits(stop + 1, end));
    return error == std::errc() && is_whole && process > 0 && kill(process, 0) != 0 && errno == ESRCH;
}

void Check_Working_File(const std::string &path, const std::string &what, Findings &findings, bool repair) {
    findings.Add(path + ": " + what);
    if (repair && unlink(path.c_str()) == 0) findings.Mended("removed");
}

} // namespace

void Check_Settings(Findings &findings) {
    const std::string file = In_Machine("machine.conf");
    struct stat status;
    if (lstat(file.c_str(), &status) != 0) return;
    if (!S_ISREG(status.st_mode) || status.st_uid != geteuid() || (status.st_mode & S_IWOTH) != 0)
        return findings.Add(file + ": not a file of this user alone, and left aside");
    try {
        const std::string text = Read_File(file);
        if (text.size() > Largest_Settings) return findings.Add(file + ": over a megabyte, and left aside");
        for (const SettingFault &fault : Faults_In_Settings(text))
            findings.Add(file + ":" + std::to_string(fault.line) + ": " + fault.text);
    } catch (const Failure &failure) {
        findings.Add(failure.what());
    }
}

void Check_Registry(Findings &findings, bool repair) {
    const std::string file = In_Machine("registry/registry.log");
    MachineRegistry registry = {};
    const LONG error = Look_Twice(registry);
    if (error == ERROR_FILE_NOT_FOUND) return;
    if (error == ERROR_BADDB) return findings.Add(file + ": not a registry of this machine");
    if (error != ERROR_SUCCESS)
        return findings.Add(file + ": cannot be read, error " + std::to_string(error));
    const bool wrong = registry.damaged > 0 || registry.torn > 0 || registry.left_aside;
    const LONG mended = wrong && repair ? Mend_Registry() : ERROR_ACCESS_DENIED;
    Add_Registry_Findings(registry, file, findings, mended == ERROR_SUCCESS);
    if (wrong && repair && mended != ERROR_SUCCESS)
        findings.Add(file + ": cannot be mended, error " + std::to_string(mended));
}

void Check_Working_Files(Findings &findings, bool repair) {
    using namespace std::filesystem;
    const std::string machine = Machine_Folder();
    std::error_code error;
    directory_iterator making(machine, error);
    for (; !error && making != directory_iterator(); making.increment(error)) {
        if (making->path().filename().string().starts_with("machine.id."))
            Check_Working_File(making->path(), "left from the making of the machine", findings, repair);
    }
    for (char letter = 'a'; letter < 'z'; ++letter) {
        const path drive = machine + "/drive_" + letter;
        if (is_symlink(drive, error)) continue;
        recursive_directory_iterator entry(drive, directory_options::skip_permission_denied, error);
        for (; !error && entry != recursive_directory_iterator(); entry.increment(error)) {
            End_If_Interrupted();
            std::error_code gone;
            if (Is_Left_Working_File(entry->path().filename()) && entry->is_regular_file(gone))
                Check_Working_File(entry->path(), "working file of a command that was killed", findings,
                                   repair);
        }
    }
}

} // namespace tools
