#include <kelmara/connectivity/connection_kind.h>

#include <kelmara/connectivity/sized_record.h>
#include <kelmara/foundation/owned_block.h>
#include <kelmara/foundation/safe_str.h>
#include <kelmara/foundation/string_helpers.h>
#include <kelmara/localization/world_beat.h>
#include <kelmara/system/os_helpers.h>

#include <platform/kernel.h>
#include <platform/telephony.h>

#include <climits>
#include <cstdio>
#include <cstring>

namespace {

constinit char Pppoe_Device_Name[256] = "";

bool Is_NT_Above_4(const OSVERSIONINFOA &version) {
    return version.dwPlatformId == VER_PLATFORM_WIN32_NT && version.dwMajorVersion > 4;
}

bool Is_XP(const OSVERSIONINFOA &version) {
    return version.dwPlatformId == VER_PLATFORM_WIN32_NT && version.dwMajorVersion == 5 &&
           version.dwMinorVersion >= 1;
}

// A text that finds no memory throws; the next call tries again.
void Fill_Pppoe_Device_Name() try {
    CWorldBeat texts;
    if (texts.Load_Localization("confPlugins.ltx", false) != 0) return;
    const CSafeStr &name = texts.Get_Temp_String("KMSTR_XP_PPPOE_DEVICE");
    std::snprintf(Pppoe_Device_Name, sizeof Pppoe_Device_Name, "%s", static_cast<char *>(name));
} catch (...) {
}

using DeviceType = char[RAS_MaxDeviceType + 1];

bool Is_Named(const RASDEVINFOA &device, const char *name) {
    return Text_In_Record(device.szDeviceName, sizeof device.szDeviceName, 0).Equals(name);
}

// The type of the first device of that name. Only what the block has room for is looked at, whatever count
// the service tells, and what it left unfilled is clear.
bool Find_Type(RasEnumDevices *list_devices, const char *name, DeviceType &type) {
    DWORD size = 0, count = 0;
    list_devices(nullptr, &size, &count);
    const DWORD room = size / sizeof(RASDEVINFOA);
    if (room == 0 || size > LONG_MAX) return false;
    const OwnedBlock block(ds_malloc(static_cast<long>(size)));
    if (!block.Get()) return false;
    std::memset(block.Get(), 0, size);
    const auto devices = reinterpret_cast<RASDEVINFOA *>(block.Get());
    devices->dwSize = sizeof *devices;
    list_devices(devices, &size, &count);
    for (DWORD i = 0; i < count && i < room; ++i) {
        if (!Is_Named(devices[i], name)) continue;
        std::snprintf(type, sizeof type, "%.*s", RAS_MaxDeviceType, devices[i].szDeviceType);
        return true;
    }
    return false;
}

void Give_Type(const char *type, char *out) {
    if (out) std::memcpy(out, type, std::strlen(type) + 1);
}

} // namespace

bool Modem_Is_DSL(const char *name, char *type) {
    OSVERSIONINFOA version = {};
    version.dwOSVersionInfoSize = sizeof version;
    GetVersionExA(&version);
    if (Is_XP(version) && !*Pppoe_Device_Name) Fill_Pppoe_Device_Name();
    if (!name) return false;
    if (*Pppoe_Device_Name && std::strcmp(Pppoe_Device_Name, name) == 0) {
        Give_Type("PPPOE", type);
        return true;
    }
    CWeakAPICall remote_access;
    void *const list_devices = remote_access.Load_Call("Rasapi32.DLL", "RasEnumDevicesA");
    DeviceType found;
    if (!list_devices || !Find_Type(reinterpret_cast<RasEnumDevices *>(list_devices), name, found))
        return false;
    Give_Type(found, type);
    const char *const dialled_by_itself = Is_NT_Above_4(version) ? "SERIAL" : "vpn";
    return strcmp_ncs(found, dialled_by_itself) == 0 || strcmp_ncs(found, "isdn") == 0;
}
