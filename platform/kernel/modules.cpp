#include <platform/kernel.h>

#include <platform/files/paths.h>
#include <platform/kernel/host_modules.h>
#include <platform/kernel/outcome.h>
#include <platform/kernel/windows_version.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <map>
#include <memory>
#include <mutex>

namespace {

constexpr DWORD Process_Attach = 1;
constexpr DWORD Process_Detach = 0;
constexpr DWORD Known_Flags =
    DONT_RESOLVE_DLL_REFERENCES | LOAD_LIBRARY_AS_DATAFILE | LOAD_WITH_ALTERED_SEARCH_PATH;

using DllMain = int(HINSTANCE module, DWORD reason, void *reserved);

struct LoadedModule {
    HostModule host;
    unsigned long loads = 0;
    bool attached = false; // its DllMain was told that it is loaded
};

// A module's handle is the address at which it lies, as everywhere on Windows. The lock is held while modules
// are loaded and unloaded, with all of theirs that runs then, and may call back in: recursive.
struct Modules {
    std::recursive_mutex lock;
    std::map<HMODULE, LoadedModule> loaded;
    std::map<HMODULE, std::unique_ptr<char>> data_files;
};

Modules &The_Modules() {
    static Modules *modules = new Modules;
    return *modules;
}

enum class Answer { Yes, No, Threw };

Answer Run_Dll_Main(HMODULE module, DWORD reason) {
    const auto dll_main = reinterpret_cast<DllMain *>(Find_Export(module, "DllMain"));
    if (!dll_main) return Answer::Yes;
    try {
        return dll_main(module, reason, nullptr) ? Answer::Yes : Answer::No;
    } catch (...) {
        return Answer::Threw;
    }
}

// The record leaves the list before its module hears of it, so that what runs then can load it anew.
void Unload(Modules &modules, HMODULE module) {
    const auto gone = modules.loaded.extract(module);
    if (gone.mapped().attached) Run_Dll_Main(module, Process_Detach);
}

// What the program was linked with was never loaded by a call, and stays.
bool Take_Back_Load(Modules &modules, HMODULE module) {
    const auto found = modules.loaded.find(module);
    if (found == modules.loaded.end()) return module && Host_Path_Of(module);
    if (--found->second.loads == 0) Unload(modules, module);
    return true;
}

// A module that says no hears that it goes; one that throws is in no state to hear anything.
long Attach(Modules &modules, HMODULE module) {
    LoadedModule &loaded = modules.loaded[module];
    if (loaded.attached) return NO_ERROR;
    loaded.attached = true;
    const Answer answer = Run_Dll_Main(module, Process_Attach);
    if (answer == Answer::Yes) return NO_ERROR;
    if (answer == Answer::No) Run_Dll_Main(module, Process_Detach);
    loaded.attached = false;
    Take_Back_Load(modules, module);
    return ERROR_DLL_INIT_FAILED;
}

long Find_Or_Load_On_Host(const ModuleName &name, HostModule &host) {
    if (name.Is_Bare() && (host = Find_Loaded_By_Bare_Name(name))) return NO_ERROR;
    const std::string file = Find_Module_File(name);
    if (file.empty()) return ERROR_MOD_NOT_FOUND;
    if (const long error = Check_Module_File(file); error != NO_ERROR) return error;
    host = Load_On_Host(file);
    if (host) return NO_ERROR;
    if (const char *reason = dlerror()) OutputDebugStringA((std::string(reason) + "\n").c_str());
    return ERROR_MOD_NOT_FOUND;
}

long Load(const ModuleName &name, bool attach, HMODULE &module) {
    HostModule host;
    if (const long error = Find_Or_Load_On_Host(name, host); error != NO_ERROR) return error;
    const HMODULE found = Module_Of(host);
    if (!found) return ERROR_MOD_NOT_FOUND;
    Modules &modules = The_Modules();
    LoadedModule &loaded = modules.loaded[found];
    if (!loaded.host) loaded.host = std::move(host);
    ++loaded.loads;
    if (const long error = attach ? Attach(modules, found) : NO_ERROR; error != NO_ERROR) return error;
    module = found;
    return NO_ERROR;
}

// The handle is odd, which no module's is.
long Load_Data_File(const ModuleName &name, HMODULE &module) {
    if (!name.Is_Built_In() && Find_Module_File(name).empty()) return ERROR_MOD_NOT_FOUND;
    auto mark = std::make_unique<char>();
    const auto handle = reinterpret_cast<HMODULE>(reinterpret_cast<std::uintptr_t>(mark.get()) | 1);
    The_Modules().data_files.emplace(handle, std::move(mark));
    module = handle;
    return NO_ERROR;
}

long Load_By_Flags(LPCSTR path, DWORD flags, HMODULE &module) {
    const ModuleName name(path);
    const std::lock_guard guard(The_Modules().lock);
    if (flags & LOAD_LIBRARY_AS_DATAFILE) return Load_Data_File(name, module);
    return Load(name, !(flags & DONT_RESOLVE_DLL_REFERENCES), module);
}

long Find_Windows_Path(HMODULE module, std::string &windows_path) {
    const char *known = Host_Path_Of(module);
    if (!known) return ERROR_MOD_NOT_FOUND;
    std::string host_path = known;
    if (host_path.empty()) {
        std::error_code error;
        host_path = std::filesystem::read_symlink("/proc/self/exe", error);
    }
    return Map_To_Windows(host_path, windows_path);
}

// A call that came with a later Windows than this one.
bool Is_Lacking(const char *name) {
    return std::strcmp(name, "GetDiskFreeSpaceExA") == 0 && Is_First_Windows_95();
}

long Find_Callable(HMODULE module, const char *name, void *&address) {
    if (!Host_Path_Of(module)) return ERROR_MOD_NOT_FOUND;
    if (module == The_Platform() && Is_Lacking(name)) return ERROR_PROC_NOT_FOUND;
    address = Find_Export(module, name);
    return address ? NO_ERROR : ERROR_PROC_NOT_FOUND;
}

template <class Result>
Result Fail(long error) {
    SetLastError(static_cast<DWORD>(error));
    return Result{};
}

} // namespace

