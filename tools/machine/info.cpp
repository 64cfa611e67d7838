#include <tools/machine/machine_commands.h>

#include <tools/machine_choice.h>
#include <tools/output.h>
#include <tools/tables/columns.h>
#include <tools/tables/machine_view.h>

#include <platform/errors.h>
#include <platform/files.h>
#include <platform/gdi.h>
#include <platform/kernel.h>
#include <platform/machine.h>
#include <platform/user.h>

#include <climits>
#include <cstdio>
#include <set>

namespace tools {

namespace {

struct NamedVersion {
    DWORD platform, major, minor;
    const char *name;
};
constexpr NamedVersion Versions[] = {
    {VER_PLATFORM_WIN32_WINDOWS, 4, 0, "95"},  {VER_PLATFORM_WIN32_WINDOWS, 4, 10, "98"},
    {VER_PLATFORM_WIN32_WINDOWS, 4, 90, "Me"}, {VER_PLATFORM_WIN32_NT, 4, 0, "NT 4"},
    {VER_PLATFORM_WIN32_NT, 5, 0, "2000"},     {VER_PLATFORM_WIN32_NT, 5, 1, "XP"},
};
constexpr const char *Drive_Kinds[] = {"unknown", "missing", "removable", "fixed",
                                       "remote",  "cdrom",   "ramdisk"};
constexpr const char *Block_Kinds[] = {"unknown", "mutex", "mapping", "internal", "event"};

std::string Bytes_Text(unsigned long long bytes) {
    constexpr const char *units[] = {"bytes", "KB", "MB", "GB", "TB"};
    auto number = static_cast<double>(bytes);
    std::size_t unit = 0;
    for (; number >= 1024 && unit + 1 < std::size(units); ++unit) number /= 1024;
    char text[32];
    std::snprintf(text, sizeof text, unit == 0 ? "%.0f %s" : "%.1f %s", number, units[unit]);
    return text;
}

Json Windows_Json() {
    OSVERSIONINFOA version = {};
    version.dwOSVersionInfoSize = sizeof version;
    if (!GetVersionExA(&version)) throw Failure(Exit_Unusable, "the machine's version cannot be told");
    std::string name;
    for (const NamedVersion &known : Versions) {
        if (known.platform == version.dwPlatformId && known.major == version.dwMajorVersion &&
            known.minor == version.dwMinorVersion)
            name = known.name;
    }
    const std::string numbers = std::to_string(version.dwMajorVersion) + "." +
                                std::to_string(version.dwMinorVersion) + "." +
                                std::to_string(version.dwBuildNumber & 0xFFFF);
    return {{"name", name},
            {"version", numbers},
            {"nt", version.dwPlatformId == VER_PLATFORM_WIN32_NT},
            {"service_pack", version.szCSDVersion}};
}

Json Screen_Json() {
    const HDC screen = GetDC(nullptr);
    const int depth = GetDeviceCaps(screen, BITSPIXEL);
    ReleaseDC(nullptr, screen);
    return {{"width", GetSystemMetrics(SM_CXSCREEN)},
            {"height", GetSystemMetrics(SM_CYSCREEN)},
            {"depth", depth}};
}

Json Drives_Json() {
    Json drives = Json::array();
    char roots[128] = {}, folder[PATH_MAX];
    GetLogicalDriveStringsA(sizeof roots, roots);
    for (const char *root = roots; *root != 0; root += std::string(root).size() + 1) {
        ULARGE_INTEGER free = {}, size = {};
        const UINT kind = GetDriveTypeA(root);
        Json drive = {{"drive", std::string(root, 2)}, {"kind", Drive_Kinds[kind < 7 ? kind : 0]}};
        const bool told = GetDiskFreeSpaceExA(root, &free, &size, nullptr);
        drive["free"] = told ? Json(free.QuadPart) : Json();
        drive["size"] = told ? Json(size.QuadPart) : Json();
        drive["folder"] = Host_Path(root, folder, sizeof folder) ? Json(Host_Text(folder)) : Json();
        drives.push_back(drive);
    }
    return drives;
}

// Null when nothing was ever stored.
Json Registry_Json() {
    MachineRegistry registry = {};
    const LONG error = Look_At_Registry(&registry);
    if (error == ERROR_FILE_NOT_FOUND) return {};
    if (error != ERROR_SUCCESS) return {{"error", error}};
    return {{"keys", registry.keys},           {"values", registry.values},
            {"file_size", registry.file_size}, {"live_size", registry.live_size},
            {"damaged", registry.damaged},     {"generation", registry.generation}};
}

void Add_Life(Json &info) {
    info["processes"] = info["classes"] = info["blocks"] = Json::array();
    std::set<unsigned long> processes;
    for (const SharedBlockInUse &each : Shared_Blocks()) {
        if (each.processes.empty()) continue;
        processes.insert(each.processes.begin(), each.processes.end());
        info["blocks"].push_back({{"name", Utf8_Of(each.block.name)},
                                  {"kind", Block_Kinds[each.block.kind]},
                                  {"size", each.block.size},
                                  {"processes", each.processes}});
    }
    for (const unsigned long process : processes)
        info["processes"].push_back({{"process", process}, {"program", Host_Text(Program_Of(process))}});
    for (const MachineClass &each : Offered_Classes()) {
        if (!each.offered) continue;
        info["classes"].push_back({{"class", each.class_id},
                                   {"process", each.process_id},
                                   {"program", Host_Text(Program_Of(each.process_id))}});
    }
}

std::string Registry_Text(const Json &registry) {
    if (registry.is_null()) return "empty";
    if (registry.contains("error")) return "cannot be read, error " + registry["error"].dump();
    return registry["keys"].dump() + " keys, " + registry["values"].dump() + " values, " +
           Bytes_Text(registry["file_size"]) + " (" + Bytes_Text(registry["live_size"]) + " in use)";
}

void Print_Head(const Json &info) {
    const Json &windows = info["windows"], &screen = info["screen"];
    const std::string name = windows["name"], pack = windows["service_pack"], version = windows["version"];
    Print_Line("folder    " + Shown(info["folder"]));
    Print_Line("windows   " + (name.empty() ? "" : name + ", ") + version +
               (windows["nt"] ? ", of the NT line" : ", of the 95 line") + (pack.empty() ? "" : ", " + pack));
    Print_Line("screen    " + screen["width"].dump() + " x " + screen["height"].dump() + ", " +
               screen["depth"].dump() + " bits");
    Print_Line("registry  " + Registry_Text(info["registry"]));
}

void Print_Drives(const Json &drives) {
    Columns columns({"drive", "kind", ">free", ">size", "folder"});
    for (const Json &drive : drives) {
        const auto bytes = [&](const char *what) {
            return drive[what].is_null() ? "?" : Bytes_Text(drive[what]);
        };
        columns.Add({drive["drive"], drive["kind"], bytes("free"), bytes("size"),
                     drive["folder"].is_null() ? "" : drive["folder"].get<std::string>()});
    }
    Print("\n" + columns.Text());
}

void Print_Life(const Json &info) {
    if (info["processes"].empty()) return Print_Line("\nno program is on the machine");
    Columns processes({">process", "program", "classes"}), blocks({"block", "kind", ">size", "open in"});
    for (const Json &each : info["processes"]) {
        std::string classes;
        for (const Json &offered : info["classes"]) {
            if (offered["process"] == each["process"])
                classes += (classes.empty() ? "" : " ") + offered["class"].get<std::string>();
        }
        processes.Add({each["process"].dump(), each["program"], classes});
    }
    for (const Json &each : info["blocks"]) {
        std::string openers;
        for (const Json &process : each["processes"])
            openers += (openers.empty() ? "" : " ") + process.dump();
        blocks.Add({Machine_Text_Of(each["name"]), each["kind"], each["size"].dump(), openers});
    }
    Print("\n" + processes.Text() + "\n" + blocks.Text());
}

} // namespace

ExitCode Describe_Machine(bool json) {
    Require_Machine();
    Json info = {{"folder", Host_Text(Machine_Folder())}};
    info["windows"] = Windows_Json();
    info["screen"] = Screen_Json();
    info["registry"] = Registry_Json();
    info["drives"] = Drives_Json();
    Add_Life(info);
    if (json) {
        Print_Json(info);
        return Exit_Success;
    }
    Print_Head(info);
    Print_Drives(info["drives"]);
    Print_Life(info);
    return Exit_Success;
}

} // namespace tools
