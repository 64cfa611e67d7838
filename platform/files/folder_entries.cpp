#include <platform/files/folder_entries.h>

#include <platform/kernel/code_page.h>
#include <platform/kernel/open_folder.h>

#include <cstring>
#include <sys/stat.h>

namespace {

bool Exists(const std::string &path) {
    struct stat status;
    return lstat(path.c_str(), &status) == 0;
}

// A character of code page 1252 takes 1 to 3 bytes on the host; most entries of a large folder need no more
// than this look.
bool Can_Have_Length(std::string_view host_name, std::size_t windows_length) {
    return host_name.size() >= windows_length && host_name.size() <= 3 * windows_length;
}

} // namespace

std::string Joined(const std::string &folder, std::string_view name) {
    std::string path = folder;
    if (!path.ends_with('/')) path += '/';
    return path.append(name);
}

bool Can_Stand_In_Name(char c) {
    return static_cast<unsigned char>(c) >= ' ' && !std::strchr("<>\"|?*:\\/", c);
}

std::string_view Without_Trailing_Dots_And_Spaces(std::string_view name) {
    return name.substr(0, name.find_last_not_of(". ") + 1);
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
