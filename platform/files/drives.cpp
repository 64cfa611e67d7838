#include <platform/files/drives.h>

#include <platform/files.h>
#include <platform/files/drive_places.h>
#include <platform/files/give_text.h>
#include <platform/files/paths.h>
#include <platform/kernel/code_page.h>
#include <platform/kernel/machine_state.h>
#include <platform/kernel/outcome.h>

namespace {

struct NamedKind {
    const char *name;
    UINT kind;
};

constexpr NamedKind Kinds[] = {
    {"", DRIVE_FIXED},      {"fixed", DRIVE_FIXED},   {"removable", DRIVE_REMOVABLE},
    {"cdrom", DRIVE_CDROM}, {"remote", DRIVE_REMOTE}, {"ramdisk", DRIVE_RAMDISK},
};

UINT Kind_At(LPCSTR root) {
    const bool bare = root && root[0] && root[1] == ':' && !root[2];
    HostPlace place;
    const long error = Find_Disk_Place(bare ? (std::string(root) + '\\').c_str() : root, place);
    return error == NO_ERROR && place.is_root ? Drive_Kind(place.windows_path[0]) : DRIVE_NO_ROOT_DIR;
}

// Each with its terminator.
std::string Roots_Of_All_Drives() {
    std::string roots;
    for (char letter = 'A'; letter <= 'Z'; ++letter) {
        if (!Drive_Root(letter).empty()) roots.append({letter, ':', '\\', '\0'});
    }
    return roots;
}

} // namespace

UINT Drive_Kind(char letter) {
    std::string name;
    if (letter == 'C' || letter == 'Z' || !Find_Machine_Setting(Drive_Setting(letter), name)) {
        return DRIVE_FIXED;
    }
    for (const NamedKind &known : Kinds) {
        if (Equal_Without_Case(name, known.name)) return known.kind;
    }
    return DRIVE_UNKNOWN;
}

std::string Drive_Setting(char letter) {
    return std::string("drive_") + letter;
}

long Find_Disk_Place(LPCSTR path, HostPlace &place) {
    return Find_Place(path ? path : "\\", place);
}

extern "C" {

DWORD GetLogicalDriveStringsA(DWORD size, LPSTR out) {
    return Within_Memory(DWORD{0}, [=] { return Give_Text(Roots_Of_All_Drives(), out, size); });
}

UINT GetDriveTypeA(LPCSTR root) {
    return Within_Memory(DRIVE_UNKNOWN, [=] { return Kind_At(root); });
}
}
