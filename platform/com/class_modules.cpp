#include <platform/com/class_modules.h>

#include <platform/com/class_keys.h>
#include <platform/kernel.h>

#include <map>
#include <memory>
#include <mutex>
#include <type_traits>
#include <utility>
#include <vector>

namespace {

using ModuleLoad =
    std::unique_ptr<std::remove_pointer_t<HMODULE>, decltype([](HMODULE module) { FreeLibrary(module); })>;

struct KeptModule {
    ModuleLoad load;
    unsigned asking = 0; // threads that are being given a class object, or ask whether it can go
    unsigned asked = 0;  // how often one was given; wraps
};

// One load of each. Kept for the life of the process: exit routines may still use objects.
struct ClassModules {
    std::mutex lock; // not held while a module is loaded, freed or asked
    std::map<HMODULE, KeptModule> kept;
};

ClassModules &The_Modules() {
    static ClassModules *modules = new ClassModules;
    return *modules;
}

// Keeps the module, and has it stay loaded for as long as it is being asked. A load is given back when there
// is one already.
class Asking {
  public:
    explicit Asking(ModuleLoad load) : module_(load.get()) {
        ClassModules &modules = The_Modules();
        const std::lock_guard guard(modules.lock);
        KeptModule &kept = modules.kept[module_];
        if (!kept.load) kept.load = std::move(load);
        ++kept.asking;
        ++kept.asked;
    }
    ~Asking() {
        ClassModules &modules = The_Modules();
        const std::lock_guard guard(modules.lock);
        --modules.kept.find(module_)->second.asking;
    }
    Asking(const Asking &) = delete;
    Asking &operator=(const Asking &) = delete;

  private:
    const HMODULE module_;
};

bool Can_Unload(HMODULE module) {
    const auto ask = reinterpret_cast<DllCanUnloadNowCall *>(GetProcAddress(module, "DllCanUnloadNow"));
    return ask && ask() == S_OK;
}

// The load when it is to go. Null when it was asked meanwhile: what it said before counts no more.
ModuleLoad Let_Go(HMODULE module, unsigned asked, bool unload) {
    ClassModules &modules = The_Modules();
    const std::lock_guard guard(modules.lock);
    const auto kept = modules.kept.find(module);
    if (--kept->second.asking > 0 || kept->second.asked != asked || !unload) return nullptr;
    return std::move(modules.kept.extract(kept).mapped().load);
}

// One that is being asked whether it can go: it stays loaded, and no other thread finds it idle.
class IdleModule {
  public:
    IdleModule(HMODULE module, unsigned asked) : module_(module), asked_(asked) {}
    IdleModule(IdleModule &&from) noexcept
        : module_(std::exchange(from.module_, nullptr)), asked_(from.asked_) {}
    ~IdleModule() {
        if (module_) Let_Go(module_, asked_, false); // its question did not return
    }
    void Go_If_It_Can() {
        const bool unload = Can_Unload(module_);
        Let_Go(std::exchange(module_, nullptr), asked_, unload);
    }

  private:
    HMODULE module_;
    const unsigned asked_;
};

std::vector<IdleModule> Hold_Idle_Modules() {
    ClassModules &modules = The_Modules();
    const std::lock_guard guard(modules.lock);
    std::vector<IdleModule> idle;
    idle.reserve(modules.kept.size());
    for (auto &[module, kept] : modules.kept) {
        if (kept.asking > 0) continue;
        ++kept.asking;
        idle.emplace_back(module, kept.asked);
    }
    return idle;
}

} // namespace

HRESULT Get_Module_Class_Object(REFCLSID clsid, REFIID iid, void **out) {
    const std::string path = Module_Of_Class(clsid);
    if (path.empty()) return REGDB_E_CLASSNOTREG;
    const ModuleLoad module(LoadLibraryA(path.c_str()));
    ModuleLoad kept(LoadLibraryA(path.c_str()));
    if (!module || !kept) return Result_Of(GetLastError());
    const auto get =
        reinterpret_cast<DllGetClassObjectCall *>(GetProcAddress(module.get(), "DllGetClassObject"));
    if (!get) return GetLastError() == ERROR_NOT_ENOUGH_MEMORY ? E_OUTOFMEMORY : CO_E_ERRORINDLL;
    const Asking asking(std::move(kept));
    return get(clsid, iid, out);
}

void Free_Unused_Class_Modules() {
    for (IdleModule &each : Hold_Idle_Modules()) each.Go_If_It_Can();
}
