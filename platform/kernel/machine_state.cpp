#include <platform/kernel/machine_state.h>

#include <platform/files/ownership.h>
#include <platform/kernel.h>
#include <platform/kernel/machine_number.h>
#include <platform/kernel/open_folder.h>
#include <platform/kernel/outcome.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <list>
#include <memory>
#include <mutex>
#include <new>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr char Not_Empty[] = ": neither a machine nor empty; it is left as it is";
constexpr char Not_Alone[] = ": not a folder of this user alone; it is left as it is";

struct Machine {
    std::string folder;
    std::string shared_memory_folder;
};

// Kept for the life of the process: exit routines may still ask for the machine.
struct State {
    std::mutex lock;
    std::list<Machine> entered; // the last one is in force; earlier ones keep their texts valid
    long refused = NO_ERROR;    // why the folder of the environment could not be had; said once
    unsigned serial = 1;
};

State &The_State() {
    static State *state = new State;
    return *state;
}

std::string Default_Folder() {
    if (const char *named = std::getenv("KELMARA_MACHINE"); named && *named) return named;
    if (const char *data = std::getenv("XDG_DATA_HOME"); data && *data == '/') {
        return std::string(data) + "/kelmara";
    }
    const char *home = std::getenv("HOME");
    if (!home || *home != '/') return {};
    return std::string(home) + "/.local/share/kelmara";
}

// Makes the folders that lead to `path`; what they are is the host's affair.
void Make_Parents(const std::string &path) {
    for (std::size_t slash = path.find('/', 1); slash != std::string::npos;
         slash = path.find('/', slash + 1)) {
        Make_Owners_Parent(path.substr(0, slash));
    }
}

// A folder that holds anything else is somebody's own. What another process makes of it at this moment, or
// was killed in the middle of, is not. `unseen`: the answer for a folder that cannot be looked into.
bool May_Become_A_Machine(const std::string &folder, bool unseen) {
    const auto is_one = [&] {
        return faccessat(AT_FDCWD, (folder + "/machine.id").c_str(), F_OK, AT_EACCESS) == 0;
    };
    const OpenFolder opened = Open_Folder(folder);
    if (!opened) return unseen || is_one();
    for (;;) {
        errno = 0;
        const dirent *const entry = readdir(opened.get());
        if (!entry) return errno == 0 || is_one();
        const std::string name = entry->d_name;
        if (name != "." && name != ".." && !Is_Machine_Number_Under_Way(name)) return is_one();
    }
}

// Empty when the folder has no number, or the number cannot be read.
std::string Shared_Memory_Folder_Of(const std::string &folder, const std::string &number) {
    struct stat status;
    if (number.empty() || stat(folder.c_str(), &status) != 0) return {};
    char name[128];
    std::snprintf(name, sizeof name, "/dev/shm/kelmara-%u-%llx-%llx-%s", static_cast<unsigned>(geteuid()),
                  static_cast<unsigned long long>(status.st_dev),
                  static_cast<unsigned long long>(status.st_ino), number.c_str());
    return name;
}

long Whole_Path(const std::string &named, std::string &folder) {
    folder = named;
    if (folder[0] != '/') {
        char here[PATH_MAX];
        if (!getcwd(here, sizeof here)) {
            Report_Machine_Trouble(named + ": the current directory that it counts from is gone");
            return ERROR_PATH_NOT_FOUND;
        }
        folder = std::string(here) + "/" + folder;
    }
    while (folder.size() > 1 && folder.back() == '/') folder.pop_back();
    return NO_ERROR;
}

long Make_Machine_Folder(const std::string &folder) {
    Make_Parents(folder);
    struct stat before;
    const bool there = lstat(folder.c_str(), &before) == 0;
    if (!May_Become_A_Machine(folder, true)) {
        Report_Machine_Trouble(folder + Not_Empty);
        return ERROR_ACCESS_DENIED;
    }
    const long error = Make_Private_Folder(folder);
    if (error != NO_ERROR) {
        Report_Machine_Trouble(folder + (error == ERROR_ACCESS_DENIED ? Not_Alone : ": cannot be made"));
    }
    if (error != NO_ERROR || May_Become_A_Machine(folder, false)) return error;
    // It could not be looked into before.
    const bool as_it_was =
        !there || fchmodat(AT_FDCWD, folder.c_str(), before.st_mode & 07777, AT_SYMLINK_NOFOLLOW) == 0;
    Report_Machine_Trouble(folder + (as_it_was ? Not_Empty : ": neither a machine nor empty"));
    return ERROR_ACCESS_DENIED;
}

