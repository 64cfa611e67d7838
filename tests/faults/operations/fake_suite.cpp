#include <tests/faults/operations/fake_suite.h>

#include <platform/kernel.h>
#include <platform/telephony.h>

#include <cstring>
#include <new>

namespace {

FakeComponent *the_component;

bool Has_Memory() {
    void *const block = ::operator new(8, std::nothrow);
    ::operator delete(block);
    return block != nullptr;
}

HRESULT Create(REFCLSID, IUnknown *, DWORD, REFIID iid, void **out) {
    *out = nullptr;
    return Has_Memory() ? the_component->QueryInterface(iid, out) : E_OUTOFMEMORY;
}

// --- telephony and remote access --------------------------------------------------------------------------

constexpr char Location[] = "Home";

LONG Answer() {
    return Has_Memory() ? 0 : LINEERR_NOMEM;
}

LONG Initialize(HLINEAPP *application, HINSTANCE, LINECALLBACK, LPCSTR, DWORD *count) {
    *application = *count = 1;
    return Answer();
}

LONG Negotiate(HLINEAPP, DWORD, DWORD lowest, DWORD, DWORD *version, LINEEXTENSIONID *) {
    const LONG answer = Answer();
    if (answer == 0) *version = lowest;
    return answer;
}

LONG Get_Dev_Caps(HLINEAPP, DWORD, DWORD, DWORD, LINEDEVCAPS *caps) {
    caps->dwStringFormat = STRINGFORMAT_ASCII;
    caps->dwLineNameOffset = 300;
    caps->dwLineNameSize = sizeof Location;
    std::memcpy(reinterpret_cast<char *>(caps) + 300, Location, sizeof Location);
    return 0;
}

LONG Get_Translate_Caps(HLINEAPP, DWORD, LINETRANSLATECAPS *caps) {
    LINELOCATIONENTRY entry = {};
    entry.dwLocationNameOffset = sizeof *caps + sizeof entry;
    caps->dwNeededSize = entry.dwLocationNameOffset + sizeof Location;
    if (caps->dwNeededSize > caps->dwTotalSize) return Answer();
    caps->dwNumLocations = 1;
    caps->dwLocationListOffset = sizeof *caps;
    std::memcpy(caps + 1, &entry, sizeof entry);
    std::memcpy(reinterpret_cast<char *>(caps) + entry.dwLocationNameOffset, Location, sizeof Location);
    return 0;
}

LONG Set_Current_Location(HLINEAPP, DWORD) {
    return Answer();
}

LONG Translate(HLINEAPP, DWORD, DWORD, LPCSTR, DWORD, DWORD, LINETRANSLATEOUTPUT *output) {
    output->dwDialableStringOffset = output->dwDisplayableStringOffset = sizeof *output;
    std::strcpy(reinterpret_cast<char *>(output + 1), "5551212");
    return Answer();
}

DWORD Enumerate_Devices(RASDEVINFOA *out, DWORD *size, DWORD *count) {
    *count = 1;
    *size = sizeof *out;
    if (!out) return 0;
    std::strcpy(out->szDeviceType, "isdn");
    std::strcpy(out->szDeviceName, "Adapter");
    return 0;
}

const struct {
    const char *name;
    void *entry;
} Entries[] = {
    {"lineInitialize", reinterpret_cast<void *>(Initialize)},
    {"lineNegotiateAPIVersion", reinterpret_cast<void *>(Negotiate)},
    {"lineGetDevCaps", reinterpret_cast<void *>(Get_Dev_Caps)},
    {"lineGetTranslateCaps", reinterpret_cast<void *>(Get_Translate_Caps)},
    {"lineSetCurrentLocation", reinterpret_cast<void *>(Set_Current_Location)},
    {"lineTranslateAddress", reinterpret_cast<void *>(Translate)},
    {"RasEnumDevicesA", reinterpret_cast<void *>(Enumerate_Devices)},
};
const HMODULE The_Service = reinterpret_cast<HMODULE>(&the_component);

HMODULE Load(LPCSTR path) {
    const bool is_ours = std::strcmp(path, "TAPI32.DLL") == 0 || std::strcmp(path, "Rasapi32.DLL") == 0;
    return is_ours ? The_Service : LoadLibraryA(path);
}

FARPROC Find(HMODULE module, LPCSTR name) {
    if (module != The_Service) return GetProcAddress(module, name);
    for (const auto &each : Entries) {
        if (std::strcmp(each.name, name) == 0) return reinterpret_cast<FARPROC>(each.entry);
    }
    return nullptr;
}

} // namespace

FakeSuite::FakeSuite()
    : create_("libkelmara.so", "CoCreateInstance", reinterpret_cast<void *>(Create)),
      load_("libkelmara.so", "LoadLibraryA", reinterpret_cast<void *>(Load)),
      find_("libkelmara.so", "GetProcAddress", reinterpret_cast<void *>(Find)) {
    the_component = &component;
}

long FakeComponent::QueryInterface(const GUID &iid, void **out) {
    const auto is = [&iid](const GUID &other) { return std::memcmp(&iid, &other, sizeof iid) == 0; };
    *out = is(IID_IComponentStorageInterface)      ? static_cast<IComponentStorageInterface *>(this)
           : is(IID_IComponentValuesInterface)     ? static_cast<IComponentValuesInterface *>(this)
           : is(IID_IConfigSimpleAccessInterface)  ? static_cast<IConfigSimpleAccessInterface *>(this)
           : is(IID_IPhonebookInterface)           ? static_cast<IPhonebookInterface *>(this)
           : is(IID_ConnectionInterface)           ? static_cast<IConnectionInterface *>(this)
           : is(IID_IServerInterface)              ? static_cast<IServerInterface *>(this)
           : is(IID_IServerSimpleAccessInterface)  ? static_cast<IServerSimpleAccessInterface *>(this)
           : is(IID_ITDDOptionsInterface)          ? static_cast<ITDDOptionsInterface *>(this)
           : is(IID_IComplexValueFactoryInterface) ? static_cast<IComplexValueFactoryInterface *>(this)
                                                   : static_cast<void *>(nullptr);
    if (*out) ++references;
    return *out ? 0 : E_NOINTERFACE;
}

long FakeComponent::Set_Value(unsigned long, char *data, long length) {
    std::memcpy(stored, data, static_cast<std::size_t>(length));
    return 0;
}

long FakeComponent::Get_Value(unsigned long code, char *buffer, long) {
    const bool is_number = code == Option_First_Number.code || code == Option_Second_Number.code;
    std::strcpy(buffer, is_number                          ? "+1 (206) 555-1212"
                        : code == Option_Modem_Device.code ? "Modem"
                                                           : Location);
    return 0;
}

long FakeComponent::Read_Setting(unsigned long, char *buffer, long *size) {
    std::strcpy(buffer, Location);
    *size = sizeof Location;
    return 0;
}

long FakeComponent::Get_Monitor_Events(HANDLE *up, HANDLE *down) {
    for (HANDLE *event : {up, down}) {
        if (event && !(*event = CreateEventA(nullptr, TRUE, FALSE, nullptr))) return E_OUTOFMEMORY;
    }
    return 0;
}

long FakeComponent::Create_Tree(IComplexValueInterface **out) {
    if (!Has_Memory()) return E_OUTOFMEMORY;
    *out = this;
    return ++references, 0;
}

long FakeComponent::Get_Component_Text(char *out) {
    std::strcpy(out, "text");
    return 0;
}
