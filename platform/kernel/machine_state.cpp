#include <platform/kernel/machine_state.h>

#include <platform/kernel.h>
#include <platform/kernel/file_descriptor.h>
#include <platform/kernel/open_folder.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <list>
#include <memory>
#include <mutex>
#include <new>
#include <sys/random.h>
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
    bool refused = false;       // the folder of the environment could not be had; said once
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
        mkdir(path.substr(0, slash).c_str(), 0700);
    }
}

// The machine's number: made once with the folder, kept in it. With the folder's own identity it names the
// shared memory, so that neither a copy of the folder nor a new one in its place meets what is not its own.
constexpr std::size_t Number_Length = 32;
constexpr unsigned Patience_For_Another_Maker = 2000; // milliseconds

// Empty when it is not there (errno ENOENT) or is none.
std::string Read_Number(const std::string &path) {
    char number[Number_Length + 1] = {};
    const FileDescriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW));
    if (!file) return {};
    errno = EINVAL;
    if (read(file.Get(), number, Number_Length) != static_cast<ssize_t>(Number_Length)) return {};
    return std::strspn(number, "0123456789abcdef") == Number_Length ? number : std::string();
}

bool Is_Empty_File(const std::string &path) {
    struct stat status;
    return lstat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) && status.st_size == 0;
}

