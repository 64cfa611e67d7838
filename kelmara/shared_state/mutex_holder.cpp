#include <kelmara/shared_state/mutex_holder.h>

#include <platform/kernel.h>

#include <cstdio>

namespace {

constexpr long Infinite = -1;
constexpr DWORD Round_Milliseconds = 2000;
constexpr int Most_Failures = 2;

bool Owns_After(DWORD wait_result) {
    return wait_result == WAIT_OBJECT_0 || wait_result == WAIT_ABANDONED;
}

void Tell_Debugger_Of_Failure(const char *kind_of_wait) {
    char line[100];
    std::snprintf(line, sizeof line, "%sMutex Acquire Failed. PID: %x \n", kind_of_wait,
                  static_cast<unsigned>(GetCurrentProcessId()));
    OutputDebugStringA(line);
}

void Tell_Debugger_Of_Delay(unsigned seconds) {
    char line[100];
    std::snprintf(line, sizeof line, "Mutex Wait Timeout after %u seconds. PID: %x   Trying Again\n", seconds,
                  static_cast<unsigned>(GetCurrentProcessId()));
    OutputDebugStringA(line);
}

// Goes on after a first round that did not bring the lock.
[[gnu::noinline]] bool Wait_In_Rounds(HANDLE mutex, DWORD result) {
    unsigned seconds = 0;
    for (int failures = 0;; result = WaitForSingleObject(mutex, Round_Milliseconds)) {
        if (Owns_After(result)) return true;
        if (result == WAIT_TIMEOUT) {
            seconds += Round_Milliseconds / 1000;
            Tell_Debugger_Of_Delay(seconds);
            failures = 0;
        } else {
            Tell_Debugger_Of_Failure("");
            if (++failures == Most_Failures) return false;
        }
    }
}

} // namespace

CMutexHolder::~CMutexHolder() {
    if (m_Held) ReleaseMutex(m_Mutex);
}

void CMutexHolder::Acquire(HANDLE mutex, long timeout) {
    if (m_Held) return;
    if (mutex) m_Mutex = mutex;
    const bool in_rounds = timeout == Infinite;
    const DWORD result =
        WaitForSingleObject(m_Mutex, in_rounds ? Round_Milliseconds : static_cast<DWORD>(timeout));
    m_Held = Owns_After(result);
    if (m_Held) return;
    if (in_rounds)
        m_Held = Wait_In_Rounds(m_Mutex, result);
    else
        Tell_Debugger_Of_Failure("Non Infinite Wait ");
}

long Get_Mutex(void *mutex, long timeout) {
    for (int attempt = 0; attempt < Most_Failures; ++attempt) {
        const DWORD result = WaitForSingleObject(mutex, static_cast<DWORD>(timeout));
        if (Owns_After(result)) return 0;
        if (result == WAIT_TIMEOUT) return ERROR_SERVICE_REQUEST_TIMEOUT;
    }
    return ERROR_INVALID_HANDLE;
}
