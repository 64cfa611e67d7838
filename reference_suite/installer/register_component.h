#pragma once
// Has a component enter itself into the registry, by its export DllRegisterServer.

#include <string>

/// By the module's Windows path. Empty on success, otherwise what went wrong, as a sentence.
std::string Register_Component(const std::string &module);
