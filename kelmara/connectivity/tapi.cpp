#include <kelmara/connectivity/tapi.h>

#include <kelmara/connectivity/sized_record.h>
#include <kelmara/connectivity/telephony_entries.h>

#include <cstring>

namespace {

constexpr DWORD Api_Version = 0x00010004;
constexpr unsigned long Nothing_Found = 0xFFFFFFFF;
constexpr int Most_Tries = 16; // for a service that always needs more

void Ignore_Line_Event(DWORD, DWORD, DWORD, DWORD, DWORD, DWORD) {}

bool Read_Location(const void *record, unsigned long size, unsigned long offset, LINELOCATIONENTRY &entry) {
    if (offset > size || size - offset < sizeof entry) return false;
    std::memcpy(&entry, static_cast<const char *>(record) + offset, sizeof entry);
    return true;
}

void Select_Location(const LINETRANSLATECAPS &caps, unsigned long size, const char *name) {
    unsigned long offset = caps.dwLocationListOffset;
    LINELOCATIONENTRY entry;
    for (DWORD i = 0; i < caps.dwNumLocations && Read_Location(&caps, size, offset, entry); ++i) {
        if (Text_In_Record(&caps, size, entry.dwLocationNameOffset).Equals(name)) {
            Line_Set_Current_Location(The_Line_Application.handle, entry.dwPermanentLocationID);
            return;
        }
        offset += sizeof entry;
    }
}

union DeviceRecord {
    LINEDEVCAPS caps;
    char bytes[1024];
};

bool Has_Proper_Name(const DeviceRecord &device) {
    const LINEDEVCAPS &caps = device.caps;
    return caps.dwLineNameSize != 0 && caps.dwLineNameOffset != 0 &&
           caps.dwStringFormat == STRINGFORMAT_ASCII &&
           Text_In_Record(&device, sizeof device, caps.dwLineNameOffset).length > 0;
}

} // namespace

unsigned long Setup_TAPI(HINSTANCE instance) {
    LineApplication &line = The_Line_Application;
    line = {0, 0, Api_Version};
    return static_cast<unsigned long>(
        Line_Initialize(&line.handle, instance, Ignore_Line_Event, nullptr, &line.device_count));
}

unsigned long Set_Current_Dial_Location(const char *name) {
    const LineApplication &line = The_Line_Application;
    SizedRecord record;
    unsigned long size = sizeof(LINETRANSLATECAPS);
    for (int tries = 0; tries < Most_Tries; ++tries) {
        const auto caps = static_cast<LINETRANSLATECAPS *>(record.Make(size, "FillLocationInfo"));
        if (!caps) return Nothing_Found;
        const LONG error = Line_Get_Translate_Caps(line.handle, line.api_version, caps);
        if (error != 0) return static_cast<unsigned long>(error);
        if (caps->dwNeededSize <= caps->dwTotalSize) {
            if (name && *name) Select_Location(*caps, record.Size(), name);
            return 0;
        }
        size = caps->dwNeededSize;
    }
    return Nothing_Found;
}

unsigned long Get_Current_Device_ID() {
    const LineApplication &line = The_Line_Application;
    DeviceRecord device = {};
    static_assert(sizeof device.bytes == sizeof device);
    std::memset(&device, 0, sizeof device);
    device.caps.dwTotalSize = sizeof device;
    for (DWORD id = 0; id < line.device_count; ++id) {
        DWORD version = 0;
        LINEEXTENSIONID extension;
        Line_Negotiate_API_Version(line.handle, id, line.api_version, line.api_version, &version, &extension);
        if (version == 0) continue;
        Line_Get_Dev_Caps(line.handle, id, version, 0, &device.caps);
        if (Has_Proper_Name(device)) return 0;
    }
    return Nothing_Found;
}
