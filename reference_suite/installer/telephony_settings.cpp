#include <reference_suite/installer/telephony_settings.h>

#include <reference_suite/installer/installed_key.h>

namespace {

#define SETTINGS "Software\\Microsoft\\Windows\\CurrentVersion\\"
constexpr char Locations_Key[] = SETTINGS "Telephony\\Locations";
constexpr char Lines_Key[] = SETTINGS "Telephony\\Lines";
constexpr char Devices_Key[] = SETTINGS "Remote Access\\Devices";

struct InstalledLocation {
    DWORD id;
    const char *name;
    DWORD country;
    const char *area_code, *outside_access, *long_distance_access, *disable_call_waiting;
    DWORD flags; // 1: tones
};

constexpr InstalledLocation Locations[] = {
    {0, "Home", 1, "206", "", "", "*70,", 1},
    {1, "Office", 1, "425", "9,", "9,", "", 1},
    {2, "Hotel", 44, "171", "0,", "0,", "", 0},
};

constexpr const char *Lines[] = {"Standard Modem", "Serial Cable between Two Computers"};

struct InstalledDevice {
    const char *type;
    const char *name;
};

constexpr InstalledDevice Devices[] = {
    {"modem", "Standard Modem"},
    {"isdn", "ISDN Adapter"},
    {"vpn", "Virtual Private Network Adapter"},
    {"SERIAL", "Broadband Adapter"},
};

std::string Numbered(const char *key, const char *name, unsigned long number) {
    return std::string(key) + "\\" + name + std::to_string(number);
}

LONG Write_Location(const InstalledLocation &location) {
    InstalledKey key(Numbered(Locations_Key, "Location", location.id));
    key.Set("ID", location.id);
    key.Set("Name", location.name);
    key.Set("Country", location.country);
    key.Set("AreaCode", location.area_code);
    key.Set("OutsideAccess", location.outside_access);
    key.Set("LongDistanceAccess", location.long_distance_access);
    key.Set("DisableCallWaiting", location.disable_call_waiting);
    key.Set("Flags", location.flags);
    return key.Result();
}

LONG Write_Line(unsigned long number, const char *name) {
    InstalledKey key(Numbered(Lines_Key, "Line", number));
    key.Set("Name", name);
    return key.Result();
}

LONG Write_Device(unsigned long number, const InstalledDevice &device) {
    InstalledKey key(Numbered(Devices_Key, "Device", number));
    key.Set("Type", device.type);
    key.Set("Name", device.name);
    return key.Result();
}

LONG Write_All() {
    LONG result = ERROR_SUCCESS;
    unsigned long lines = 0, devices = 0;
    for (const InstalledLocation &location : Locations)
        if (result == ERROR_SUCCESS) result = Write_Location(location);
    for (const char *name : Lines)
        if (result == ERROR_SUCCESS) result = Write_Line(lines++, name);
    for (const InstalledDevice &device : Devices)
        if (result == ERROR_SUCCESS) result = Write_Device(devices++, device);
    return result;
}

} // namespace

std::string Write_Telephony_Settings() {
    InstalledKey locations(Locations_Key);
    if (locations.Has("CurrentID")) return {};
    // The current location comes last: without it the next installation begins anew.
    LONG result = Write_All();
    if (result == ERROR_SUCCESS) locations.Set("CurrentID", Locations[0].id);
    if (result == ERROR_SUCCESS) result = locations.Result();
    if (result == ERROR_SUCCESS) return {};
    return "the settings of telephony cannot be written: error " + std::to_string(result);
}
