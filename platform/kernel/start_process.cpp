#include <platform/kernel.h>

#include <platform/files/host_error.h>
#include <platform/files/paths.h>
#include <platform/kernel/child_watch.h>
#include <platform/kernel/machine_state.h>
#include <platform/kernel/outcome.h>
#include <platform/kernel/process_descriptor.h>
#include <platform/kernel/program_file.h>

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <new>
#include <spawn.h>
#include <sys/eventfd.h>
#include <sys/stat.h>
#include <sys/wait.h>

namespace {

constexpr char Machine_Variable[] = "KELMARA_MACHINE=";

// How the host starts the program: nothing of this process but its standard streams, no signal blocked,
// ignored or caught.
class SpawnRules {
  public:
    SpawnRules() {
        sigset_t signals;
        posix_spawn_file_actions_init(&actions_);
        posix_spawnattr_init(&attributes_);
        posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
        sigfillset(&signals);
        posix_spawnattr_setsigdefault(&attributes_, &signals);
        sigemptyset(&signals);
        posix_spawnattr_setsigmask(&attributes_, &signals);
    }
    ~SpawnRules() {
        posix_spawnattr_destroy(&attributes_);
        posix_spawn_file_actions_destroy(&actions_);
    }
    SpawnRules(const SpawnRules &) = delete;
    SpawnRules &operator=(const SpawnRules &) = delete;

    /// 0 or a number of errno.
    int Take(const Start &start) {
        if (!start.folder.empty()) {
            const int error = posix_spawn_file_actions_addchdir_np(&actions_, start.folder.c_str());
            if (error != 0) return error;
        }
        return posix_spawn_file_actions_addclosefrom_np(&actions_, STDERR_FILENO + 1);
    }
    const posix_spawn_file_actions_t *Actions() const { return &actions_; }
    const posix_spawnattr_t *Attributes() const { return &attributes_; }

