#include <tests/connectivity/fake_services.h>
#include <tests/support/new_failures.h>

#include <platform/kernel.h>

#include <algorithm>
#include <cstring>
#include <map>

FakeServices services;

namespace {

std::string lacking_entry;
const HMODULE The_Service = reinterpret_cast<HMODULE>(&services);

// What the services keep is no fault of the library's.
class Unfailing {
  public:
    Unfailing() : before_(std::exchange(allocations_until_failure, 0)) {}
    ~Unfailing() { allocations_until_failure = before_; }
    Unfailing(const Unfailing &) = delete;
    Unfailing &operator=(const Unfailing &) = delete;

  private:
    const unsigned long before_;
};

LONG Initialize(HLINEAPP *application, HINSTANCE, LINECALLBACK callback, LPCSTR name, DWORD *count) {
    EXPECT_TRUE(callback && !name && *application == 0 && *count == 0);
    callback(1, 2, 3, 4, 5, 6);
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

void Tell_Locations(LINETRANSLATECAPS &caps) {
    std::vector<LINELOCATIONENTRY> entries(services.locations.size());
    std::string names;
    for (std::size_t i = 0; i < entries.size(); ++i) {
        entries[i].dwPermanentLocationID = 100 + i;
        entries[i].dwLocationNameOffset = 44 + 68 * entries.size() + names.size();
        names += services.locations[i] + '\0';
    }
    caps.dwNeededSize = 44 + 68 * entries.size() + names.size();
    if (caps.dwNeededSize > caps.dwTotalSize) return;
    caps.dwNumLocations = entries.size();
    caps.dwLocationListOffset = 44;
    auto *const list = reinterpret_cast<LINELOCATIONENTRY *>(&caps + 1);
    std::memcpy(std::copy(entries.begin(), entries.end(), list), names.data(), names.size());
}

LONG Get_Translate_Caps(HLINEAPP, DWORD version, LINETRANSLATECAPS *caps) {
    const Unfailing unfailing;
    EXPECT_TRUE(version == 0x10004 || version == 0);
    EXPECT_EQ(caps->dwNumLocations + caps->dwNeededSize, 0u) << "cleared";
    services.sizes.push_back(caps->dwTotalSize);
    if (services.error) return services.error;
    services.caps ? services.caps(*caps) : Tell_Locations(*caps);
    return 0;
}

LONG Set_Current_Location(HLINEAPP, DWORD location) {
    const Unfailing unfailing;
    services.selected.push_back(location);
    return LINEERR_OPERATIONFAILED; // which nobody looks at
}

LONG Translate(HLINEAPP application, DWORD device, DWORD version, LPCSTR address, DWORD card, DWORD options,
               LINETRANSLATEOUTPUT *output) {
    const Unfailing unfailing;
    char text[300];
    std::snprintf(text, sizeof text, "%lu %lX %lX %.200s %lu %lu %lu", application, device, version, address,
                  card, options, output->dwTotalSize);
    services.translated = text;
    if (services.error) return services.error;
    output->dwDialableStringOffset = 40;
    output->dwDisplayableStringOffset = 41 + services.dialable.size();
    const std::string texts = services.dialable + '\0' + services.displayable;
    std::memcpy(output + 1, texts.c_str(), texts.size() + 1);
    if (services.output) services.output(*output);
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
    ++services.loads;
    return lacking_entry == "*" ? nullptr : The_Service;
}

FARPROC Find(HMODULE module, LPCSTR name) {
    if (module != The_Service) return GetProcAddress(module, name);
    const Unfailing unfailing;
    ++services.searches;
    return lacking_entry == name ? nullptr : Entries.at(name);
}

} // namespace

ServicesInPlace::ServicesInPlace(const std::string &lacking)
    : load_("libkelmara.so", "LoadLibraryA", reinterpret_cast<void *>(Load)),
      find_("libkelmara.so", "GetProcAddress", reinterpret_cast<void *>(Find)) {
    lacking_entry = lacking;
}
