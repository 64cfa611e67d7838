#include <platform/kernel/process_object.h>

#include <platform/files/host_error.h>
#include <platform/kernel.h>
#include <platform/kernel/child_watch.h>
#include <platform/kernel/process_descriptor.h>
#include <platform/kernel/waiting.h>

#include <csignal>
#include <poll.h>
#include <sys/wait.h>

namespace {

constexpr DWORD Code_Taken_By_Others = 0xC0000001;
constexpr useconds_t Pause = 1000;

struct SignalCode {
    int signal;
    DWORD code;
};

// How Windows tells of a process that came to the same end.
constexpr SignalCode Signal_Codes[] = {
    {SIGSEGV, 0xC0000005}, {SIGBUS, 0xC0000005}, {SIGILL, 0xC000001D}, {SIGFPE, 0xC0000094},
    {SIGTRAP, 0x80000003}, {SIGINT, 0xC000013A}, {SIGABRT, 3},
};
constexpr DWORD Code_Of_Other_Signals = 1;

DWORD Code_Of_Signal(int signal) {
    for (const SignalCode &known : Signal_Codes) {
        if (known.signal == signal) return known.code;
    }
    return Code_Of_Other_Signals;
}

// What WaitForSingleObject answers, for a descriptor that can be read; WAIT_FAILED sets errno.
DWORD Wait_For(int descriptor, const Deadline &deadline) {
    for (;;) {
        const long long left = deadline.Left();
        const timespec limit = {static_cast<time_t>(left / 1000), static_cast<long>(left % 1000) * 1000000};
        pollfd waiting = {descriptor, POLLIN, 0};
        const int ready = ppoll(&waiting, 1, deadline.Never() ? nullptr : &limit, nullptr);
        if (ready == 0) return WAIT_TIMEOUT;
        if (ready > 0 && !(waiting.revents & POLLNVAL)) return WAIT_OBJECT_0;
        if (ready > 0) errno = EBADF;
        if (errno != EINTR) return WAIT_FAILED;
    }
}

} // namespace

DWORD ProcessObject::Wait(DWORD milliseconds) {
    const Deadline deadline(milliseconds);
    for (;;) {
        const DWORD answer = Wait_For(Descriptor(), deadline);
        if (answer == WAIT_FAILED) SetLastError(static_cast<DWORD>(Error_Of_Errno(errno)));
        if (answer != WAIT_OBJECT_0 || Has_Ended()) return answer;
        if (deadline.Left() == 0) return WAIT_TIMEOUT;
        usleep(Pause);
    }
}

// The watch has those that were started here from the start.
DWORD ProcessObject::Look(WaitSpot &spot) {
    if (!Was_Started_Here() && !spot.place && Watch_Stranger(*this)) spot.place = this;
    if (Has_Ended()) {
        Leave(spot, false);
        return WAIT_OBJECT_0;
    }
    spot.sleep = Was_Started_Here() || spot.place ? SleepWord{&ended_, 0} : SleepWord{};
    return WAIT_TIMEOUT;
}

DWORD ProcessObject::Leave(WaitSpot &spot, bool) {
    if (spot.place) Watch_Stranger_No_More(*this);
    return WAIT_TIMEOUT;
}

bool ProcessObject::Has_Ended() {
    const std::lock_guard guard(lock_);
    if (ended_ || Wait_For(Descriptor(), Deadline(0)) != WAIT_OBJECT_0) return ended_;
    if (Was_Started_Here() && !Take_Exit_Code()) return false;
    ended_ = 1;
    Wake_All(ended_);
    return true;
}

// False while a debugger of the host keeps the process from being taken in.
bool ProcessObject::Take_Exit_Code() {
    siginfo_t end = {};
    if (waitid(P_PIDFD, static_cast<id_t>(Descriptor()), &end, WEXITED | WNOHANG) != 0) {
        exit_code_ = Code_Taken_By_Others;
        return true;
    }
    if (end.si_pid == 0) return false;
    if (end.si_code == CLD_EXITED)
        exit_code_ = static_cast<DWORD>(end.si_status);
    else
        exit_code_ =
            end.si_status == SIGKILL && terminated_with_ ? *terminated_with_ : Code_Of_Signal(end.si_status);
    return true;
}

long ProcessObject::Find_Exit_Code(DWORD &code) {
    const bool ended = Has_Ended();
    const std::lock_guard guard(lock_);
    if (ended && !exit_code_) return ERROR_ACCESS_DENIED;
    code = ended ? *exit_code_ : STILL_ACTIVE;
    return NO_ERROR;
}

long ProcessObject::Terminate(DWORD code) {
    if (Has_Ended()) return ERROR_ACCESS_DENIED;
    const std::lock_guard guard(lock_);
    const bool first = !terminated_with_;
    if (first) terminated_with_ = code;
    if (pidfd_send_signal(Descriptor(), SIGKILL, nullptr, 0) == 0) return NO_ERROR;
    const int reason = errno;
    if (first) terminated_with_.reset();
    return reason == ESRCH ? ERROR_ACCESS_DENIED : Error_Of_Errno(reason);
}
