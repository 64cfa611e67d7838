#include <platform/files/search_order.h>

#include <platform/errors.h>
#include <platform/files/folder_entries.h>
#include <platform/files/paths.h>
#include <platform/files/system_folders.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <sys/stat.h>

namespace {

bool Is_Regular_File(const std::string &path) {
    struct stat status;
    return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

void Append_Windows_Folder(std::vector<std::string> &folders, std::string_view windows_folder) {
    std::string folder;
    if (Map_To_Host(windows_folder, folder) == NO_ERROR) folders.push_back(folder);
}

// The host's list of its own folders, where relative ones do not count; one with ";" or "\" in it is a list
// of Windows folders.
void Append_Path_Folders(std::vector<std::string> &folders) {
    const char *variable = std::getenv("PATH");
    std::string_view rest = variable ? variable : "";
    const bool windows = rest.find_first_of(";\\") != std::string_view::npos;
    while (!rest.empty()) {
        const std::string_view folder = rest.substr(0, rest.find(windows ? ';' : ':'));
        rest.remove_prefix(std::min(rest.size(), folder.size() + 1));
        if (windows)
            Append_Windows_Folder(folders, folder);
        else if (folder.starts_with('/'))
            folders.emplace_back(folder);
    }
}

// All absolute: a module is known to the host by the path it was loaded from.
std::vector<std::string> Search_Order() {
    std::vector<std::string> folders;
    std::error_code error;
    const auto program = std::filesystem::read_symlink("/proc/self/exe", error);
    if (!error) folders.push_back(program.parent_path());
    const auto current = std::filesystem::current_path(error);
    if (!error) folders.push_back(current);
    Append_Windows_Folder(folders, System_Folder());
    Append_Windows_Folder(folders, Windows_Folder);
    Append_Path_Folders(folders);
    return folders;
}

} // namespace

std::string Find_File_In(const std::string &host_folder, const std::vector<std::string> &names) {
    for (const std::string &name : names) {
        std::string found = Find_In_Folder(host_folder, name);
        if (!found.empty() && Is_Regular_File(found)) return found;
    }
    return {};
}

std::string Find_File_By_Search(const std::vector<std::string> &names) {
    for (const std::string &folder : Search_Order()) {
        if (std::string found = Find_File_In(folder, names); !found.empty()) return found;
    }
    return {};
}