  private:
    posix_spawn_file_actions_t actions_;
    posix_spawnattr_t attributes_;
};

std::vector<char *> Pointers(std::vector<std::string> &texts) {
    std::vector<char *> pointers;
    pointers.reserve(texts.size() + 1);
    for (std::string &text : texts) pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

// The one in force; where none can be had, the child is to be refused the one that this process was.
std::string Machine_For_Child() {
    const std::string machine = Machine_Folder_Path();
    const char *named = machine.empty() ? std::getenv("KELMARA_MACHINE") : nullptr;
    return named ? named : machine;
}

std::vector<std::string> Environment_For(const char *block) {
    std::vector<std::string> environment;
    const auto Take = [&](std::string_view text) {
        if (!text.starts_with(Machine_Variable)) environment.emplace_back(text);
    };
    if (block) {
        for (; *block; block += std::strlen(block) + 1) Take(block);
    } else {
        for (char **text = environ; text && *text; ++text) Take(*text);
    }
    if (const std::string machine = Machine_For_Child(); !machine.empty()) {
        environment.push_back(Machine_Variable + machine);
    }
    return environment;
}

long Find_Folder(LPCSTR directory, std::string &folder) {
    if (!directory) return NO_ERROR;
    HostPlace place;
    struct stat status;
    if (Find_Place(directory, place) != NO_ERROR) return ERROR_DIRECTORY;
    folder = place.host_path;
    const bool enterable = stat(folder.c_str(), &status) == 0 && S_ISDIR(status.st_mode) &&
                           faccessat(AT_FDCWD, folder.c_str(), X_OK, AT_EACCESS) == 0;
    return enterable ? NO_ERROR : ERROR_DIRECTORY;
}

// The host says ENOENT also of what a program needs to be loaded.
long Error_Of_Spawn(const Start &start, int number) {
    struct stat status;
    const bool there = stat(start.program.c_str(), &status) == 0;
    return number == ENOENT && there ? ERROR_BAD_EXE_FORMAT : Error_At(start.program, number);
}

long Spawn(Start &start, pid_t &id) {
    SpawnRules rules;
    int error = rules.Take(start);
    if (error == 0) {
        error = posix_spawn(&id, start.program.c_str(), rules.Actions(), rules.Attributes(),
                            Pointers(start.arguments).data(), Pointers(start.environment).data());
    }
    return error == 0 ? NO_ERROR : Error_Of_Spawn(start, error);
}

// Not when somebody else in this process has taken it in: its number may be another's by now.
void Kill_And_Take_In(pid_t id) {
    if (waitpid(id, nullptr, WNOHANG) != 0) return;
    kill(id, SIGKILL);
    while (waitpid(id, nullptr, 0) < 0 && errno == EINTR) {
    }
}

// Of a program that has ended, and that somebody else in this process has taken in: something that can be
// waited for, and tells no exit code.
FileDescriptor Descriptor_Of_The_Gone() {
    return FileDescriptor(eventfd(1, EFD_CLOEXEC));
}

// The descriptor is tried for on this process first, so that a host that has none to give is known in time.
long Start_On_Host(Start &start, ProcessObject &process) {
    FileDescriptor descriptor(pidfd_open(getpid(), 0));
    if (!descriptor) return errno == ENOSYS ? ERROR_CALL_NOT_IMPLEMENTED : Error_Of_Errno(errno);
    if (!Begin_Child_Watch()) return ERROR_NOT_ENOUGH_MEMORY;
    pid_t id = 0;
    if (const long error = Spawn(start, id); error != NO_ERROR) return error;
    descriptor.Close();
    descriptor = FileDescriptor(pidfd_open(id, 0));
    const bool gone = !descriptor && errno == ESRCH;
    if (gone) descriptor = Descriptor_Of_The_Gone();
    if (!descriptor) {
        const long error = Error_Of_Errno(errno);
        if (!gone) Kill_And_Take_In(id);
        return error;
    }
    process.Begin(id, std::move(descriptor));
    return NO_ERROR;
}

using ProcessHold =
    std::unique_ptr<ProcessObject, decltype([](ProcessObject *object) { object->Release(); })>;
using ThreadHold = std::unique_ptr<ThreadObject, decltype([](ThreadObject *object) { object->Release(); })>;

// All that a started process needs of memory, so that there is no lack of it once it runs.
struct NewProcess {
    ProcessHold process{new ProcessObject};
    ThreadHold thread{new FirstThread(*process)};
    Children place{process.get()};
};

long Hand_Out(NewProcess &made, PROCESS_INFORMATION &information) {
    ProcessObject &process = *made.process;
    const auto id = static_cast<DWORD>(process.Id());
    process.Retain();
    const HANDLE process_handle = Open_Handle(&process);
    const HANDLE thread_handle = Open_Handle(made.thread.release());
    if (process_handle && thread_handle) {
        information = {process_handle, thread_handle, id, id};
        return NO_ERROR;
    }
    process.Terminate(1);
    if (process_handle) CloseHandle(process_handle);
    if (thread_handle) CloseHandle(thread_handle);
    return ERROR_NOT_ENOUGH_QUOTA;
}

long Create_Process(LPCSTR program, LPCSTR command_line, const char *environment, LPCSTR directory,
                    PROCESS_INFORMATION &information) try {
    Start start;
    if (const long error = Find_Program(program, command_line, start); error != NO_ERROR) return error;
    if (const long error = Find_Folder(directory, start.folder); error != NO_ERROR) return error;
    start.environment = Environment_For(environment);
    NewProcess made;
    if (const long error = Start_On_Host(start, *made.process); error != NO_ERROR) return error;
    Watch_Child(made.place);
    return Hand_Out(made, information);
} catch (const std::bad_alloc &) {
    return ERROR_NOT_ENOUGH_MEMORY;
}

} // namespace

extern "C" {

BOOL CreateProcessA(LPCSTR program, LPSTR command_line, const SECURITY_ATTRIBUTES *,
                    const SECURITY_ATTRIBUTES *, BOOL, DWORD flags, void *environment, LPCSTR directory,
                    const STARTUPINFOA *startup, PROCESS_INFORMATION *information) {
    const bool known = flags == 0 && startup && startup->dwFlags == 0 && information;
    if (!known) return Succeed_Or_Tell(ERROR_INVALID_PARAMETER);
    return Succeed_Or_Tell(Create_Process(program, command_line, static_cast<const char *>(environment),
                                          directory, *information));
}
}
