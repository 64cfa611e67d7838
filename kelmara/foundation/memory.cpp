#include <kelmara/foundation/memory.h>

#include <kelmara/foundation/memory_binding.h>

#include <platform/kernel.h>
#include <platform/registry.h>
#include <platform/user.h>

namespace {

using AllocProc = void *(*)(long size);
using ReallocProc = void *(*)(void *block, long size);
using FreeProc = void (*)(void *block);

constexpr unsigned long Bound_Locally = 0xFFFFFFFF;

// 0: nothing is bound. Bound_Locally: a host's routines. Otherwise the module of the companion.
constinit unsigned long Memory_Binding = 0;
constinit AllocProc Alloc_Proc = nullptr;
constinit AllocProc Alloc_Clear_Proc = nullptr;
constinit ReallocProc Realloc_Proc = nullptr;
constinit FreeProc Free_Proc = nullptr;

[[noreturn]] void Report_Missing_Suite() {
    MessageBoxA(nullptr, "Kelmara is not installed or setup properly. Reinstall", "Error",
                MB_OK | MB_ICONHAND | MB_SYSTEMMODAL);
    ExitProcess(1);
}

// `path` has 256 zero bytes; 255 may be written, so it stays terminated.
bool Read_Companion_Path(char *path) {
    HKEY key = nullptr;
    constexpr DWORD access =
        KEY_QUERY_VALUE | KEY_SET_VALUE | KEY_CREATE_SUB_KEY | KEY_ENUMERATE_SUB_KEYS | KEY_NOTIFY;
    if (RegOpenKeyExA(HKEY_LOCAL_MACHINE, "software\\dunmerit software\\kelmara", 0, access, &key) != 0) {
        return false;
    }
    DWORD type = 0;
    DWORD size = 255;
    const LONG result =
        RegQueryValueExA(key, "Memory", nullptr, &type, reinterpret_cast<BYTE *>(path), &size);
    RegCloseKey(key);
    return result == 0;
}

// Exit routines that still use memory must not find half a binding.
[[noreturn]] void Give_Up(HMODULE companion) {
    Memory_Binding = 0;
    FreeLibrary(companion);
    ExitProcess(1);
}

template <class Proc>
void Bind_Or_Give_Up(Proc &proc, HMODULE companion, const char *name) {
    proc = reinterpret_cast<Proc>(GetProcAddress(companion, name));
    if (!proc) Give_Up(companion);
}

void Bind_Memory_Library() {
    if (Memory_Binding != 0) return;
    char path[256] = {};
    if (!Read_Companion_Path(path)) Report_Missing_Suite();

    // A load that fails is caught by the first lookup: a null module has no exports.
    const HMODULE companion = LoadLibraryA(path);
    Memory_Binding = reinterpret_cast<unsigned long>(companion);
    FARPROC initialize = nullptr;
    Bind_Or_Give_Up(initialize, companion, "Initialize");
    initialize();
    Bind_Or_Give_Up(Alloc_Proc, companion, "m_alloc");
    Bind_Or_Give_Up(Alloc_Clear_Proc, companion, "m_alloc_clear");
    Bind_Or_Give_Up(Realloc_Proc, companion, "m_realloc");
    Bind_Or_Give_Up(Free_Proc, companion, "m_free");
}

// The first call of each entry point. Apart from it, so that the way behind it saves nothing and ends in a
// jump.
[[gnu::noinline, gnu::cold]] void *Bind_And_Allocate(long size) {
    Bind_Memory_Library();
    return Alloc_Proc(size);
}

[[gnu::noinline, gnu::cold]] void *Bind_And_Allocate_Clear(long size) {
    Bind_Memory_Library();
    return Alloc_Clear_Proc(size);
}

[[gnu::noinline, gnu::cold]] void *Bind_And_Reallocate(void *block, long size) {
    Bind_Memory_Library();
    return Realloc_Proc(block, size);
}

[[gnu::noinline, gnu::cold]] void Bind_And_Free(void *block) {
    Bind_Memory_Library();
    Free_Proc(block);
}

} // namespace

void *ds_malloc(long size) {
    if (Memory_Binding == 0) [[unlikely]]
        return Bind_And_Allocate(size);
    return Alloc_Proc(size);
}

void *ds_malloc_clear(long size) {
    if (Memory_Binding == 0) [[unlikely]]
        return Bind_And_Allocate_Clear(size);
    return Alloc_Clear_Proc(size);
}

void *ds_realloc(void *block, long size) {
    if (Memory_Binding == 0) [[unlikely]]
        return Bind_And_Reallocate(block, size);
    return Realloc_Proc(block, size);
}

void ds_free(void *block) {
    if (Memory_Binding == 0) [[unlikely]]
        return Bind_And_Free(block);
    Free_Proc(block);
}

void *ds_malloc_procptr(unsigned long size) {
    return ds_malloc(static_cast<long>(size));
}

void ds_free_procptr(void *block) {
    ds_free(block);
}

void Set_Local_Memory_Procs(void *(*alloc)(long), void *(*alloc_clear)(long), void *(*realloc)(void *, long),
                            void (*release)(void *)) {
    if (Memory_Binding != 0) return;
    Alloc_Proc = alloc;
    Alloc_Clear_Proc = alloc_clear;
    Realloc_Proc = realloc;
    Free_Proc = release;
    Memory_Binding = Bound_Locally;
}

void Release_Memory_Library() {
    if (Memory_Binding == 0) return;
    if (Memory_Binding != Bound_Locally) FreeLibrary(reinterpret_cast<HMODULE>(Memory_Binding));
    Memory_Binding = 0;
}
