// How soon a thread that waits for an event and for messages has posted a message to another thread: beside
// two bare words of the host that the same two threads sleep on, which is the least that it can take.

#include <benchmarks/measure.h>
#include <benchmarks/own_machine.h>
#include <benchmarks/two_threads.h>

#include <platform/kernel.h>
#include <platform/runtime.h>
#include <platform/user.h>

#include <string>

namespace {

HANDLE stop, event;
HWND window;

unsigned Post_For_Each_Event(void *) {
    const HANDLE handles[] = {stop, event};
    for (;;) {
        const DWORD result = MsgWaitForMultipleObjects(2, handles, FALSE, INFINITE, QS_ALLEVENTS);
        if (result != WAIT_OBJECT_0 + 1) return 1;
        PostMessageA(window, 0x8002, 1, 0);
    }
}

} // namespace

int main() {
    const measure::OwnMachine machine;
    measure::Use_Plain_Memory();
    stop = CreateEventA(nullptr, TRUE, FALSE, nullptr);
    event = CreateEventA(nullptr, FALSE, FALSE, nullptr);
    window = CreateWindowExA(0, "Static", "", WS_POPUP, 0, 0, 1, 1, nullptr, nullptr, nullptr, nullptr);
    const auto start = [](unsigned (*routine)(void *)) {
        return reinterpret_cast<HANDLE>(_beginthreadex(nullptr, 0, routine, nullptr, 0, nullptr));
    };
    const HANDLE poster = start(Post_For_Each_Event);
    measure::Heading("waiting", "two threads that wake each other");
    measure::TwoThreads threads;
    const auto words = MEASURED {
        threads.There_And_Back();
    };
    const auto messages = MEASURED {
        MSG message;
        SetEvent(event);
        GetMessageA(&message, nullptr, 0, 0);
        measure::Keep(message);
    };
    measure::Compare_Calls("SetEvent, until the message is there", messages, words, 6);
    SetEvent(stop);
    WaitForSingleObject(poster, INFINITE);
    for (const HANDLE each : {poster, stop, event}) CloseHandle(each);
    DestroyWindow(window);
    return 0;
}
