#include <platform/kernel/host_modules.h>

#include <platform/files/folder_entries.h>
#include <platform/kernel/code_page.h>

#include <link.h>
#include <string_view>
#include <vector>

namespace {

HMODULE Module_Around(const void *address) {
    Dl_info info;
    return dladdr(address, &info) ? static_cast<HMODULE>(info.dli_fbase) : nullptr;
}

// A reference to what is loaded already, null for what is not.
HostModule Refer_To_Loaded(const char *host_path) {
    return HostModule(dlopen(*host_path ? host_path : nullptr, RTLD_LAZY | RTLD_NOLOAD));
}

// A library's version stands behind its ending. The host's libraries that have one are no modules of the
// machine; this system's own are, by their name without it.
std::string Module_File_Name(std::string_view path) {
    const std::string_view file = path.substr(path.rfind('/') + 1);
    const std::size_t version = file.find(".so.");
    if (version == std::string_view::npos) return std::string(file);
    return file.starts_with("libkelmara") ? std::string(file.substr(0, version + 3)) : std::string();
}

// Paths of all modules in the process, those that it was linked with too; the program is left out.
std::vector<std::string> Loaded_Paths() {
    std::vector<std::string> paths;
    const auto take = [](dl_phdr_info *info, std::size_t, void *context) {
        const char *path = info->dlpi_name;
        if (*path && !Module_File_Name(path).empty())
            static_cast<std::vector<std::string> *>(context)->push_back(path);
        return 0;
    };
    dl_iterate_phdr(take, &paths);
    return paths;
}

} // namespace

HMODULE Module_Of(const HostModule &host) {
    link_map *map = nullptr;
    return host && dlinfo(host.get(), RTLD_DI_LINKMAP, &map) == 0 ? Module_Around(map->l_ld) : nullptr;
}

HMODULE The_Program() {
    return Module_Of(HostModule(dlopen(nullptr, RTLD_LAZY)));
}

HMODULE The_Platform() {
    static const char inside = 0;
    return Module_Around(&inside);
}

const char *Host_Path_Of(HMODULE module) {
    Dl_info info;
    void *map = nullptr;
    if (!dladdr1(module, &info, &map, RTLD_DL_LINKMAP) || info.dli_fbase != module || !map) return nullptr;
    return static_cast<link_map *>(map)->l_name;
}

void *Find_Export(HMODULE module, const char *name) {
    const char *path = Host_Path_Of(module);
    if (!path) return nullptr;
    const HostModule host = Refer_To_Loaded(path);
    void *address = host ? dlsym(host.get(), name) : nullptr;
    return address && Module_Around(address) == module ? address : nullptr;
}

HostModule Find_Loaded_By_Bare_Name(const ModuleName &name) {
    if (name.Is_Built_In()) {
        const char *path = Host_Path_Of(The_Platform());
        return path ? Refer_To_Loaded(path) : nullptr;
    }
    const std::vector<std::string> paths = Loaded_Paths();
    for (const std::string &file : name.files) {
        for (const std::string &path : paths) {
            if (Equal_Without_Case(Windows_Name_Of(Module_File_Name(path)), file))
                return Refer_To_Loaded(path.c_str());
        }
    }
    return nullptr;
}

HostModule Find_Loaded(const ModuleName &name) {
    if (name.Is_Bare()) return Find_Loaded_By_Bare_Name(name);
    const std::string file = Find_Module_File(name);
    return file.empty() ? nullptr : Refer_To_Loaded(file.c_str());
}

// `noexcept` makes a constructor that throws end the process: the host's loader cannot be unwound.
HostModule Load_On_Host(const std::string &host_path) noexcept {
    return HostModule(dlopen(host_path.c_str(), RTLD_NOW | RTLD_LOCAL));
}
