// The parts of a wait companion that tells the debugger's sink what it is asked. Who includes it says which
// part is left out. With WAIT_COMPANION in the environment all of them throw.

#include <platform/kernel.h>

#include <cstdio>
#include <cstdlib>

#define COMPANION_EXPORT extern "C" [[gnu::visibility("default")]]

namespace {

void Say(const char *text) {
    OutputDebugStringA(text);
    if (std::getenv("WAIT_COMPANION")) throw 7;
}

[[gnu::constructor]] void Loaded() {
    OutputDebugStringA("loaded\n");
}
[[gnu::destructor]] void Unloaded() {
    OutputDebugStringA("unloaded\n");
}

} // namespace

#ifndef WITHOUT_STARTUP
COMPANION_EXPORT void Startup() {
    Say("Startup\n");
}
#endif
#ifndef WITHOUT_FINISHED
COMPANION_EXPORT void Finished() {
    Say("Finished\n");
}
#endif
#ifndef WITHOUT_SHOW
COMPANION_EXPORT void Show(long show) { // all 32 bits count
    char text[30];
    std::snprintf(text, sizeof text, "Show %ld\n", show);
    Say(text);
}
#endif
