#include <tests/faults/traced_run.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <sys/ptrace.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

user_regs_struct Registers_Of(pid_t id) {
    user_regs_struct registers;
    if (ptrace(PTRACE_GETREGS, id, nullptr, &registers) != 0) std::abort();
    return registers;
}

void Set_Registers(pid_t id, user_regs_struct registers) {
    if (ptrace(PTRACE_SETREGS, id, nullptr, &registers) != 0) std::abort();
}

// Nothing of the parent's may run in a child, such as what takes its machine away.
[[noreturn]] void End_With(const std::function<int()> &work) {
    try {
        _exit(work());
    } catch (...) {
        _exit(70);
    }
}

} // namespace

TracedRun::TracedRun(const std::function<int()> &work) {
    id_ = fork();
    if (id_ == 0) {
        ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
        raise(SIGSTOP);
        End_With(work);
    }
    if (id_ < 0 || waitpid(id_, &status_, 0) != id_ || !WIFSTOPPED(status_)) std::abort();
    ptrace(PTRACE_SETOPTIONS, id_, nullptr, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL);
}

TracedRun::~TracedRun() {
    Kill();
}

// Signals on the way are the process's own business.
bool TracedRun::Next_Stop() {
    for (int signal = 0; WIFSTOPPED(status_); signal = WSTOPSIG(status_)) {
        ptrace(PTRACE_SYSCALL, id_, nullptr, signal);
        if (waitpid(id_, &status_, 0) != id_) std::abort();
        if (!WIFSTOPPED(status_)) return false;
        if (WSTOPSIG(status_) == (SIGTRAP | 0x80)) {
            in_call_ = !in_call_;
            return true;
        }
    }
    return false;
}

bool TracedRun::Next_Call() {
    do {
        if (!Next_Stop()) return false;
    } while (!in_call_);
    return true;
}

long TracedRun::Call() const {
    return Registers_Of(id_).orig_eax;
}

long TracedRun::First_Argument() const {
    return WIFSTOPPED(status_) ? Registers_Of(id_).ebx : 0;
}

bool TracedRun::Goes_To_A_Pipe() const {
    std::error_code none;
    const std::string place = "/proc/" + std::to_string(id_) + "/fd/" + std::to_string(First_Argument());
    return std::filesystem::read_symlink(place, none).string().starts_with("pipe:");
}

bool TracedRun::Maps_A_File() const {
    return Registers_Of(id_).edi >= 0;
}

void TracedRun::Fail(int error) {
    user_regs_struct registers = Registers_Of(id_);
    registers.orig_eax = -1;
    Set_Registers(id_, registers);
    if (!Next_Stop()) return;
    registers = Registers_Of(id_);
    registers.eax = -error;
    Set_Registers(id_, registers);
}

void TracedRun::Cut_Short() {
    user_regs_struct registers = Registers_Of(id_);
    registers.edx = (registers.edx + 1) / 2;
    Set_Registers(id_, registers);
}

void TracedRun::Kill() {
    if (!WIFSTOPPED(status_)) return;
    kill(id_, SIGKILL);
    waitpid(id_, &status_, 0);
}

int TracedRun::Exit_Code() const {
    return WIFEXITED(status_) ? WEXITSTATUS(status_) : -WTERMSIG(status_);
}

std::string Seen_By_Another(const std::function<std::string()> &work) {
    int ends[2];
    if (pipe(ends) != 0) std::abort();
    const pid_t id = fork();
    if (id < 0) std::abort();
    if (id == 0) {
        End_With([&] {
            const std::string seen = work();
            return write(ends[1], seen.data(), seen.size()) == static_cast<ssize_t>(seen.size()) ? 0 : 1;
        });
    }
    close(ends[1]);
    std::string seen;
    char bytes[4096];
    for (ssize_t got; (got = read(ends[0], bytes, sizeof bytes)) > 0;)
        seen.append(bytes, static_cast<std::size_t>(got));
    close(ends[0]);
    int status = 0;
    waitpid(id, &status, 0);
    return status == 0 ? seen : "failed";
}
