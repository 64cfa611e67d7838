#include <tools/interruption.h>

#include <platform/machine.h>

#include <csignal>
#include <cstdlib>
#include <initializer_list>
#include <poll.h>

namespace tools {

namespace {

volatile std::sig_atomic_t noted_signal = 0;

void Note(int signal) {
    noted_signal = signal;
}

void On(int signal, void (*handler)(int)) {
    struct sigaction action = {};
    action.sa_handler = handler;
    sigemptyset(&action.sa_mask);
    sigaction(signal, &action, nullptr);
}

// By whoever started the command, as nohup does.
bool Is_Ignored(int signal) {
    struct sigaction action = {};
    return sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

} // namespace

void Note_Interruptions() {
    for (const int signal : {SIGHUP, SIGINT, SIGTERM}) {
        if (!Is_Ignored(signal)) On(signal, Note);
    }
    for (const int signal : {SIGPIPE, SIGXFSZ}) On(signal, SIG_IGN);
}

void End_If_Interrupted() {
    if (noted_signal != 0) throw Interrupted{noted_signal};
}

// A signal between the look and the wait is seen a moment later: no wait is longer than 50 ms.
void Pause_Or_End(unsigned milliseconds) {
    for (End_If_Interrupted(); milliseconds > 0; End_If_Interrupted()) {
        const unsigned step = milliseconds < 50 ? milliseconds : 50;
        poll(nullptr, 0, static_cast<int>(step));
        milliseconds -= step;
    }
}

void End_By(int signal) {
    if (Machine_In_Force() != 0) Leave_Machine();
    On(signal, SIG_DFL);
    raise(signal);
    std::_Exit(128 + signal);
}

} // namespace tools
