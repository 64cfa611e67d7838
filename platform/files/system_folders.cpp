#include <platform/files/system_folders.h>

#include <platform/files.h>
#include <platform/files/give_text.h>
#include <platform/files/new_folder.h>
#include <platform/kernel/outcome.h>
#include <platform/kernel/windows_version.h>

const char *System_Folder() {
    return Windows_Of_This_Machine().nt ? "C:\\WINDOWS\\system32" : "C:\\WINDOWS\\SYSTEM";
}

namespace {

// 0 when memory runs out.
DWORD Make_And_Tell(const char *folder, const char *ending, LPSTR out, DWORD size) {
    return Within_Memory(DWORD{0}, [=] {
        Make_Folders(folder);
        return Give_Text(std::string(folder) + ending, out, size);
    });
}

} // namespace

extern "C" {

DWORD GetTempPathA(DWORD size, LPSTR out) {
    return Make_And_Tell(Temporary_Folder, "\\", out, size);
}

UINT GetWindowsDirectoryA(LPSTR out, UINT size) {
    return static_cast<UINT>(Make_And_Tell(Windows_Folder, "", out, size));
}

UINT GetSystemDirectoryA(LPSTR out, UINT size) {
    const char *folder = Within_Memory<const char *>(nullptr, System_Folder);
    return folder ? static_cast<UINT>(Make_And_Tell(folder, "", out, size)) : 0;
}
}
