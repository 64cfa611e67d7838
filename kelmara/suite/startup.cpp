#include <kelmara/suite/startup.h>

#include <kelmara/connectivity/component_interfaces.h>
#include <kelmara/connectivity/owned_interface.h>
#include <kelmara/foundation/memory.h>
#include <kelmara/foundation/string_helpers.h>
#include <kelmara/localization/world_beat.h>
#include <kelmara/system/directories.h>
#include <kelmara/system/reg_master.h>

#include <platform/kernel.h>
#include <platform/user.h>

#include <cstring>

namespace {

constexpr char Suite_Key[] = "Software\\Dunmerit Software\\Kelmara";
constexpr char Invalid_Characters_Value[] = "InvalidNameChars";
constexpr char Default_Invalid_Characters[] = "\\/:*?\"<>!.+,";
constexpr unsigned long Invalid_Characters_Size = 256;
constexpr unsigned long Command_Line_Size = 1024;
constexpr unsigned long Least_Free_Space = 0x9C4000;

void Tell_That_Disk_Is_Full() {
    CWorldBeat strings;
    strings.Load_Localization("otherStrings.ltx", false);
    strings.MessageBoxA(nullptr, "KMSTR_LOW_FREE_SPACE", "KMSTR_LOW_FREE_SPACE_TITLE",
                        MB_SYSTEMMODAL | MB_ICONHAND);
}

long Ask_For_Server() {
    OwnedInterface<IServerInterface> server;
    return server.Take([](void **out) {
        return CoCreateInstance(CLSID_SuiteServer, nullptr, CLSCTX_LOCAL_SERVER, IID_IServerInterface, out);
    });
}

// Into cleared `text`, which stays so without such a value. False, and cleared, for one that is there but
// cannot be used: unreadable, or too long with its terminator.
bool Read_Text(CRegMaster &registry, const char *value, char *text, unsigned long size) {
    if (!registry.RegEntryExists(value)) return true;
    unsigned long read = size;
    if (registry.GetRegEntry(value, text, &read) && std::memchr(text, 0, size)) return true;
    std::memset(text, 0, size);
    return false;
}

void Read_Command_Line(char *command_line) try {
    CRegMaster registry;
    if (registry.OpenKey(HKEY_LOCAL_MACHINE, Suite_Key))
        Read_Text(registry, "Server", command_line, Command_Line_Size);
} catch (...) { // no memory for a registry object
}

bool Start_Server(char *command_line) {
    STARTUPINFOA startup = {};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION started = {};
    if (!CreateProcessA(nullptr, command_line, nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                        &started)) {
        return false;
    }
    WaitForInputIdle(started.hProcess, INFINITE);
    CloseHandle(started.hThread);
    CloseHandle(started.hProcess);
    return true;
}

void Read_Invalid_Characters(char *characters) try {
    CRegMaster registry;
    if (!registry.OpenKey(HKEY_LOCAL_MACHINE, Suite_Key)) return;
    if (Read_Text(registry, Invalid_Characters_Value, characters, Invalid_Characters_Size) && !*characters)
        registry.SetRegEntry(Invalid_Characters_Value, Default_Invalid_Characters);
} catch (...) { // no memory for a registry object
}

} // namespace

void Init_Kelmara() {
    if (void *const block = ds_malloc(4)) ds_free(block);
    if (Check_Free_Disk_Space(Least_Free_Space)) return;
    Tell_That_Disk_Is_Full();
    ExitProcess(static_cast<UINT>(-1));
}

long Verify_Kelmara() {
    const long result = Ask_For_Server();
    if (result == 0 || result == CO_E_NOTINITIALIZED) return result;
    if (result == E_NOINTERFACE) return Server_Without_Interface;
    char command_line[Command_Line_Size] = {};
    Read_Command_Line(command_line);
    if (!Start_Server(command_line)) return Server_Not_Reached;
    return Ask_For_Server() == 0 ? 0 : Server_Not_Reached;
}

bool Is_Valid_Component_Name(const char *name) {
    if (!name) return false;
    char characters[Invalid_Characters_Size] = {};
    Read_Invalid_Characters(characters);
    return !Contains_Char(name, *characters ? characters : Default_Invalid_Characters);
}
