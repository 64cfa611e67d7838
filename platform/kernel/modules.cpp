#include <platform/kernel.h>

#include <platform/files/paths.h>
#include <platform/kernel/code_page.h>
#include <platform/kernel/module_file.h>
#include <platform/kernel/outcome.h>
#include <platform/kernel/windows_version.h>

#include <algorithm>
#include <cstring>
#include <dlfcn.h>
#include <filesystem>
#include <link.h>
#include <map>
#include <memory>
#include <mutex>

namespace {

constexpr DWORD Process_Attach = 1;
constexpr DWORD Process_Detach = 0;
constexpr DWORD Known_Flags =
    DONT_RESOLVE_DLL_REFERENCES | LOAD_LIBRARY_AS_DATAFILE | LOAD_WITH_ALTERED_SEARCH_PATH;

using DllMain = int(HINSTANCE module, DWORD reason, void *reserved);

// One reference of the host's to a module.
using HostModule = std::unique_ptr<void, decltype([](void *module) { dlclose(module); })>;

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

HMODULE Module_Around(const void *address) {
    Dl_info info;
    return dladdr(address, &info) ? static_cast<HMODULE>(info.dli_fbase) : nullptr;
}

HMODULE Module_Of(const HostModule &host) {
    link_map *map = nullptr;
    return host && dlinfo(host.get(), RTLD_DI_LINKMAP, &map) == 0 ? Module_Around(map->l_ld) : nullptr;
}

HMODULE The_Program() {
    return Module_Of(HostModule(dlopen(nullptr, RTLD_LAZY)));
}

HMODULE The_Platform() {
    static const char inside = 0;
    return Module_Around(&inside);
}

// The path that the host knows it by, empty for the program; null when nothing is loaded there.
const char *Host_Path_Of(HMODULE module) {
    Dl_info info;
    void *map = nullptr;
    if (!dladdr1(module, &info, &map, RTLD_DL_LINKMAP) || info.dli_fbase != module || !map) return nullptr;
    return static_cast<link_map *>(map)->l_name;
}

// A reference to what is loaded already, null for what is not.
HostModule Refer_To_Loaded(const char *host_path) {
    return HostModule(dlopen(*host_path ? host_path : nullptr, RTLD_LAZY | RTLD_NOLOAD));
}

void *Find_Export(HMODULE module, const char *name) {
    const char *path = Host_Path_Of(module);
    if (!path) return nullptr;
    const HostModule host = Refer_To_Loaded(path);
    void *address = host ? dlsym(host.get(), name) : nullptr;
    return address && Module_Around(address) == module ? address : nullptr;
}

// A library's version stands behind its ending. The host's libraries that have one are no modules of the
// machine; this system's own are, by their name without it.
std::string Module_File_Name(std::string_view path) {
    const std::string_view file = path.substr(path.rfind('/') + 1);
    const std::size_t version = file.find(".so.");
    if (version == std::string_view::npos) return std::string(file);
    return file.starts_with("libkelmara") ? std::string(file.substr(0, version + 3)) : std::string();
}

// Paths of all modules in the process, those that it was linked with too; the program is left out.
std::vector<std::string> Loaded_Paths() {
    std::vector<std::string> paths;
    const auto take = [](dl_phdr_info *info, std::size_t, void *context) {
        const char *path = info->dlpi_name;
        if (*path && !Module_File_Name(path).empty())
            static_cast<std::vector<std::string> *>(context)->push_back(path);
        return 0;
    };
    dl_iterate_phdr(take, &paths);
    return paths;
}

// What a bare name means among the modules that are loaded, wherever they lie; the machine's own come first.
HostModule Find_Loaded_By_Bare_Name(const ModuleName &name) {
    if (name.Is_Built_In()) {
        const char *path = Host_Path_Of(The_Platform());
        return path ? Refer_To_Loaded(path) : nullptr;
    }
    const std::vector<std::string> paths = Loaded_Paths();
    for (const std::string &file : name.files) {
        for (const std::string &path : paths) {
            if (Equal_Without_Case(Windows_Name_Of(Module_File_Name(path)), file))
                return Refer_To_Loaded(path.c_str());
        }
    }
    return nullptr;
}

HostModule Find_Loaded(const ModuleName &name) {
    if (name.Is_Bare()) return Find_Loaded_By_Bare_Name(name);
    const std::string file = Find_Module_File(name);
    return file.empty() ? nullptr : Refer_To_Loaded(file.c_str());
}

// `noexcept` makes a constructor that throws end the process: the host's loader cannot be unwound.
HostModule Load_On_Host(const std::string &host_path) noexcept {
    return HostModule(dlopen(host_path.c_str(), RTLD_NOW | RTLD_LOCAL));
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
