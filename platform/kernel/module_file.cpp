#include <platform/kernel/module_file.h>

#include <platform/errors.h>
#include <platform/files/paths.h>
#include <platform/files/search_order.h>
#include <platform/kernel/code_page.h>
#include <platform/kernel/file_descriptor.h>
#include <platform/kernel/trusted_code.h>

#include <cstring>
#include <elf.h>
#include <fcntl.h>
#include <sys/stat.h>

namespace {

constexpr const char *Built_In_Modules[] = {"kernel32.dll", "advapi32.dll", "user32.dll", "gdi32.dll"};

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
        return Map_To_Host(name.folder, folder) == NO_ERROR ? Find_File_In(folder, name.files)
                                                            : std::string();
    }
    return Find_File_By_Search(name.files);
}

long Check_Module_File(const std::string &host_path) {
    const FileDescriptor file(open(host_path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!file) return errno == EACCES ? ERROR_ACCESS_DENIED : ERROR_MOD_NOT_FOUND;
    if (!May_Give_Code(file.Get(), host_path)) return ERROR_ACCESS_DENIED;
    struct stat status;
    Elf32_Ehdr header;
    if (fstat(file.Get(), &status) != 0 || !Read_At(file.Get(), 0, &header, sizeof header)) {
        return ERROR_BAD_EXE_FORMAT;
    }
    const bool whole = Is_Of_This_Machine(header) && Holds_Its_Segments(file.Get(), header, status.st_size);
    return whole ? NO_ERROR : ERROR_BAD_EXE_FORMAT;
}
