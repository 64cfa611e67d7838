#pragma once
// A folder of the host that is open to be read, closed at the end of its scope. Null when it cannot be read.

#include <cerrno>
#include <dirent.h>
#include <memory>
#include <string>

using OpenFolder = std::unique_ptr<DIR, decltype([](DIR *folder) { closedir(folder); })>;

inline OpenFolder Open_Folder(const std::string &host_path) {
    return OpenFolder(opendir(host_path.c_str()));
}

/// False for one that cannot be read to its end, too; read from its start, whatever was read before.
inline bool Is_Empty_Folder(DIR *folder) {
    int entries = 0;
    errno = 0;
    for (rewinddir(folder); entries <= 2 && readdir(folder); ++entries)
        continue; // "." and ".." are always there
    return entries <= 2 && errno == 0;
}
