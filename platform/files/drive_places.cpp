#include <platform/files/drive_places.h>

#include <platform/files/folder_entries.h>
#include <platform/files/ownership.h>
#include <platform/kernel/machine_state.h>

#include <filesystem>
#include <optional>
#include <string_view>
#include <sys/stat.h>

namespace {

bool Is_Folder(const std::string &path) {
    struct stat status;
    return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
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

} // namespace

char Small_Letter(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
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
