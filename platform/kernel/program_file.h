#pragma once
// Which program a start means, and what it is given.

#include <platform/types.h>

#include <string>
#include <vector>

struct Start {
    std::string program;                  // a host path
    std::vector<std::string> arguments;   // with the program's name in front
    std::vector<std::string> environment; // "name=value"
    std::string folder;                   // a host path; empty for the caller's current one
};

/// Fills `program` and `arguments`, as CreateProcessA says. A code of errors.h.
long Find_Program(LPCSTR program, LPCSTR command_line, Start &start);