long Prepare(const std::string &named, Machine &machine) {
    if (named.empty()) {
        Report_Machine_Trouble("no folder: set KELMARA_MACHINE, or HOME");
        return ERROR_PATH_NOT_FOUND;
    }
    std::string folder;
    if (const long error = Whole_Path(named, folder); error != NO_ERROR) return error;
    if (const long error = Make_Machine_Folder(folder); error != NO_ERROR) return error;
    char real[PATH_MAX];
    if (!realpath(folder.c_str(), real)) {
        Report_Machine_Trouble(folder + ": its path cannot be followed");
        return ERROR_PATH_NOT_FOUND;
    }
    machine.folder = real;
    if (!Is_Own_Folder(machine.folder)) { // another one by now
        Report_Machine_Trouble(machine.folder + Not_Alone);
        return ERROR_ACCESS_DENIED;
    }
    const std::string number = Read_Or_Make_Machine_Number(machine.folder);
    const bool refused = number.empty() && errno == Not_This_Users_Own;
    machine.shared_memory_folder = Shared_Memory_Folder_Of(machine.folder, number);
    if (machine.shared_memory_folder.empty()) {
        Report_Machine_Trouble(machine.folder + "/machine.id: cannot be read or written");
        return refused ? ERROR_ACCESS_DENIED : ERROR_PATH_NOT_FOUND;
    }
    return NO_ERROR;
}

// Then Prepare has nothing to make and nothing to complain of.
bool Is_Whole_Machine(const std::string &folder) {
    return !folder.empty() && Is_Own_Folder(folder) && !Read_Machine_Number(folder).empty();
}

// What Prepare would answer of a folder that is there, without a word.
long Refusal_Of(const std::string &folder) {
    if (folder.empty()) return NO_ERROR;
    if (const long error = Refusal_Of_Folder(folder); error != NO_ERROR) return error;
    const bool refused = Read_Machine_Number(folder).empty() && errno == Not_This_Users_Own;
    return refused ? ERROR_ACCESS_DENIED : NO_ERROR;
}

// Null when there is no machine to be had. The caller holds the lock.
const Machine *Current(State &state) {
    if (!state.entered.empty()) return &state.entered.back();
    if (state.refused != NO_ERROR) return nullptr;
    Machine machine;
    state.refused = Prepare(Default_Folder(), machine);
    if (state.refused != NO_ERROR) return nullptr;
    state.entered.push_back(machine);
    return &state.entered.back();
}

} // namespace

unsigned Machine_Serial() {
    State &state = The_State();
    std::lock_guard guard(state.lock);
    return state.serial;
}

std::string Machine_Folder_Path() {
    State &state = The_State();
    std::lock_guard guard(state.lock);
    const Machine *machine = Current(state);
    return machine ? machine->folder : std::string();
}

std::string Shared_Memory_Folder_Path() {
    State &state = The_State();
    std::lock_guard guard(state.lock);
    const Machine *machine = Current(state);
    return machine ? machine->shared_memory_folder : std::string();
}

long Why_No_Machine(long otherwise) {
    State &state = The_State();
    std::lock_guard guard(state.lock);
    return state.entered.empty() && state.refused == ERROR_ACCESS_DENIED ? state.refused : otherwise;
}

void Report_Machine_Trouble(const std::string &text) {
    std::fprintf(stderr, "kelmara machine: %s\n", text.c_str());
}

extern "C" {

unsigned long Machine_In_Force() try {
    State &state = The_State();
    std::lock_guard guard(state.lock);
    if (state.entered.empty() && (state.refused != NO_ERROR || !Is_Whole_Machine(Default_Folder()))) return 0;
    return Current(state) ? state.serial : 0;
} catch (const std::bad_alloc &) {
    return 0;
}

LONG Machine_Refusal() try {
    State &state = The_State();
    std::lock_guard guard(state.lock);
    if (!state.entered.empty()) return NO_ERROR;
    return state.refused != NO_ERROR ? state.refused : Refusal_Of(Default_Folder());
} catch (const std::bad_alloc &) {
    return ERROR_NOT_ENOUGH_MEMORY;
}

const char *Machine_Folder() try {
    State &state = The_State();
    std::lock_guard guard(state.lock);
    const Machine *machine = Current(state);
    if (!machine) SetLastError(static_cast<DWORD>(state.refused));
    return machine ? machine->folder.c_str() : nullptr;
} catch (const std::bad_alloc &) {
    return nullptr;
}

bool Remove_Machine(const char *folder) try {
    char real[PATH_MAX];
    if (!folder || !realpath(folder, real)) return false;
    struct stat status;
    if (lstat(real, &status) != 0 || !S_ISDIR(status.st_mode) || status.st_uid != geteuid()) return false;
    const std::string shared = Shared_Memory_Folder_Of(real, Read_Machine_Number(real));
    if (shared.empty()) return false;
    // Its number goes last: until then the folder can be told for what it is.
    std::error_code error;
    if (Is_Own_Folder(shared)) std::filesystem::remove_all(shared, error);
    std::filesystem::directory_iterator entry(real, error);
    for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
        if (entry->path().filename() == "machine.id") continue;
        std::filesystem::remove_all(entry->path(), error);
        if (error) return false;
    }
    if (error) return false;
    std::filesystem::remove(std::string(real) + "/machine.id", error);
    return rmdir(real) == 0;
} catch (const std::bad_alloc &) {
    return false;
}

bool Enter_Machine(const char *folder) try {
    Machine machine;
    if (!Succeed_Or_Tell(folder ? Prepare(folder, machine) : ERROR_INVALID_PARAMETER)) return false;
    State &state = The_State();
    std::lock_guard guard(state.lock);
    state.entered.push_back(machine);
    ++state.serial;
    return true;
} catch (const std::bad_alloc &) {
    return false;
}
}