std::string Make_Number(const std::string &folder) {
    const std::string path = folder + "/machine.id";
    for (int attempt = 0; attempt < 100; ++attempt) {
        if (Is_Empty_File(path)) unlink(path.c_str()); // what a power failure left of it
        std::string existing = Read_Number(path);
        if (!existing.empty() || errno != ENOENT) return existing;
        char number[Number_Length + 1] = {};
        unsigned char bytes[16];
        if (getrandom(bytes, sizeof bytes, 0) != sizeof bytes) return {};
        for (int i = 0; i < 16; ++i) std::snprintf(number + 2 * i, 3, "%02x", bytes[i]);
        // Written aside and linked into place, so that nobody ever reads half a number.
        const std::string aside = path + "." + number;
        FileDescriptor fresh(open(aside.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
        if (!fresh) return {};
        const bool written =
            write(fresh.Get(), number, Number_Length) == static_cast<ssize_t>(Number_Length) &&
            fsync(fresh.Get()) == 0;
        fresh.Close();
        if (written && link(aside.c_str(), path.c_str()) != 0 && errno != EEXIST) {
            unlink(aside.c_str());
            return {};
        }
        unlink(aside.c_str());
        if (!written) return {};
    }
    return {};
}

// Two that mend a folder at once would undo each other's work: one at a time.
std::string Read_Or_Make_Number(const std::string &folder) {
    std::string number = Read_Number(folder + "/machine.id");
    if (!number.empty()) return number;
    const FileDescriptor whole(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (whole) Lock_File_In_Time(whole.Get(), LOCK_EX, Patience_For_Another_Maker);
    number = Make_Number(folder);
    if (whole) Unlock_File(whole.Get());
    return number;
}

// A folder that holds anything else is somebody's own.
bool May_Become_A_Machine(const std::string &folder) {
    const OpenFolder opened = Open_Folder(folder);
    int entries = 0;
    while (opened && entries <= 2 && readdir(opened.get())) ++entries; // "." and ".." are always there
    return entries <= 2 || access((folder + "/machine.id").c_str(), F_OK) == 0;
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

bool Prepare(const std::string &named, Machine &machine) {
    if (named.empty()) {
        Report_Machine_Trouble("no folder: set KELMARA_MACHINE, or HOME");
        return false;
    }
    std::string folder = named;
    if (folder[0] != '/') {
        char here[PATH_MAX];
        if (!getcwd(here, sizeof here)) {
            Report_Machine_Trouble(named + ": the current directory that it counts from is gone");
            return false;
        }
        folder = std::string(here) + "/" + folder;
    }
    while (folder.size() > 1 && folder.back() == '/') folder.pop_back();
    Make_Parents(folder);
    if (!May_Become_A_Machine(folder)) {
        Report_Machine_Trouble(folder + ": neither a machine nor empty; it is left as it is");
        return false;
    }
    if (const long error = Make_Private_Folder(folder); error != NO_ERROR) {
        Report_Machine_Trouble(folder + (error == ERROR_ACCESS_DENIED
                                             ? ": not a folder of this user alone; it is left as it is"
                                             : ": cannot be made"));
        return false;
    }
    char real[PATH_MAX];
    if (!realpath(folder.c_str(), real)) {
        Report_Machine_Trouble(folder + ": its path cannot be followed");
        return false;
    }
    machine.folder = real;
    machine.shared_memory_folder =
        Shared_Memory_Folder_Of(machine.folder, Read_Or_Make_Number(machine.folder));
    if (machine.shared_memory_folder.empty()) {
        Report_Machine_Trouble(machine.folder + "/machine.id: cannot be read or written");
        return false;
    }
    return true;
}

// Then Prepare has nothing to make and nothing to complain of.
bool Is_Whole_Machine(const std::string &folder) {
    struct stat status;
    return !folder.empty() && lstat(folder.c_str(), &status) == 0 && S_ISDIR(status.st_mode) &&
           status.st_uid == geteuid() && !Read_Number(folder + "/machine.id").empty();
}

// Null when there is no machine to be had. The caller holds the lock.
const Machine *Current(State &state) {
    if (!state.entered.empty()) return &state.entered.back();
    if (state.refused) return nullptr;
    Machine machine;
    if (!Prepare(Default_Folder(), machine)) {
        state.refused = true;
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

long Make_Private_Folder(const std::string &path) {
    if (mkdir(path.c_str(), 0700) != 0 && errno != EEXIST) {
        return errno == ENOSPC ? ERROR_DISK_FULL : ERROR_PATH_NOT_FOUND;
    }
    struct stat status;
    if (lstat(path.c_str(), &status) != 0) return ERROR_PATH_NOT_FOUND;
    if (!S_ISDIR(status.st_mode) || status.st_uid != geteuid()) return ERROR_ACCESS_DENIED;
    if ((status.st_mode & 0077) != 0 && chmod(path.c_str(), 0700) != 0) return ERROR_ACCESS_DENIED;
    return NO_ERROR;
}

void Report_Machine_Trouble(const std::string &text) {
    std::fprintf(stderr, "kelmara machine: %s\n", text.c_str());
}

extern "C" {

unsigned long Machine_In_Force() try {
    State &state = The_State();
    std::lock_guard guard(state.lock);
    if (state.entered.empty() && (state.refused || !Is_Whole_Machine(Default_Folder()))) return 0;
    return Current(state) ? state.serial : 0;
} catch (const std::bad_alloc &) {
    return 0;
}

const char *Machine_Folder() try {
    State &state = The_State();
    std::lock_guard guard(state.lock);
    const Machine *machine = Current(state);
    return machine ? machine->folder.c_str() : nullptr;
} catch (const std::bad_alloc &) {
    return nullptr;
}

bool Remove_Machine(const char *folder) try {
    char real[PATH_MAX];
    if (!folder || !realpath(folder, real)) return false;
    struct stat status;
    if (lstat(real, &status) != 0 || !S_ISDIR(status.st_mode) || status.st_uid != geteuid()) return false;
    const std::string shared = Shared_Memory_Folder_Of(real, Read_Number(std::string(real) + "/machine.id"));
    if (shared.empty()) return false;
    // Its number goes last: until then the folder can be told for what it is.
    std::error_code error;
    std::filesystem::remove_all(shared, error);
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
    if (!folder || !Prepare(folder, machine)) return false;
    State &state = The_State();
    std::lock_guard guard(state.lock);
    state.entered.push_back(machine);
    ++state.serial;
    return true;
} catch (const std::bad_alloc &) {
    return false;
}
}
