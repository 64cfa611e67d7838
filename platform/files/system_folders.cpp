#include <platform/files/system_folders.h>

#include <platform/files.h>
#include <platform/files/give_text.h>
#include <platform/files/new_folder.h>
#include <platform/kernel/windows_version.h>

const char *System_Folder() {
    return Windows_Of_This_Machine().nt ? "C:\\WINDOWS\\system32" : "C:\\WINDOWS\\SYSTEM";
}

extern "C" {

DWORD GetTempPathA(DWORD size, LPSTR out) {
    Make_Folders(Temporary_Folder);
    return Give_Text(std::string(Temporary_Folder) + '\\', out, size);
}

UINT GetWindowsDirectoryA(LPSTR out, UINT size) {
    Make_Folders(Windows_Folder);
    return static_cast<UINT>(Give_Text(Windows_Folder, out, size));
}

UINT GetSystemDirectoryA(LPSTR out, UINT size) {
    const char *folder = System_Folder();
    Make_Folders(folder);
    return static_cast<UINT>(Give_Text(folder, out, size));
}
}
