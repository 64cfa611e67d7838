#include <platform/files/paths.h>

#include <platform/files/ownership.h>
#include <platform/kernel.h>
#include <platform/kernel/code_page.h>
#include <platform/kernel/machine_state.h>
#include <platform/kernel/open_folder.h>
#include <platform/kernel/outcome.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <memory>
#include <optional>
#include <sys/stat.h>
#include <vector>

namespace {

constexpr char Host_Drive = 'z';

using Names = std::vector<std::string>;

// A place of the host, told from a drive's root.
struct DrivePlace {
    char letter;
    std::string below; // without a separator in front; empty for the root itself
};

bool Is_Separator(char c) {
    return c == '\\' || c == '/';
}

char Small_Letter(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool Is_Folder(const std::string &path) {
    struct stat status;
    return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

bool Exists(const std::string &path) {
    struct stat status;
    return lstat(path.c_str(), &status) == 0;
}

std::string Joined(const std::string &folder, std::string_view name) {
    std::string path = folder;
    if (!path.ends_with('/')) path += '/';
    return path.append(name);
}

// True when `path` is `root` or lies in it; `below` is then what leads there.
bool Lies_In(std::string_view path, std::string_view root, std::string &below) {
    while (root.ends_with('/')) root.remove_suffix(1);
    if (!path.starts_with(root)) return false;
    path.remove_prefix(root.size());
    if (!path.empty() && path[0] != '/') return false;
    below = path.substr(path.empty() ? 0 : 1);
    return true;
}

bool Is_Drive_Letter(char letter) {
    return letter >= 'a' && letter <= 'z';
}

std::string Drive_Folder_Name(char letter) {
    return std::string("drive_") + letter;
}

// A drive whose folder is in the machine's own, by the path's text alone.
std::optional<DrivePlace> Place_On_Own_Drive(const std::string &machine, const std::string &path) {
    std::string inside, below;
    if (machine.empty() || !Lies_In(path, machine, inside)) return {};
    for (char letter = 'a'; letter < Host_Drive; ++letter) {
        if (Lies_In(inside, Drive_Folder_Name(letter), below)) return DrivePlace{letter, below};
    }
    return {};
}

// A drive whose folder is a link to somewhere else; the innermost one counts.
std::optional<DrivePlace> Place_On_Linked_Drive(const std::string &machine, const std::string &path) {
    std::optional<DrivePlace> place;
    std::size_t innermost = 0;
    for (char letter = 'a'; letter < Host_Drive && !machine.empty(); ++letter) {
        const std::filesystem::path folder = Joined(machine, Drive_Folder_Name(letter));
        std::error_code error;
        if (!std::filesystem::is_symlink(folder, error)) continue;
        const std::string real = std::filesystem::canonical(folder, error);
        std::string below;
        if (error || real.size() <= innermost || !Lies_In(path, real, below)) continue;
        innermost = real.size();
        place = DrivePlace{letter, below};
    }
    return place;
}

DrivePlace Place_Of(const std::string &absolute) {
    const std::string machine = Machine_Folder_Path();
    if (const auto own = Place_On_Own_Drive(machine, absolute)) return *own;
    if (const auto linked = Place_On_Linked_Drive(machine, absolute)) return *linked;
    return {Host_Drive, absolute.substr(1)};
}

bool Find_Current_Place(DrivePlace &place) {
    std::error_code error;
    const std::string current = std::filesystem::current_path(error);
    if (error) return false;
    place = Place_Of(current);
    return true;
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

bool Can_Stand_In_Name(char c) {
    return static_cast<unsigned char>(c) >= ' ' && !std::strchr("<>\"|?*:\\/", c);
}

std::string_view Without_Trailing_Dots_And_Spaces(std::string_view name) {
    return name.substr(0, name.find_last_not_of(". ") + 1);
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

std::string Look_Up(std::string folder, const Names &names) {
    std::string exact = folder;
    for (const std::string &name : names) exact = Joined(exact, Utf8_Of_Ansi(name));
    if (Exists(exact)) return exact;
    bool there = true;
    for (const std::string &name : names) {
        const std::string found = there ? Find_In_Folder(folder, name) : std::string();
        there = !found.empty();
        folder = there ? found : Joined(folder, Utf8_Of_Ansi(name));
    }
    return folder;
}

// A character of code page 1252 takes 1 to 3 bytes on the host; most entries of a large folder need no more
// than this look.
bool Can_Have_Length(std::string_view host_name, std::size_t windows_length) {
    return host_name.size() >= windows_length && host_name.size() <= 3 * windows_length;
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

std::string Drive_Root(char letter) {
    letter = Small_Letter(letter);
    if (letter == Host_Drive) return "/";
    const std::string machine = Machine_Folder_Path();
    if (!Is_Drive_Letter(letter) || machine.empty()) return {};
    const std::string name = Drive_Folder_Name(letter);
    std::string folder = Joined(machine, name);
    if (Is_Folder(folder)) return folder;
    std::string setting;
    if (letter != 'c' && !Find_Machine_Setting(name, setting)) return {};
    Make_Owners_Folder(folder);
    return Is_Folder(folder) ? folder : std::string();
}

std::string Windows_Name_Of(std::string_view host_name) {
    std::string name = Ansi_Of_Utf8(host_name);
    for (char &c : name) {
        if (!Can_Stand_In_Name(c)) c = '?';
    }
    if (name.ends_with('.') || name.ends_with(' ')) name.back() = '?';
    return name;
}

std::string Find_In_Folder(const std::string &host_folder, std::string_view windows_name) {
    const std::string_view kept = Without_Trailing_Dots_And_Spaces(windows_name);
    if (kept.empty() || kept.size() != windows_name.size()) return {};
    std::string exact = Joined(host_folder, Utf8_Of_Ansi(windows_name));
    if (Exists(exact)) return exact;
    const OpenFolder folder = Open_Folder(host_folder);
    std::string found;
    while (const dirent *entry = folder ? readdir(folder.get()) : nullptr) {
        const std::string_view name = entry->d_name;
        if (!Can_Have_Length(name, windows_name.size()) || (!found.empty() && found <= name)) continue;
        if (Equal_Without_Case(Windows_Name_Of(name), windows_name)) found = name;
    }
    return found.empty() ? found : Joined(host_folder, found);
}

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
