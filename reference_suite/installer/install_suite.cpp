#include <reference_suite/installer/install_suite.h>

#include <reference_suite/installer/component_settings.h>
#include <reference_suite/installer/installed_key.h>
#include <reference_suite/installer/library_links.h>
#include <reference_suite/installer/register_component.h>
#include <reference_suite/installer/string_tables.h>
#include <reference_suite/installer/suite_icon.h>
#include <reference_suite/installer/telephony_settings.h>

#include <platform/files.h>
#include <platform/machine.h>

#include <fcntl.h>
#include <filesystem>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

struct SuiteFolder {
    const char *value; // of the suite's key; it ends in a backslash, so that names can be put behind it
    const char *name;  // below the root
};

constexpr SuiteFolder Folders[] = {
    {"Root", ""},
    {"Plugins", "Plugins"},
    {"Prefs Folders", "Prefs"},
    {"Templates", "Templates"},
    {"Content", "Content"},
    {"Scripts", "Scripts"},
    {"ScriptIncludes", "Scripts\\Includes"},
    {"Bin", "Bin"},
    {"Database", "Database"},
    {"Localization", "Localization"},
};

struct Companion {
    const char *value; // of the suite's key, its path
    const char *built; // in the folder of built modules
    const char *installed;
};

constexpr Companion Companions[] = {
    {"Memory", "kmmemory.so", "kmmemory.dll"},
    {"Log", "kmlog.so", "kmlog.dll"},
    {"Wait", "kmwait.so", "kmwait.dll"},
};

struct BuiltFile {
    const char *built; // in the folder of built modules
    const char *installed;
};

// Modules are registered once they are there.
constexpr char Server_Program[] = "kmserver.exe";
constexpr BuiltFile Components[] = {
    {"kmserver", Server_Program},
    {"kmserverproxy.so", "kmserverproxy.dll"},
    {"kmconfiguration.so", "kmconfiguration.dll"},
    {"kmlocation.so", "kmlocation.dll"},
    {"kmphonebook.so", "kmphonebook.dll"},
    {"kmconnection.so", "kmconnection.dll"},
};

// Looked for by name where the system has its modules.
constexpr BuiltFile Services[] = {
    {"tapi32.so", "tapi32.dll"},
    {"rasapi32.so", "rasapi32.dll"},
};

struct ContentFile {
    const char *name; // in the folder "content" beside the built modules
    const char *installed;
};

constexpr ContentFile Content[] = {
    {"services.sct", "Scripts\\services.sct"},
    {"welcome.tpl", "Scripts\\welcome.tpl"},
    {"customer.def", "Scripts\\Includes\\customer.def"},
};

std::string Below_Root(const std::string &name) {
    return name.empty() ? Suite_Root : std::string(Suite_Root) + "\\" + name;
}

/// Empty when the machine has no such place.
std::string On_Host(const std::string &windows_path) {
    char path[4096];
    return Host_Path(windows_path.c_str(), path, sizeof path) ? path : std::string();
}

std::string Make_Folders() {
    for (const SuiteFolder &folder : Folders) {
        const std::string path = On_Host(Below_Root(folder.name));
        std::error_code error;
        if (!path.empty()) fs::create_directories(path, error);
        if (path.empty() || error) return Below_Root(folder.name) + " cannot be made: " + error.message();
    }
    return {};
}

// Puts a file or folder on the disk: the keys that name it are there before long.
bool Flush(const fs::path &path) {
    const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) return false;
    const bool flushed = fsync(descriptor) == 0;
    close(descriptor);
    return flushed;
}

