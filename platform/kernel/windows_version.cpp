#include <platform/kernel/windows_version.h>

#include <platform/kernel.h>
#include <platform/kernel/code_page.h>
#include <platform/kernel/machine_state.h>
#include <platform/kernel/outcome.h>

#include <cstdio>
#include <cstring>

namespace {

constexpr DWORD First_Build_With_More_Calls = 1000; // of Windows 95

struct NamedVersion {
    const char *name;
    WindowsVersion version;
};

constexpr NamedVersion Known_Versions[] = {
    {"95", {false, 4, 0, 950, ""}},   {"98", {false, 4, 10, 1998, ""}},
    {"me", {false, 4, 90, 3000, ""}}, {"nt4", {true, 4, 0, 1381, "Service Pack 6"}},
    {"2000", {true, 5, 0, 2195, ""}}, {"xp", {true, 5, 1, 2600, ""}},
};

WindowsVersion Named_Version() {
    std::string name;
    if (Find_Machine_Setting("windows", name)) {
        for (const NamedVersion &known : Known_Versions) {
            if (Equal_Without_Case(name, known.name)) return known.version;
        }
    }
    return std::end(Known_Versions)[-1].version;
}

void Take_Numbers(WindowsVersion &version) {
    std::string numbers;
    unsigned major, minor, build;
    if (!Find_Machine_Setting("windows_version", numbers)) return;
    if (numbers.find_first_not_of("0123456789.") != std::string::npos) return;
    const int given = std::sscanf(numbers.c_str(), "%3u.%3u.%5u", &major, &minor, &build);
    if (given < 2) return;
    version.major = major;
    version.minor = minor;
    if (given == 3) version.build = build;
}

// Windows 9x has its version in the upper half of the build number once more.
DWORD Told_Build(const WindowsVersion &version) {
    if (version.nt) return version.build;
    return (version.build & 0xFFFF) | (version.minor & 0xFF) << 16 | (version.major & 0xFF) << 24;
}

} // namespace

WindowsVersion Windows_Of_This_Machine() {
    WindowsVersion version = Named_Version();
    Take_Numbers(version);
    return version;
}

bool Is_First_Windows_95() {
    const WindowsVersion version = Windows_Of_This_Machine();
    return !version.nt && version.major == 4 && version.minor == 0 &&
           version.build < First_Build_With_More_Calls;
}

extern "C" {

BOOL GetVersionExA(OSVERSIONINFOA *information) {
    if (!information || information->dwOSVersionInfoSize != sizeof *information) {
        return Succeed_Or_Tell(ERROR_INSUFFICIENT_BUFFER);
    }
    WindowsVersion version{};
    const auto find = [&] { return version = Windows_Of_This_Machine(), NO_ERROR; };
    if (!Succeed_Or_Tell(Code_Of(find))) return FALSE;
    information->dwMajorVersion = version.major;
    information->dwMinorVersion = version.minor;
    information->dwBuildNumber = Told_Build(version);
    information->dwPlatformId = version.nt ? VER_PLATFORM_WIN32_NT : VER_PLATFORM_WIN32_WINDOWS;
    std::snprintf(information->szCSDVersion, sizeof information->szCSDVersion, "%s", version.service_pack);
    return TRUE;
}
}
