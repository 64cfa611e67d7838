// Registers a component by its own export, makes an object of its class, uses it, and takes it out again.
// Argument: the module's path.
#include <docs/examples/modules/counter.h>
#include <kelmara/kelmara.h>

#include <platform/kernel.h>
#include <platform/machine.h>

#include <cstdio>

static bool Call_Export(HMODULE module, const char *name) {
    auto call = reinterpret_cast<HRESULT (*)()>(GetProcAddress(module, name));
    return call && call() == 0;
}

int main(int argc, char **argv) {
    char path[260];
    if (argc < 2 || !Windows_Path(argv[1], path, sizeof path)) return 1;
    HMODULE module = LoadLibraryA(path);
    if (!Call_Export(module, "DllRegisterServer")) return 1;

    CoInitialize(nullptr); // each thread that uses classes
    void *made = nullptr;
    if (CoCreateInstance(CLSID_Counter, nullptr, CLSCTX_INPROC_SERVER, IID_ICounter, &made) != S_OK) return 1;
    auto *counter = static_cast<ICounter *>(made);
    counter->Next();
    std::printf("counted to %ld\n", counter->Next());
    std::printf("references left: %lu\n", counter->Release());
    CoUninitialize();

    if (!Call_Export(module, "DllUnregisterServer")) return 1;
    return FreeLibrary(module) ? 0 : 1;
}
