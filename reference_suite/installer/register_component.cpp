#include <reference_suite/installer/register_component.h>

#include <platform/kernel.h>

#include <memory>
#include <type_traits>

namespace {

using Module =
    std::unique_ptr<std::remove_pointer_t<HMODULE>, decltype([](HMODULE module) { FreeLibrary(module); })>;

} // namespace

std::string Register_Component(const std::string &module) {
    const Module loaded(LoadLibraryA(module.c_str()));
    if (!loaded) return module + " cannot be loaded: error " + std::to_string(GetLastError());
    const auto enter = reinterpret_cast<long (*)()>(GetProcAddress(loaded.get(), "DllRegisterServer"));
    if (!enter) return module + " cannot register itself";
    const long result = enter();
    return result == 0 ? std::string() : module + " is not registered: result " + std::to_string(result);
}
