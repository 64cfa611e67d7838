#include <platform/kernel/machine_state.h>

#include <platform/files/ownership.h>
#include <platform/kernel.h>
#include <platform/kernel/machine_folder.h>
#include <platform/kernel/machine_number.h>
#include <platform/kernel/outcome.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <list>
#include <memory>
#include <mutex>
#include <new>
#include <sys/stat.h>
#include <unistd.h>

namespace {

struct Machine {
    std::string folder;
    std::string shared_memory_folder;
};

// Kept for the life of the process: exit routines may still ask for the machine.
struct State {
    std::mutex lock;
    std::list<Machine> entered; // the last one is in force; earlier ones keep their texts valid
    long failed = NO_ERROR;     // why the folder of the environment could not be had
    bool for_good = false;      // refused, or none is named: not tried again
    std::string said;           // of it; not said again
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

// `trouble`: what is to be said of a failure.
long Prepare(const std::string &named, Machine &machine, std::string &trouble) {
    if (named.empty()) {
        trouble = "no folder: set KELMARA_MACHINE, or HOME";
        return ERROR_PATH_NOT_FOUND;
    }
    std::string folder;
    if (const long error = Make_Machine_Folder(named, folder, trouble); error != NO_ERROR) return error;
    char real[PATH_MAX];
    if (!realpath(folder.c_str(), real)) {
        trouble = folder + ": its path cannot be followed";
        return ERROR_PATH_NOT_FOUND;
    }
    machine.folder = real;
    if (Is_Nothing_There(machine.folder)) {
        trouble = machine.folder + ": taken away again";
        return ERROR_PATH_NOT_FOUND;
    }
    if (!Is_Own_Folder(machine.folder)) { // another one by now
        trouble = machine.folder + Not_Of_This_User_Alone;
        return ERROR_ACCESS_DENIED;
    }
    const std::string number = Read_Or_Make_Machine_Number(machine.folder);
    const bool refused = number.empty() && errno == Not_This_Users_Own;
    machine.shared_memory_folder = Shared_Memory_Folder_Of(machine.folder, number);
    if (machine.shared_memory_folder.empty()) {
        trouble = machine.folder + "/machine.id: cannot be read or written";
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

void Keep_Failure(State &state, bool for_good, const std::string &trouble) {
    state.for_good = for_good;
    if (trouble == state.said) return;
    Report_Machine_Trouble(trouble);
    state.said = trouble;
}

// Null when there is no machine to be had. The caller holds the lock.
const Machine *Current(State &state) {
    if (!state.entered.empty()) return &state.entered.back();
    if (state.for_good) return nullptr;
    Machine machine;
    const std::string named = Default_Folder();
    std::string trouble;
    state.failed = Prepare(named, machine, trouble);
    if (state.failed != NO_ERROR) {
        Keep_Failure(state, state.failed == ERROR_ACCESS_DENIED || named.empty(), trouble);
        return nullptr;
    }
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
    return state.entered.empty() && state.failed == ERROR_ACCESS_DENIED ? state.failed : otherwise;
}

void Report_Machine_Trouble(const std::string &text) {
    std::fprintf(stderr, "kelmara machine: %s\n", text.c_str());
}

extern "C" {

unsigned long Machine_In_Force() try {
    State &state = The_State();
    std::lock_guard guard(state.lock);
    if (state.entered.empty() && (state.for_good || !Is_Whole_Machine(Default_Folder()))) return 0;
    return Current(state) ? state.serial : 0;
} catch (const std::bad_alloc &) {
    return 0;
}

LONG Machine_Refusal() try {
    State &state = The_State();
    std::lock_guard guard(state.lock);
    if (!state.entered.empty()) return NO_ERROR;
    const bool refused = state.for_good && state.failed == ERROR_ACCESS_DENIED;
    return refused ? state.failed : Refusal_Of(Default_Folder());
} catch (const std::bad_alloc &) {
    return ERROR_NOT_ENOUGH_MEMORY;
}

const char *Machine_Folder() try {
    State &state = The_State();
    std::lock_guard guard(state.lock);
    const Machine *machine = Current(state);
    if (!machine) SetLastError(static_cast<DWORD>(state.failed));
    return machine ? machine->folder.c_str() : nullptr;
} catch (const std::bad_alloc &) {
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
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
    std::string trouble;
    const long error = folder ? Prepare(folder, machine, trouble) : ERROR_INVALID_PARAMETER;
    if (!trouble.empty()) Report_Machine_Trouble(trouble);
    if (!Succeed_Or_Tell(error)) return false;
    State &state = The_State();
    std::lock_guard guard(state.lock);
    state.entered.push_back(machine);
    ++state.serial;
    return true;
} catch (const std::bad_alloc &) {
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return false;
}
}