// Copied aside and renamed over: a program that has the old module loaded keeps it, and none sees half of
// one.
std::string Copy_File(const std::string &from, const std::string &to) {
    const std::string aside = to + ".new" + std::to_string(getpid());
    std::error_code error;
    fs::copy_file(from, aside, fs::copy_options::overwrite_existing, error);
    if (!error && !Flush(aside)) error = std::make_error_code(std::errc::io_error);
    if (!error) fs::rename(aside, to, error);
    if (!error && !Flush(fs::path(to).parent_path())) error = std::make_error_code(std::errc::io_error);
    if (!error) return {};
    std::error_code ignored;
    fs::remove(aside, ignored);
    return from + " cannot be copied to " + to + ": " + error.message();
}

std::string Copy_Companions(const std::string &module_folder) {
    const std::string bin = On_Host(Below_Root("Bin"));
    for (const Companion &companion : Companions) {
        std::string problem =
            Copy_File(module_folder + "/" + companion.built, bin + "/" + companion.installed);
        if (!problem.empty()) return problem;
    }
    return {};
}

std::string Copy_Components(const std::string &module_folder) {
    const std::string bin = On_Host(Below_Root("Bin"));
    for (const BuiltFile &component : Components) {
        std::string problem =
            Copy_File(module_folder + "/" + component.built, bin + "/" + component.installed);
        if (!problem.empty()) return problem;
    }
    return {};
}

// By the library, whose memory services are there once the suite's key is.
std::string Register_Components() {
    for (const BuiltFile &component : Components) {
        if (component.installed == Server_Program) continue;
        std::string problem = Register_Component(Below_Root("Bin\\") + component.installed);
        if (!problem.empty()) return problem;
    }
    return {};
}

// To the Windows folder, where they are found whichever Windows the machine is.
std::string Copy_Services(const std::string &module_folder) {
    char windows[MAX_PATH];
    if (GetWindowsDirectoryA(windows, sizeof windows) == 0) return "the machine has no Windows folder";
    for (const BuiltFile &service : Services) {
        std::string problem =
            Copy_File(module_folder + "/" + service.built, On_Host(windows) + "/" + service.installed);
        if (!problem.empty()) return problem;
    }
    return {};
}

std::string Copy_Content(const std::string &content_folder) {
    for (const ContentFile &file : Content) {
        std::string problem =
            Copy_File(content_folder + "/" + file.name, On_Host(Below_Root(file.installed)));
        if (!problem.empty()) return problem;
    }
    return {};
}

std::string Write_Keys() {
    InstalledKey key(Suite_Key);
    for (const SuiteFolder &folder : Folders) key.Set(folder.value, Below_Root(folder.name) + "\\");
    for (const Companion &companion : Companions)
        key.Set(companion.value, Below_Root("Bin\\") + companion.installed);
    key.Set("Server", "\"" + Below_Root("Bin\\") + Server_Program + "\"");
    key.Flush();
    if (key.Result() == ERROR_SUCCESS) return {};
    return "the registry key " + std::string(Suite_Key) + " cannot be written: error " +
           std::to_string(key.Result());
}

} // namespace

std::string Install_Suite(const std::string &module_folder) {
    if (!Machine_Folder()) return "there is no machine to install on";
    // The keys come late: a program finds the suite only once it is whole. Behind them, what registers itself
    // by the library needs the memory companion that they name.
    std::string problem = Make_Folders();
    if (problem.empty()) problem = Copy_Companions(module_folder);
    if (problem.empty()) problem = Copy_Components(module_folder);
    if (problem.empty()) problem = Link_Libraries(On_Host(Below_Root("Bin")));
    if (problem.empty()) problem = Copy_Content(module_folder + "/content");
    if (problem.empty())
        problem = Make_String_Tables(module_folder + "/content", On_Host(Below_Root("Localization")));
    if (problem.empty()) problem = Write_Suite_Icon(On_Host(Below_Root("Content\\kelmara.ico")));
    if (problem.empty()) problem = Copy_Services(module_folder);
    if (problem.empty()) problem = Write_Telephony_Settings();
    if (problem.empty()) problem = Write_Component_Settings();
    if (problem.empty()) problem = Write_Keys();
    if (problem.empty()) problem = Register_Components();
    return problem;
}
