#include <kelmara/suite/folders.h>

#include <kelmara/system/reg_master.h>

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

void Read_Folder(const char *value_name, char *out) {
    CRegMaster registry;
    if (!registry.OpenKey(HKEY_LOCAL_MACHINE, "SOFTWARE\\Dunmerit Software\\KelMara")) return;
    unsigned long size = MAX_PATH;
    if (registry.GetRegEntry(value_name, out, &size)) End_Text(out, size);
}

} // namespace

void GetKelMaraFolderPath(int folder, char *out) {
    if (!out) return;
    *out = 0;
    if (folder < 1 || folder > Folder_Count) return;
    try {
        Read_Folder(Value_Names[folder - 1], out);
    } catch (...) {
        *out = 0; // there is no memory for a list
    }
}
