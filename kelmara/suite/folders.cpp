#include <kelmara/suite/folders.h>

#include <platform/registry.h>

#include <cstring>

namespace {

constexpr const char *Value_Names[] = {"Plugins",  "Prefs Folders",  "Templates", "Content",
                                       "Scripts",  "ScriptIncludes", "Bin",       "Root",
                                       "Database", "Localization"};
constexpr int Folder_Count = sizeof Value_Names / sizeof *Value_Names;

// A value may be stored without a terminator.
void End_Text(char *text, unsigned long size) {
    if (size < MAX_PATH)
        text[size] = 0;
    else if (!std::memchr(text, 0, MAX_PATH))
        text[0] = 0;
}

// Not through a CRegMaster, whose lists are for one thread: the log comes here from any.
void Read_Folder(const char *value_name, char *out) {
    HKEY key = nullptr;
    if (RegOpenKeyExA(HKEY_LOCAL_MACHINE, "SOFTWARE\\Dunmerit Software\\KelMara", 0, KEY_QUERY_VALUE, &key) !=
        ERROR_SUCCESS) {
        return;
    }
    DWORD size = MAX_PATH;
    if (RegQueryValueExA(key, value_name, nullptr, nullptr, reinterpret_cast<BYTE *>(out), &size) ==
        ERROR_SUCCESS) {
        End_Text(out, size);
    }
    RegCloseKey(key);
}

} // namespace

void GetKelMaraFolderPath(int folder, char *out) {
    if (!out) return;
    *out = 0;
    if (folder < 1 || folder > Folder_Count) return;
    Read_Folder(Value_Names[folder - 1], out);
}
