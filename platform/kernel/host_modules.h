#pragma once
// Modules as the host's loader has them. A module's handle is the address at which it lies.
//
// May be called from any thread; a handle stays good while somebody has a reference.

#include <platform/kernel.h>
#include <platform/kernel/module_file.h>

#include <dlfcn.h>
#include <memory>
#include <string>

struct CloseHostModule {
    void operator()(void *module) const { dlclose(module); }
};

/// One reference of the host's to a module.
using HostModule = std::unique_ptr<void, CloseHostModule>;

/// Null for no reference.
HMODULE Module_Of(const HostModule &host);

HMODULE The_Program();
HMODULE The_Platform();

/// The path that the host knows it by, empty for the program; null when nothing is loaded there.
const char *Host_Path_Of(HMODULE module);

/// The module's own export alone, not one of a module that it is linked with; null when there is none.
void *Find_Export(HMODULE module, const char *name);

/// What a bare name means among the modules that are loaded, wherever they lie; the machine's own come first.
HostModule Find_Loaded_By_Bare_Name(const ModuleName &name);

/// The same for any name. Nothing is loaded; null when it is not loaded already.
HostModule Find_Loaded(const ModuleName &name);

/// Loads it with all that it is linked with, and runs their constructors: one that throws ends the process.
/// Null when the loader refuses; dlerror says why.
HostModule Load_On_Host(const std::string &host_path) noexcept;
