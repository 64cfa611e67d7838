#include <platform/com/class_modules.h>

#include <platform/com/class_keys.h>
#include <platform/kernel.h>

#include <memory>
#include <mutex>
#include <set>
#include <type_traits>
#include <vector>

namespace {

using ModuleLoad =
    std::unique_ptr<std::remove_pointer_t<HMODULE>, decltype([](HMODULE module) { FreeLibrary(module); })>;

// One load of each. Kept for the life of the process: exit routines may still use objects.
struct ClassModules {
    std::mutex lock; // not held while a module is loaded, freed or asked
    std::set<ModuleLoad> loads;
};

ClassModules &The_Modules() {
    static ClassModules *modules = new ClassModules;
    return *modules;
}

// A load is given back when there is one already.
void Keep(ModuleLoad load) {
    ClassModules &modules = The_Modules();
    const std::lock_guard guard(modules.lock);
    modules.loads.insert(std::move(load));
}

bool Can_Unload(HMODULE module) {
    const auto ask = reinterpret_cast<DllCanUnloadNowCall *>(GetProcAddress(module, "DllCanUnloadNow"));
    return ask && ask() == S_OK;
}

std::vector<HMODULE> Loaded_Modules() {
    ClassModules &modules = The_Modules();
    const std::lock_guard guard(modules.lock);
    std::vector<HMODULE> loaded;
    for (const ModuleLoad &load : modules.loads) loaded.push_back(load.get());
    return loaded;
}

ModuleLoad Take_Out(HMODULE module) {
    ClassModules &modules = The_Modules();
    const std::lock_guard guard(modules.lock);
    for (auto load = modules.loads.begin(); load != modules.loads.end(); ++load) {
        if (load->get() == module) return std::move(modules.loads.extract(load).value());
    }
    return nullptr;
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
    Keep(std::move(kept));
    return get(clsid, iid, out);
}

void Free_Unused_Class_Modules() {
    for (const HMODULE module : Loaded_Modules()) {
        if (Can_Unload(module)) Take_Out(module);
    }
}
