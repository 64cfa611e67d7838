#include <reference_suite/companions/wait/wait_companion.h>

#include <reference_suite/companions/wait/wait_window_thread.h>

#include <new>

#define COMPANION_EXPORT [[gnu::visibility("default")]]

namespace {

// Never destroyed: a thread of the program may still call while the process ends.
WaitWindowThread &The_Window() {
    alignas(WaitWindowThread) static unsigned char place[sizeof(WaitWindowThread)];
    static auto *window = new (place) WaitWindowThread;
    return *window;
}

template <class Step>
void Within(Step step) try {
    step();
} catch (...) {
}

// While the module is loaded, so that a forked process finds it made.
[[gnu::constructor]] void Begin() {
    Within([] { The_Window(); });
}

// Where the process ends and nobody has unloaded the module.
[[gnu::destructor]] void End() {
    Within([] { The_Window().Close(); });
}

} // namespace

extern "C" {

COMPANION_EXPORT void Startup() {
    Within([] { The_Window().Open(); });
}

COMPANION_EXPORT void Finished() {
    Within([] { The_Window().Close(); });
}

COMPANION_EXPORT void Show(bool show) {
    Within([=] { The_Window().Show(show); });
}

COMPANION_EXPORT BOOL DllMain(HINSTANCE, DWORD reason, void *) {
    constexpr DWORD Detach = 0;
    if (reason == Detach) End();
    return TRUE;
}
}
