#include <platform/kernel.h>

#include <platform/kernel/process_end.h>

#include <atomic>
#include <cstdlib>
#include <ctime>
#include <pthread.h>
#include <sched.h>
#include <unistd.h>

namespace {
constinit std::atomic<pthread_t> exiting_thread{};
}

bool Process_Is_Ending() {
    return exiting_thread != pthread_t{};
}

extern "C" {

// An exit routine may end the process again, with another code: the routines that are left still run. A
// second thread that asks for the end waits for it.
void ExitProcess(UINT code) {
    pthread_t nobody{};
    if (!exiting_thread.compare_exchange_strong(nobody, pthread_self()) &&
        !pthread_equal(nobody, pthread_self())) {
        for (;;) pause();
    }
    std::exit(static_cast<int>(code & 0xFF));
}

DWORD GetCurrentProcessId() {
    return static_cast<DWORD>(getpid());
}

DWORD GetTickCount() {
    timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<DWORD>(now.tv_sec) * 1000 + static_cast<DWORD>(now.tv_nsec / 1000000);
}

void Sleep(DWORD milliseconds) {
    if (milliseconds == 0) {
        sched_yield();
        return;
    }
    if (milliseconds == INFINITE) {
        for (;;) pause();
    }
    timespec left = {static_cast<time_t>(milliseconds / 1000),
                     static_cast<long>(milliseconds % 1000) * 1000000};
    while (clock_nanosleep(CLOCK_MONOTONIC, 0, &left, &left) != 0) {
    }
}
}
