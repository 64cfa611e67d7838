// How soon a thread that waits for an event and for messages has posted a message to another thread: beside
// two bare words of the host that the same two threads sleep on, which is the least that it can take.

#include <benchmarks/measure.h>

#include <platform/kernel.h>
#include <platform/machine.h>
#include <platform/runtime.h>
#include <platform/user.h>

#include <atomic>
#include <ctime>
#include <linux/futex.h>
#include <string>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

HANDLE stop, event;
HWND window;
std::atomic<int> there{0}, back{0};

unsigned Post_For_Each_Event(void *) {
    const HANDLE handles[] = {stop, event};
    for (;;) {
        const DWORD result = MsgWaitForMultipleObjects(2, handles, FALSE, INFINITE, QS_ALLEVENTS);
        if (result != WAIT_OBJECT_0 + 1) return 1;
        PostMessageA(window, 0x8002, 1, 0);
    }
}

void Sleep_Until(std::atomic<int> &word, int wanted) {
    for (int seen = word; seen != wanted; seen = word)
        syscall(SYS_futex, &word, FUTEX_WAIT_PRIVATE, seen, nullptr, nullptr, 0);
}

void Move_On(std::atomic<int> &word, int to) {
    word = to;
    syscall(SYS_futex, &word, FUTEX_WAKE_PRIVATE, 1, nullptr, nullptr, 0);
}

unsigned Answer_Each_Word(void *) {
    for (int round = 1;; ++round) {
        Sleep_Until(there, round);
        Move_On(back, round);
    }
}

void Let_200_Microseconds_Pass() {
    timespec start, now;
    clock_gettime(CLOCK_MONOTONIC, &start);
    do {
        clock_gettime(CLOCK_MONOTONIC, &now);
    } while ((now.tv_sec - start.tv_sec) * 1000000000LL + (now.tv_nsec - start.tv_nsec) < 200000);
}

} // namespace

int main() {
    std::string folder = "/tmp/kelmara-benchmark-XXXXXX";
    if (!mkdtemp(folder.data()) || !Enter_Machine(folder.c_str())) return 1;
    measure::Use_Plain_Memory();
    stop = CreateEventA(nullptr, TRUE, FALSE, nullptr);
    event = CreateEventA(nullptr, FALSE, FALSE, nullptr);
    window = CreateWindowExA(0, "Static", "", WS_POPUP, 0, 0, 1, 1, nullptr, nullptr, nullptr, nullptr);
    const auto start = [](unsigned (*routine)(void *)) {
        return reinterpret_cast<HANDLE>(_beginthreadex(nullptr, 0, routine, nullptr, 0, nullptr));
    };
    const HANDLE poster = start(Post_For_Each_Event), answerer = start(Answer_Each_Word);
    measure::Heading("waiting (peer: two threads that wake each other)");
    int round = 0;
    const auto words = MEASURED {
        Move_On(there, ++round);
        Sleep_Until(back, round);
    };
    const auto messages = MEASURED {
        MSG message;
        SetEvent(event);
        GetMessageA(&message, nullptr, 0, 0);
        measure::Keep(message);
    };
    measure::Compare("SetEvent, until the message is there", messages, words, 6);
    measure::Heading("waiting (peer: 200 microseconds)");
    measure::Compare(
        "SetEvent, until the message is there", messages, MEASURED { Let_200_Microseconds_Pass(); }, 1.0);
    SetEvent(stop);
    WaitForSingleObject(poster, INFINITE);
    for (const HANDLE each : {poster, answerer, stop, event}) CloseHandle(each);
    DestroyWindow(window);
    Remove_Machine(folder.c_str());
    return 0;
}
