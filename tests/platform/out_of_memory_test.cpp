// Files, processes and modules, what programs share, the registry, and the machine seen from outside.

#include <tests/platform/out_of_memory.h>
#include <tests/platform/started.h>
#include <tests/support/built_modules.h>
#include <tests/support/failing_new.h>
#include <tests/support/handles.h>

#include <platform/local_memory.h>
#include <platform/machine_contents.h>
#include <platform/security.h>

namespace {

const std::string Plain = "z:" + Test_Module("plain"), Talkative = "z:" + Test_Module("talkative");

bool Closed(HANDLE handle) {
    return handle && CloseHandle(handle);
}

bool Starts_A_Thread() {
    const auto thread = reinterpret_cast<HANDLE>(_beginthreadex(
        nullptr, 0, [](void *) { return 0u; }, nullptr, 0, nullptr));
    if (thread) WaitForSingleObject(thread, INFINITE);
    return Closed(thread);
}

bool Finds(const char *pattern) {
    WIN32_FIND_DATAA data;
    const HANDLE find = FindFirstFileA(pattern, &data);
    if (find == INVALID_HANDLE_VALUE) return false;
    while (FindNextFileA(find, &data)) {
    }
    const bool all = GetLastError() == static_cast<DWORD>(ERROR_NO_MORE_FILES);
    FindClose(find);
    return all;
}

bool Maps() {
    const TestHandle mapping(
        CreateFileMappingA(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, 100, "Scarce"));
    if (!mapping) return false;
    void *const view = MapViewOfFile(mapping, FILE_MAP_WRITE, 0, 0, 0);
    return view && UnmapViewOfFile(view);
}

bool Tells_Groups() {
    HANDLE token;
    BYTE groups[1024];
    DWORD size;
    if (!OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token)) return false;
    const TestHandle closed_at_the_end(token);
    return GetTokenInformation(token, TokenGroups, groups, sizeof groups, &size);
}

bool Starts_A_Process() {
    char command[] = "z:\\bin\\true";
    PROCESS_INFORMATION started;
    if (!Start(started, command)) return false;
    WaitForSingleObject(started.hProcess, INFINITE);
    return CloseHandle(started.hProcess) && CloseHandle(started.hThread);
}

bool Loads() {
    const HMODULE module = LoadLibraryA(Plain.c_str());
    if (!module) return false;
    char path[MAX_PATH];
    const bool works = GetProcAddress(module, "Plain_Export_Of_No_Module") ||
                       GetLastError() != static_cast<DWORD>(ERROR_NOT_ENOUGH_MEMORY);
    const bool named = GetModuleFileNameA(module, path, sizeof path) != 0;
    FreeLibrary(module);
    return works && named;
}

bool failed_load_left_a_module = false;

bool Loads_What_Answers() {
    const HMODULE module = LoadLibraryA(Talkative.c_str());
    const DWORD error = GetLastError();
    failed_load_left_a_module |= !module && GetModuleHandleA(Talkative.c_str());
    SetLastError(error);
    return module && FreeLibrary(module);
}

bool Loads_As_Data() {
    const HMODULE module = LoadLibraryExA(Plain.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE);
    return module && FreeLibrary(module);
}

bool Opens_And_Deletes() {
    FILE *stream = Machine_Open_Stream("c:\\scarce.txt", "wb");
    if (!stream) return false;
    Machine_Close_Stream(stream);
    return DeleteFileA("c:\\scarce.txt");
}

bool Renames_One_Way_Or_The_Other() {
    if (Machine_Rename("c:\\here.txt", "c:\\there.txt") == 0) return true;
    return errno == ENOENT && Machine_Rename("c:\\there.txt", "c:\\here.txt") == 0;
}

bool Folder_Comes_And_Goes() {
    const bool made = CreateDirectoryA("c:\\scarce", nullptr);
    return (made || GetLastError() == static_cast<DWORD>(ERROR_ALREADY_EXISTS)) &&
           RemoveDirectoryA("c:\\scarce");
}

LONG Key_Comes_And_Goes() {
    HKEY key;
    LONG error =
        RegCreateKeyExA(HKEY_CURRENT_USER, "Scarce", 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr);
    if (error) return error;
    error = RegSetValueExA(key, "value", 0, REG_SZ, reinterpret_cast<const BYTE *>("text"), 5);
    if (!error) error = RegFlushKey(key);
    char path[100];
    DWORD size = sizeof path;
    if (!error) error = Registry_Key_Path(key, path, &size);
    RegCloseKey(key);
    return error ? error : RegDeleteKeyA(HKEY_CURRENT_USER, "Scarce");
}

