// The parts of a log companion that tells the debugger's sink what it is asked. Who includes it says which
// part is left out. The environment's LOG_COMPANION says how "Initialize" answers: "fail", "throw" or,
// otherwise, with 0.

#include <platform/files.h>
#include <platform/kernel.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#define COMPANION_EXPORT extern "C" [[gnu::visibility("default")]]

namespace {

[[gnu::format(printf, 1, 2)]] void Say(const char *format, ...) {
    char text[4000];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    OutputDebugStringA(text);
    SetLastError(999);
}

[[gnu::constructor]] void Loaded() {
    Say("loaded\n");
}
[[gnu::destructor]] void Unloaded() {
    Say("unloaded\n");
}

} // namespace

#ifndef WITHOUT_INITIALIZE
COMPANION_EXPORT long Initialize() {
    char folder[MAX_PATH] = {};
    GetCurrentDirectoryA(sizeof folder, folder);
    Say("Initialize in %s\n", folder);
    const char *told = std::getenv("LOG_COMPANION");
    if (told && std::strcmp(told, "throw") == 0) throw 7;
    return told && std::strcmp(told, "fail") == 0 ? 5 : 0;
}
#endif
#ifndef WITHOUT_QUEUE_ENTRY
COMPANION_EXPORT void Queue_Entry(char *data, long size, long code, long broadcast) {
    Say("Queue_Entry %ld %ld %ld: %.*s\n", size, code, broadcast, static_cast<int>(size), data ? data : "");
}
#endif
#ifndef WITHOUT_GET_MESSAGES
COMPANION_EXPORT long Get_Messages(long first, void (*callback)(), void *context, bool fourth,
                                   void **client) {
    Say("Get_Messages %ld %d %p %d\n", first, callback != nullptr, context, fourth);
    *client = reinterpret_cast<void *>(0x77);
    return 17;
}
#endif
#ifndef WITHOUT_STOP_MESSAGES
COMPANION_EXPORT void Stop_Messages(void *client) {
    Say("Stop_Messages %p\n", client);
}
#endif
#ifndef WITHOUT_RUN_CLEANUP_THREAD
COMPANION_EXPORT void Run_Cleanup_Thread() {
    Say("Run_Cleanup_Thread\n");
}
#endif
