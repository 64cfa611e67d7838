#include <tests/connectivity/fake_services.h>

#include <platform/kernel.h>

#include <algorithm>
#include <cstring>
#include <map>

FakeServices services;

namespace {

std::string lacking_entry;
int loads, searches;
char service_module;

HMODULE The_Service() {
    return reinterpret_cast<HMODULE>(&service_module);
}

LONG Initialize(HLINEAPP *application, HINSTANCE, LINECALLBACK callback, LPCSTR name, DWORD *count) {
    EXPECT_TRUE(callback && !name);
    callback(1, 2, 3, 4, 5, 6);
    EXPECT_EQ(*application + *count, 0u);
    *application = 7;
    *count = services.lines.size();
    return services.error;
}

LONG Negotiate(HLINEAPP, DWORD device, DWORD lowest, DWORD highest, DWORD *version, LINEEXTENSIONID *id) {
    EXPECT_TRUE(lowest == 0x10004 && highest == lowest && *version == 0 && id);
    if (services.lines.at(device).negotiates) *version = lowest;
    return services.error;
}

LONG Get_Dev_Caps(HLINEAPP, DWORD device, DWORD version, DWORD extension, LINEDEVCAPS *caps) {
    const FakeLine &line = services.lines.at(device);
    EXPECT_TRUE(version == 0x10004 && extension == 0 && caps->dwTotalSize == 1024);
    caps->dwStringFormat = line.format;
    caps->dwLineNameOffset = 300;
    caps->dwLineNameSize = line.name.size() + 1;
    std::memcpy(reinterpret_cast<char *>(caps) + 300, line.name.c_str(), line.name.size() + 1);
    if (line.change) line.change(*caps);
    return services.error;
}

LONG Tell_Locations(LINETRANSLATECAPS &caps) {
    std::string whole(44 + 68 * services.locations.size(), '\0');
    std::vector<LINELOCATIONENTRY> entries(services.locations.size());
    for (std::size_t i = 0; i < entries.size(); ++i) {
        entries[i].dwPermanentLocationID = 100 + i;
        entries[i].dwLocationNameOffset = whole.size();
        whole += services.locations[i] + '\0';
    }
    caps.dwNeededSize = whole.size();
    if (caps.dwNeededSize > caps.dwTotalSize) return 0;
    caps.dwNumLocations = entries.size();
    caps.dwLocationListOffset = 44;
    std::memcpy(whole.data() + 44, entries.data(), 68 * entries.size());
    std::memcpy(reinterpret_cast<char *>(&caps) + 44, whole.data() + 44, whole.size() - 44);
    return 0;
}

LONG Get_Translate_Caps(HLINEAPP application, DWORD version, LINETRANSLATECAPS *caps) {
    EXPECT_TRUE(version == 0x10004 || application == 0);
    services.sizes.push_back(caps->dwTotalSize);
    if (services.error) return services.error;
    EXPECT_EQ(caps->dwNumLocations + caps->dwNeededSize, 0u) << "cleared";
    return services.caps ? services.caps(*caps) : Tell_Locations(*caps);
}

LONG Set_Current_Location(HLINEAPP, DWORD location) {
    services.selected.push_back(location);
    return LINEERR_OPERATIONFAILED; // which nobody looks at
}

LONG Translate(HLINEAPP application, DWORD device, DWORD version, LPCSTR address, DWORD card, DWORD options,
               LINETRANSLATEOUTPUT *output) {
    char text[300];
    std::snprintf(text, sizeof text, "%lu %lX %lX %.200s %lu %lu %lu", application, device, version, address,
                  card, options, output->dwTotalSize);
    services.translated = text;
    if (services.error) return services.error;
    if (services.output) return services.output(*output);
    output->dwDialableStringOffset = 40;
    output->dwDisplayableStringOffset = 41 + services.translation.size();
    const std::string texts = services.translation + '\0' + services.display;
    std::memcpy(output + 1, texts.c_str(), std::min<std::size_t>(216, texts.size() + 1));
    return 0;
}

DWORD Enumerate_Devices(RASDEVINFOA *out, DWORD *size, DWORD *count) {
    EXPECT_TRUE(out ? out->dwSize == 152 : *size == 0);
    const DWORD room = *size;
    *count = services.devices.size();
    *size = *count * sizeof *out;
    if (out && room >= *size) std::copy(services.devices.begin(), services.devices.end(), out);
    if (services.list) services.list(out, *size, *count);
    return 0;
}

const std::map<std::string, FARPROC> Entries = {
    {"lineInitialize", reinterpret_cast<FARPROC>(Initialize)},
    {"lineNegotiateAPIVersion", reinterpret_cast<FARPROC>(Negotiate)},
    {"lineGetDevCaps", reinterpret_cast<FARPROC>(Get_Dev_Caps)},
    {"lineGetTranslateCaps", reinterpret_cast<FARPROC>(Get_Translate_Caps)},
    {"lineSetCurrentLocation", reinterpret_cast<FARPROC>(Set_Current_Location)},
    {"lineTranslateAddress", reinterpret_cast<FARPROC>(Translate)},
    {"RasEnumDevicesA", reinterpret_cast<FARPROC>(Enumerate_Devices)},
};

HMODULE Load(LPCSTR path) {
    if (std::strcmp(path, "TAPI32.DLL") != 0 && std::strcmp(path, "Rasapi32.DLL") != 0)
        return LoadLibraryA(path);
    ++loads;
    return lacking_entry == "*" ? nullptr : The_Service();
}

FARPROC Find(HMODULE module, LPCSTR name) {
    if (module != The_Service()) return GetProcAddress(module, name);
    ++searches;
    return lacking_entry == name ? nullptr : Entries.at(name);
}

} // namespace

ServicesInPlace::ServicesInPlace(const std::string &lacking)
    : load_("libkelmara.so", "LoadLibraryA", reinterpret_cast<void *>(Load)),
      find_("libkelmara.so", "GetProcAddress", reinterpret_cast<void *>(Find)) {
    lacking_entry = lacking;
}

int ServicesInPlace::Loads() {
    return loads;
}

int ServicesInPlace::Searches() {
    return searches;
}