extern "C" {

HMODULE LoadLibraryA(LPCSTR path) {
    return LoadLibraryExA(path, nullptr, 0);
}

HMODULE LoadLibraryExA(LPCSTR path, HANDLE reserved, DWORD flags) {
    if (reserved || (flags & ~Known_Flags)) return Fail<HMODULE>(ERROR_INVALID_PARAMETER);
    if (!path || !*path) return Fail<HMODULE>(ERROR_INVALID_PARAMETER);
    const DWORD last_error = GetLastError();
    HMODULE module = nullptr;
    const long error = Code_Of([&] { return Load_By_Flags(path, flags, module); });
    SetLastError(error == NO_ERROR ? last_error : static_cast<DWORD>(error));
    return module;
}

FARPROC GetProcAddress(HMODULE module, LPCSTR name) {
    constexpr std::uintptr_t First_Name = 0x10000; // below are ordinals
    if (!module || reinterpret_cast<std::uintptr_t>(name) < First_Name) {
        return Fail<FARPROC>(ERROR_PROC_NOT_FOUND);
    }
    void *address = nullptr;
    const long error = Code_Of([&] { return Find_Callable(module, name, address); });
    return error == NO_ERROR ? reinterpret_cast<FARPROC>(address) : Fail<FARPROC>(error);
}

HMODULE GetModuleHandleA(LPCSTR name) {
    return Within_Memory(HMODULE{}, [=] {
        if (!name) return The_Program();
        const HMODULE module = Module_Of(Find_Loaded(ModuleName(name)));
        return module ? module : Fail<HMODULE>(ERROR_MOD_NOT_FOUND);
    });
}

DWORD GetModuleFileNameA(HMODULE module, LPSTR path, DWORD size) {
    std::string windows_path;
    const auto find = [&] { return Find_Windows_Path(module ? module : The_Program(), windows_path); };
    if (!Succeed_Or_Tell(Code_Of(find))) return 0;
    if (size == 0 || !path) return Fail<DWORD>(ERROR_INSUFFICIENT_BUFFER);
    const std::size_t length = std::min<std::size_t>(windows_path.size(), size - 1);
    std::memcpy(path, windows_path.data(), length);
    path[length] = '\0';
    if (length == windows_path.size()) return length;
    SetLastError(ERROR_INSUFFICIENT_BUFFER);
    return size;
}

BOOL FreeLibrary(HMODULE module) {
    const DWORD last_error = GetLastError();
    const long error = Code_Of([=] {
        Modules &modules = The_Modules();
        const std::lock_guard guard(modules.lock);
        const bool done = modules.data_files.erase(module) != 0 || Take_Back_Load(modules, module);
        return done ? NO_ERROR : ERROR_MOD_NOT_FOUND;
    });
    SetLastError(error == NO_ERROR ? last_error : static_cast<DWORD>(error));
    return error == NO_ERROR;
}
}
