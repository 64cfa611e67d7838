#pragma once
// A folder of the host that is open to be read, closed at the end of its scope. Null when it cannot be read.

#include <dirent.h>
#include <memory>
#include <string>

using OpenFolder = std::unique_ptr<DIR, decltype([](DIR *folder) { closedir(folder); })>;

inline OpenFolder Open_Folder(const std::string &host_path) {
    return OpenFolder(opendir(host_path.c_str()));
}
