#include <platform/kernel/module_file.h>

#include <platform/errors.h>
#include <platform/files/paths.h>
#include <platform/kernel/code_page.h>
#include <platform/kernel/file_descriptor.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <elf.h>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>

namespace {

constexpr const char *Built_In_Modules[] = {"kernel32.dll", "advapi32.dll", "user32.dll"};
constexpr const char *System_Folders[] = {"C:\\WINDOWS\\system32", "C:\\WINDOWS"};

bool Is_Regular_File(const std::string &path) {
    struct stat status;
    return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

std::string Find_In(const std::string &host_folder, const std::vector<std::string> &files) {
    for (const std::string &file : files) {
        std::string found = Find_In_Folder(host_folder, file);
        if (!found.empty() && Is_Regular_File(found)) return found;
    }
    return {};
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
    for (const char *folder : System_Folders) Append_Windows_Folder(folders, folder);
    Append_Path_Folders(folders);
    return folders;
}

bool Read_At(int descriptor, off_t offset, void *bytes, std::size_t size) {
    return pread(descriptor, bytes, size, offset) == static_cast<ssize_t>(size);
}

bool Is_Of_This_Machine(const Elf32_Ehdr &header) {
    return std::memcmp(header.e_ident, ELFMAG, SELFMAG) == 0 && header.e_ident[EI_CLASS] == ELFCLASS32 &&
           header.e_ident[EI_DATA] == ELFDATA2LSB && header.e_machine == EM_386 && header.e_type == ET_DYN &&
           header.e_phentsize == sizeof(Elf32_Phdr) && header.e_phnum > 0;
}

// What the file promises to hold is in it: the host would map beyond its end and die of it.
bool Holds_Its_Segments(int descriptor, const Elf32_Ehdr &header, off_t size) {
    for (unsigned i = 0; i < header.e_phnum; ++i) {
        Elf32_Phdr segment;
        const off_t offset = static_cast<off_t>(header.e_phoff) + static_cast<off_t>(i * sizeof segment);
        if (!Read_At(descriptor, offset, &segment, sizeof segment)) return false;
        if (static_cast<off_t>(segment.p_offset) + static_cast<off_t>(segment.p_filesz) > size) return false;
    }
    return true;
}

} // namespace

ModuleName::ModuleName(std::string_view path) {
    const std::size_t separator = path.find_last_of("\\/:");
    const std::size_t leaf_start = separator == std::string_view::npos ? 0 : separator + 1;
    folder = path.substr(0, leaf_start);
    std::string leaf(path.substr(leaf_start));
    if (leaf.empty()) return;
    if (leaf.ends_with('.')) {
        leaf.pop_back();
        files = {leaf};
        return;
    }
    if (leaf.find('.') == std::string::npos) leaf += ".dll";
    const std::string stem = leaf.substr(0, leaf.rfind('.'));
    files = {leaf};
    if (!stem.empty()) files.insert(files.end(), {stem + ".so", "lib" + stem + ".so"});
}

bool ModuleName::Is_Built_In() const {
    if (!Is_Bare() || files.empty()) return false;
    for (const char *name : Built_In_Modules) {
        if (Equal_Without_Case(name, files.front())) return true;
    }
    return false;
}

std::string Find_Module_File(const ModuleName &name) {
    if (!name.Is_Bare()) {
        std::string folder;
        return Map_To_Host(name.folder, folder) == NO_ERROR ? Find_In(folder, name.files) : std::string();
    }
    for (const std::string &folder : Search_Order()) {
        if (std::string found = Find_In(folder, name.files); !found.empty()) return found;
    }
    return {};
}

long Check_Module_File(const std::string &host_path) {
    const FileDescriptor file(open(host_path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!file) return errno == EACCES ? ERROR_ACCESS_DENIED : ERROR_MOD_NOT_FOUND;
    struct stat status;
    Elf32_Ehdr header;
    if (fstat(file.Get(), &status) != 0 || !Read_At(file.Get(), 0, &header, sizeof header)) {
        return ERROR_BAD_EXE_FORMAT;
    }
    const bool whole = Is_Of_This_Machine(header) && Holds_Its_Segments(file.Get(), header, status.st_size);
    return whole ? NO_ERROR : ERROR_BAD_EXE_FORMAT;
}
