#include <platform/files/paths.h>

#include <platform/files/drive_places.h>
#include <platform/files/folder_entries.h>
#include <platform/kernel.h>
#include <platform/kernel/machine_state.h>
#include <platform/kernel/outcome.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <utility>

namespace {

bool Is_Separator(char c) {
    return c == '\\' || c == '/';
}

Names Parts_Of(std::string_view path, bool (*is_separator)(char)) {
    Names parts;
    std::string part;
    for (const char c : path) {
        if (!is_separator(c)) {
            part += c;
            continue;
        }
        if (!part.empty()) parts.push_back(std::move(part));
        part.clear();
    }
    if (!part.empty()) parts.push_back(std::move(part));
    return parts;
}

// Where a path counts from: the host's folder of the drive, and what of the current directory is in front.
struct Start {
    char letter = '\0';
    std::string root;
    Names host_parts;

    std::string Host_Folder() const {
        std::string folder = root;
        for (const std::string &part : host_parts) folder = Joined(folder, part);
        return folder;
    }
};

// Takes the drive off the front of `path`.
long Find_Start(std::string_view &path, Start &start) {
    const bool drive_given = path.size() >= 2 && path[1] == ':';
    const char letter = drive_given ? Small_Letter(path[0]) : '\0';
    if (drive_given) path.remove_prefix(2);
    const bool rooted = !path.empty() && Is_Separator(path[0]);

    DrivePlace current = {letter, {}};
    if (!drive_given || !rooted) {
        const bool known = Find_Current_Place(current);
        if (!known && !drive_given) return ERROR_PATH_NOT_FOUND;
    }
    start.letter = drive_given ? letter : current.letter;
    start.root = Drive_Root(start.letter);
    if (start.root.empty()) return Why_No_Machine(ERROR_PATH_NOT_FOUND);
    if (!rooted && (!drive_given || current.letter == letter)) {
        start.host_parts = Parts_Of(current.below, [](char c) { return c == '/'; });
    }
    return NO_ERROR;
}

// Names as the path has them, with "." and ".." taken out: those lead up into the current directory's parts
// where the path has none of its own left.
long Take_Names(std::string_view path, Start &start, Names &names) {
    for (const std::string &part : Parts_Of(path, Is_Separator)) {
        if (part == ".") continue;
        if (part == "..") {
            Names &last = names.empty() ? start.host_parts : names;
            if (!last.empty()) last.pop_back();
            continue;
        }
        for (const char c : part) {
            if (!Can_Stand_In_Name(c)) return ERROR_INVALID_NAME;
        }
        if (const auto name = Without_Trailing_Dots_And_Spaces(part); !name.empty()) names.emplace_back(name);
    }
    return NO_ERROR;
}

long Take_Apart(std::string_view windows_path, Start &start, Names &names) {
    if (windows_path.empty()) return ERROR_PATH_NOT_FOUND;
    if (windows_path.size() > 1 && Is_Separator(windows_path[0]) && Is_Separator(windows_path[1])) {
        return ERROR_BAD_NETPATH;
    }
    if (const long error = Find_Start(windows_path, start); error != NO_ERROR) return error;
    return Take_Names(windows_path, start, names);
}

std::string Root_Path(char letter) {
    return {static_cast<char>(letter - 'a' + 'A'), ':', '\\'};
}

void Append_Name(std::string &windows_path, std::string_view name) {
    if (!windows_path.ends_with('\\')) windows_path += '\\';
    windows_path += name;
}

std::string Full_Path(const Start &start, const Names &names) {
    std::string path = Root_Path(start.letter);
    for (const std::string &part : start.host_parts) Append_Name(path, Windows_Name_Of(part));
    for (const std::string &name : names) Append_Name(path, name);
    return path;
}

// Behind a link ".." leads elsewhere than the path's text says.
bool Leads_Up(const std::filesystem::path &path) {
    return std::find(path.begin(), path.end(), "..") != path.end();
}

// With the links of what exists of it followed.
std::filesystem::path Real_Path(const std::filesystem::path &path) {
    std::error_code error;
    std::filesystem::path real = std::filesystem::weakly_canonical(path, error);
    return error ? path.lexically_normal() : real;
}

bool Copy_Out(const std::string &text, char *out, unsigned long size) {
    if (!out || text.size() >= size) {
        SetLastError(ERROR_FILENAME_EXCED_RANGE);
        return false;
    }
    std::memcpy(out, text.c_str(), text.size() + 1);
    return true;
}

using Mapping = long (*)(std::string_view path, std::string &result);

bool Map_To_Buffer(Mapping map, const char *path, char *out, unsigned long size) {
    std::string result;
    if (const long error = map(path ? path : "", result); error != NO_ERROR) {
        SetLastError(error);
        return false;
    }
    return Copy_Out(result, out, size);
}

} // namespace

long Map_To_Host(std::string_view windows_path, std::string &host_path) {
    Start start;
    Names names;
    if (const long error = Take_Apart(windows_path, start, names); error != NO_ERROR) return error;
    host_path = Look_Up(start.Host_Folder(), names);
    return NO_ERROR;
}

long Find_Place(const char *text, HostPlace &place) {
    const std::string_view windows_path = text ? text : "";
    if (windows_path.size() > Longest_Path_Text) return ERROR_FILENAME_EXCED_RANGE;
    Start start;
    Names names;
    if (const long error = Take_Apart(windows_path, start, names); error != NO_ERROR) return error;
    HostPlace found;
    found.windows_path = Full_Path(start, names);
    if (found.windows_path.size() >= MAX_PATH) return ERROR_PATH_NOT_FOUND;
    found.host_path = Look_Up(start.Host_Folder(), names);
    found.is_root = names.empty() && start.host_parts.empty();
    found.means_folder = !found.is_root && Is_Separator(windows_path.back());
    place = std::move(found);
    return NO_ERROR;
}

long Map_To_Windows(std::string_view host_path, std::string &windows_path) {
    if (host_path.empty()) return ERROR_PATH_NOT_FOUND;
    std::error_code error;
    std::filesystem::path path = std::filesystem::absolute(host_path, error);
    if (error) return ERROR_PATH_NOT_FOUND;
    if (Leads_Up(path)) path = Real_Path(path);
    DrivePlace place = Place_Of(path.lexically_normal());
    if (place.letter == Host_Drive) {
        if (DrivePlace real = Place_Of(Real_Path(path)); real.letter != Host_Drive) place = real;
    }
    windows_path = Root_Path(place.letter);
    const Names parts = Parts_Of(place.below, [](char c) { return c == '/'; });
    for (const std::string &part : parts) Append_Name(windows_path, Windows_Name_Of(part));
    return NO_ERROR;
}

extern "C" {

bool Host_Path(const char *windows_path, char *out, unsigned long size) {
    return Within_Memory(false, [=] { return Map_To_Buffer(Map_To_Host, windows_path, out, size); });
}

bool Windows_Path(const char *host_path, char *out, unsigned long size) {
    return Within_Memory(false, [=] { return Map_To_Buffer(Map_To_Windows, host_path, out, size); });
}
}
