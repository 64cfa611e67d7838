#include <kelmara/connectivity/tapi.h>

#include <kelmara/foundation/owned_block.h>
#include <kelmara/foundation/string_helpers.h>
#include <kelmara/system/reg_master.h>

#include <platform/files.h>
#include <platform/kernel.h>
#include <platform/registry.h>

#include <climits>
#include <cstdio>
#include <cstring>

namespace {

#define LOCATIONS_KEY "Software\\Microsoft\\Windows\\CurrentVersion\\Telephony\\Locations"

constexpr int Name_Size = 256; // of a name that is staged, terminator included
constexpr int Most_Attempts = 16;

bool Keeps_Locations_In_Registry() {
    OSVERSIONINFOA version = {};
    version.dwOSVersionInfoSize = sizeof version;
    GetVersionExA(&version);
    return version.dwPlatformId == VER_PLATFORM_WIN32_NT || version.dwMinorVersion >= 10;
}

void Copy_Cut(const char *text, char *out, int size) {
    const std::size_t length = strnlen(text, static_cast<std::size_t>(size));
    std::memmove(out, text, length);
    out[length] = 0;
}

// --- the registry form ---

bool Open_Location(CRegMaster &location, const char *subkey) {
    char path[sizeof LOCATIONS_KEY + Name_Size];
    std::snprintf(path, sizeof path, LOCATIONS_KEY "\\%s", subkey);
    return location.OpenKey(HKEY_LOCAL_MACHINE, path);
}

bool Open_Current_Location(CRegMaster &location) {
    CRegMaster locations;
    long current = 0;
    if (!locations.OpenKey(HKEY_LOCAL_MACHINE, LOCATIONS_KEY)) return false;
    if (!locations.GetRegEntry("CurrentID", &current)) return false;
    char subkey[Name_Size];
    for (unsigned long index = 0; locations.GetSubkey(index, subkey); ++index) {
        long id = 0; // anew: a shorter value fills a part of it
        if (Open_Location(location, subkey) && location.GetRegEntry("ID", &id) && id == current) return true;
    }
    return false;
}

LONG Ask_Name(CRegMaster &location, char *name, DWORD &size) {
    return RegQueryValueExA(location.GetKey(), "Name", nullptr, nullptr, reinterpret_cast<BYTE *>(name),
                            &size);
}

// Whatever its size: the part that counts is kept. Empty where there is none, false where it cannot be read.
// Another process may change it between the two questions.
bool Read_Name(CRegMaster &location, char (&name)[Name_Size]) {
    *name = 0;
    for (int attempt = 0; attempt < Most_Attempts; ++attempt) {
        DWORD size = 0;
        LONG result = Ask_Name(location, nullptr, size);
        if (result == ERROR_FILE_NOT_FOUND) return true;
        if (result != ERROR_SUCCESS || size >= LONG_MAX) return false;
        const OwnedBlock whole(ds_malloc_clear(static_cast<long>(size + 1)));
        if (!whole.Get()) return false;
        result = Ask_Name(location, whole.Get(), size);
        if (result == ERROR_SUCCESS) return Copy_Cut(whole.Get(), name, Name_Size - 1), true;
        if (result != ERROR_MORE_DATA && result != ERROR_FILE_NOT_FOUND) return false;
    }
    return false;
}

// A CRegMaster that finds no memory for its list throws an `int`.
bool Read_From_Registry(char (&name)[Name_Size]) try {
    CRegMaster location;
    return Open_Current_Location(location) && Read_Name(location, name);
} catch (int) {
    return false;
}

// --- the file form ---

bool Read_Entry(const char *key, char (&entry)[Name_Size]) {
    GetPrivateProfileStringA("Locations", key, "", entry, Name_Size - 1, "telephon.ini");
    return *entry != 0;
}

char *Behind_Comma(char *text) {
    char *const comma = std::strchr(text, ',');
    return comma ? comma + 1 : nullptr;
}

bool Read_From_File(char (&name)[Name_Size]) {
    char entry[Name_Size] = {};
    if (!Read_Entry("CurrentLocation", entry)) return false;
    const char *const number = Behind_Comma(entry);
    if (!number) return false;
    char key[sizeof "Location" + Name_Size];
    std::snprintf(key, sizeof key, "Location%s", number);
    if (!Read_Entry(key, entry)) return false;
    char *const field = Behind_Comma(entry);
    if (!field) return false;
    if (char *const end = std::strchr(field, ',')) *end = 0;
    Strip_Quotes(field);
    Copy_Cut(field, name, Name_Size - 1);
    return true;
}

} // namespace

bool Get_Current_Dial_Location(char *out, int size) {
    if (!out || size < 0) return false;
    char name[Name_Size];
    if (!(Keeps_Locations_In_Registry() ? Read_From_Registry(name) : Read_From_File(name))) return false;
    Copy_Cut(name, out, size);
    return true;
}
