#pragma once
// A folder of the host that is open to be read, closed at the end of its scope. Null when it cannot be read.

#include <cerrno>
#include <dirent.h>
#include <memory>
#include <string>
#include <string_view>

using OpenFolder = std::unique_ptr<DIR, decltype([](DIR *folder) { closedir(folder); })>;

inline OpenFolder Open_Folder(const std::string &host_path) {
    return OpenFolder(opendir(host_path.c_str()));
}

/// False for one that cannot be read to its end, too; read from its start, whatever was read before.
inline bool Is_Empty_Folder(DIR *folder) {
    errno = 0;
    rewinddir(folder);
    while (const dirent *const entry = readdir(folder)) {
        const std::string_view name = entry->d_name;
        if (name != "." && name != "..") return false; // not every host's folder lists these
    }
    return errno == 0;
}
