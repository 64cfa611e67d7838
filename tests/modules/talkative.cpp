// A module that tells the debugger's sink when anything of it runs. The environment's TALKATIVE says how its
// DllMain answers: "refuse", "throw" or, otherwise, with TRUE; TALKATIVE_LOADS names a module that it loads
// while it is constructed and again while it is attached.

#include <platform/kernel.h>

#include <cstdlib>
#include <cstring>

namespace {

bool Is_Told_To(const char *what) {
    const char *told = std::getenv("TALKATIVE");
    return told && std::strcmp(told, what) == 0;
}

void Load_Another() {
    if (const char *another = std::getenv("TALKATIVE_LOADS")) LoadLibraryA(another);
}

struct Presence {
    Presence() {
        OutputDebugStringA("constructed");
        if (Is_Told_To("throw in constructor")) throw 1;
        Load_Another();
    }
    ~Presence() { OutputDebugStringA("destroyed"); }
} presence;

HINSTANCE own_handle = nullptr;

} // namespace

extern "C" {

__attribute__((visibility("default"))) HINSTANCE Own_Handle() {
    return own_handle;
}

__attribute__((visibility("default"))) int DllMain(HINSTANCE module, DWORD reason, void *) {
    OutputDebugStringA(reason ? "attached" : "detached");
    own_handle = module;
    SetLastError(999);
    if (reason == 0) return TRUE;
    Load_Another();
    if (Is_Told_To("throw")) throw 1;
    return !Is_Told_To("refuse");
}
}