TEST_F(OutOfMemoryTest, Is_A_Code_And_Leaves_No_Handle) {
    char text[MAX_PATH];
    OSVERSIONINFOA version = {};
    version.dwOSVersionInfoSize = sizeof version;
    const std::string copy = machine.Path("copy");
    const auto go_on = [](auto...) { return true; };
    machine.Write("drive_c/kept.txt", "kept");
    machine.Write("drive_c/kept.ini", "[s]\nk=value\n");
    machine.Write("drive_c/here.txt", "");
    machine.Write("copy/file", "");
    machine.Set("windows", "xp");
    for (const char *key : {"Kept\\Deep", "Kept\\Beside"}) TestKey(key).Set("value", key);
    const TestHandle seen(CreateFileMappingA(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, 10, "Seen"));
    Sweep({
        {"attributes", [] { return GetFileAttributesA("c:\\") != INVALID_FILE_ATTRIBUTES; }},
        {"set attributes", [] { return SetFileAttributesA("c:\\kept.txt", FILE_ATTRIBUTE_NORMAL) != FALSE; }},
        {"current directory",
         [&] { return SetCurrentDirectoryA("c:\\") && GetCurrentDirectoryA(sizeof text, text); }},
        {"change directory",
         [&] { return Machine_Change_Directory("c:\\") == 0 && Machine_Get_Directory(text, sizeof text); }},
        {"folder", Folder_Comes_And_Goes},
        {"file", Opens_And_Deletes},
        {"rename", Renames_One_Way_Or_The_Other},
        {"search", [] { return Finds("c:\\*.*"); }},
        {"search for a name", [] { return Finds("c:\\kept.txt"); }},
        {"free space",
         [] {
             return GetDiskFreeSpaceA("c:\\", nullptr, nullptr, nullptr, nullptr) &&
                    GetDiskFreeSpaceExA("c:\\", nullptr, nullptr, nullptr);
         }},
        {"drives",
         [&] { return GetLogicalDriveStringsA(sizeof text, text) && GetDriveTypeA("c:\\") == DRIVE_FIXED; }},
        {"folders of the system",
         [&] {
             return GetTempPathA(sizeof text, text) && GetWindowsDirectoryA(text, sizeof text) &&
                    GetSystemDirectoryA(text, sizeof text);
         }},
        {"profile",
         [&] { return GetPrivateProfileStringA("s", "k", "none", text, sizeof text, "c:\\kept.ini") == 5; }},
        {"version", [&] { return GetVersionExA(&version) != FALSE; }},
        {"token", Tells_Groups},
        {"mutex", [] { return Closed(CreateMutexA(nullptr, TRUE, "Scarce lock")); }},
        {"mutex without a name", [] { return Closed(CreateMutexA(nullptr, TRUE, nullptr)); }},
        {"event", [] { return Closed(CreateEventA(nullptr, TRUE, FALSE, "Scarce event")); }},
        {"event without a name", [] { return Closed(CreateEventA(nullptr, TRUE, FALSE, nullptr)); }},
        {"start of a thread", Starts_A_Thread},
        {"mapping", Maps},
        {"local block",
         [] {
             const HLOCAL block = LocalAlloc(LMEM_ZEROINIT, 10);
             return block && LocalSize(block) == 10 && !LocalFree(block);
         }},
        {"process", [] { return Closed(OpenProcess(PROCESS_ALL_ACCESS, FALSE, GetCurrentProcessId())); }},
        {"start of a process", Starts_A_Process},
        {"module", Loads},
        {"module that answers", Loads_What_Answers},
        {"module as data", Loads_As_Data},
        {"module by name", [] { return GetModuleHandleA("kernel32.dll") != nullptr; }},
        {"registry", [] { return With_Code(Key_Comes_And_Goes()); }},
        {"setting", [&] { return Get_Machine_Setting("windows", text, sizeof text); }},
        {"blocks seen", [&] { return Visit_Machine_Blocks(go_on, nullptr) != 0; }},
        {"mapping seen", [&] { return Copy_Machine_Mapping("Seen", text, sizeof text) > 0; }},
        {"registry seen",
         [] {
             MachineRegistry registry;
             return With_Code(Look_At_Registry(&registry));
         }},
        {"registry copied", [&] { return With_Code(Copy_Registry(copy.c_str())); }},
        {"registry mended", [] { return With_Code(Mend_Registry()); }},
        {"paths",
         [&] {
             return Host_Path("c:\\kept.txt", text, sizeof text) && Windows_Path("/", text, sizeof text);
         }},
    });
    EXPECT_GE(points, 3050u); // some nine in ten of those that there are
    EXPECT_FALSE(failed_load_left_a_module);
}

} // namespace
