#include <platform/files.h>
#include <platform/files/drives.h>
#include <platform/files/host_error.h>
#include <platform/kernel/machine_state.h>
#include <platform/kernel/outcome.h>
#include <platform/kernel/windows_version.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <sys/stat.h>
#include <sys/statvfs.h>

namespace {

using Bytes = unsigned long long;

constexpr DWORD Sector = 512;
constexpr DWORD Largest_Number = 0xFFFFFFFF;

struct Space {
    Bytes size, free, free_to_caller;
    DWORD cluster; // bytes
};

// Windows 95, 98 and Me show callers that know of no larger disks a disk just below 2 GB.
constexpr DWORD Old_Cluster = 32768;
constexpr DWORD Most_Old_Clusters = 65535;

bool Find_Stated(char letter, const char *what, Bytes &bytes) {
    std::string text;
    if (!Find_Machine_Setting(Drive_Setting(letter) + what, text)) return false;
    Bytes stated = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), stated);
    if (error != std::errc() || end != text.data() + text.size()) return false;
    bytes = stated;
    return true;
}

// What is not stated keeps within what is.
void Take_Stated(char letter, Space &space) {
    const bool free_stated = Find_Stated(letter, "_free", space.free);
    const bool size_stated = Find_Stated(letter, "_size", space.size);
    if (free_stated) space.free_to_caller = space.free;
    if (size_stated && !free_stated) space.free = std::min(space.free, space.size);
    space.size = std::max(space.size, space.free);
    space.free_to_caller = std::min(space.free_to_caller, space.free);
}

long Find_Space(LPCSTR path, Space &space) {
    HostPlace place;
    if (const long error = Find_Disk_Place(path, place); error != NO_ERROR) return error;
    struct stat status;
    struct statvfs disk;
    const char *folder = place.host_path.c_str();
    if (stat(folder, &status) != 0 || statvfs(folder, &disk) != 0) return Error_At(place.host_path, errno);
    if (!S_ISDIR(status.st_mode)) return ERROR_DIRECTORY;

    space.cluster = std::max<DWORD>(disk.f_frsize / Sector, 1) * Sector;
    space.size = Bytes{disk.f_blocks} * disk.f_frsize;
    space.free = Bytes{disk.f_bfree} * disk.f_frsize;
    space.free_to_caller = Bytes{disk.f_bavail} * disk.f_frsize;
    Take_Stated(place.windows_path[0], space);
    return NO_ERROR;
}

// The space with the clusters that it is counted in, of which there are not more than `most`.
long Find_Counted_Space(LPCSTR root, Space &space, DWORD &most) {
    if (const long error = Find_Space(root, space); error != NO_ERROR) return error;
    if (Windows_Of_This_Machine().nt) return NO_ERROR;
    space.cluster = Old_Cluster;
    most = Most_Old_Clusters;
    return NO_ERROR;
}

DWORD Clusters(Bytes bytes, const Space &space, DWORD most) {
    return static_cast<DWORD>(std::min<Bytes>(bytes / space.cluster, most));
}

void Give(DWORD *out, DWORD value) {
    if (out) *out = value;
}

void Give(ULARGE_INTEGER *out, Bytes value) {
    if (out) out->QuadPart = value;
}

} // namespace

extern "C" {

BOOL GetDiskFreeSpaceA(LPCSTR root, DWORD *sectors_per_cluster, DWORD *bytes_per_sector, DWORD *free_clusters,
                       DWORD *clusters) {
    Space space;
    DWORD most = Largest_Number;
    if (!Succeed_Or_Tell(Code_Of([&] { return Find_Counted_Space(root, space, most); }))) return FALSE;
    Give(sectors_per_cluster, space.cluster / Sector);
    Give(bytes_per_sector, Sector);
    Give(free_clusters, Clusters(space.free_to_caller, space, most));
    Give(clusters, Clusters(space.size, space, most));
    return TRUE;
}

BOOL GetDiskFreeSpaceExA(LPCSTR folder, ULARGE_INTEGER *free_to_caller, ULARGE_INTEGER *size,
                         ULARGE_INTEGER *free) {
    Space space;
    if (!Succeed_Or_Tell(Code_Of([&] { return Find_Space(folder, space); }))) return FALSE;
    Give(free_to_caller, space.free_to_caller);
    Give(size, space.size);
    Give(free, space.free);
    return TRUE;
}
}
