#pragma once
// Where the modules lie that were built beside the tests, as paths of the host.

#include <string>

/// Of tests/modules, by the name of its source.
std::string Test_Module(const std::string &name);
/// Of the reference suite, with its ending.
std::string Suite_Module(const std::string &name);
