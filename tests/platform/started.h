#pragma once

#include <platform/kernel.h>

/// Starts what the line says. The handles in `started` are the caller's.
inline BOOL Start(PROCESS_INFORMATION &started, char *line, const char *path = nullptr,
                  const char *directory = nullptr, void *environment = nullptr, DWORD flags = 0) {
    STARTUPINFOA startup = {};
    startup.cb = sizeof startup;
    return CreateProcessA(path, line, nullptr, nullptr, FALSE, flags, environment, directory, &startup,
                          &started);
}
