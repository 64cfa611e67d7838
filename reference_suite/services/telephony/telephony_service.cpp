#include <reference_suite/services/telephony/telephony_service.h>

#include <reference_suite/services/telephony/records.h>

#include <atomic>
#include <new>

#define SERVICE_EXPORT [[gnu::visibility("default")]]

namespace {

constexpr DWORD Api_Version = 0x00010004;
constexpr HLINEAPP First_Application = 0x00010000;
constexpr DWORD Known_Options = LINETRANSLATEOPTION_CARDOVERRIDE | LINETRANSLATEOPTION_CANCELCALLWAITING |
                                LINETRANSLATEOPTION_FORCELOCAL | LINETRANSLATEOPTION_FORCELD;

constinit std::atomic<HLINEAPP> Next_Application{First_Application};

template <class Step>
LONG Within_Memory(Step step) {
    try {
        return step();
    } catch (const std::bad_alloc &) {
        return LINEERR_NOMEM;
    }
}

LONG Check(HLINEAPP application, DWORD version) {
    if (application < First_Application || application >= Next_Application) return LINEERR_INVALAPPHANDLE;
    return version == Api_Version ? 0 : LINEERR_INCOMPATIBLEAPIVERSION;
}

LONG Translate_From_Current(const char *address, DWORD options, LINETRANSLATEOUTPUT *output) {
    const std::optional<DWORD> current = Current_Location_Id();
    const std::optional<Location> location = current ? Find_Location(*current) : std::nullopt;
    if (!location) return LINEERR_INIFILECORRUPT;
    Translation translation;
    const LONG error = Translate_Address(*location, address, options, translation);
    return error != 0 ? error : Tell_Translation(translation, output);
}

} // namespace

extern "C" {

SERVICE_EXPORT LONG lineInitialize(HLINEAPP *application, HINSTANCE, LINECALLBACK callback, LPCSTR,
                                   DWORD *device_count) {
    if (!application || !callback || !device_count) return LINEERR_INVALPOINTER;
    return Within_Memory([=] {
        *device_count = static_cast<DWORD>(Read_Line_Devices().size());
        *application = Next_Application++;
        return 0;
    });
}

SERVICE_EXPORT LONG lineNegotiateAPIVersion(HLINEAPP application, DWORD device, DWORD lowest, DWORD highest,
                                            DWORD *version, LINEEXTENSIONID *extension) {
    if (!version || !extension) return LINEERR_INVALPOINTER;
    if (const LONG error = Check(application, Api_Version); error != 0) return error;
    return Within_Memory([=] {
        if (device >= Read_Line_Devices().size()) return LINEERR_BADDEVICEID;
        if (lowest > Api_Version || highest < Api_Version) return LINEERR_INCOMPATIBLEAPIVERSION;
        *version = Api_Version;
        *extension = {};
        return LONG{0};
    });
}

SERVICE_EXPORT LONG lineGetDevCaps(HLINEAPP application, DWORD device, DWORD version, DWORD extension_version,
                                   LINEDEVCAPS *caps) {
    if (!caps) return LINEERR_INVALPOINTER;
    if (const LONG error = Check(application, version); error != 0) return error;
    if (extension_version != 0) return LINEERR_INCOMPATIBLEEXTVERSION;
    return Within_Memory([=] {
        const std::vector<LineDevice> devices = Read_Line_Devices();
        return device < devices.size() ? Tell_Device(devices[device], device, caps) : LINEERR_BADDEVICEID;
    });
}

SERVICE_EXPORT LONG lineGetTranslateCaps(HLINEAPP application, DWORD version, LINETRANSLATECAPS *caps) {
    if (!caps) return LINEERR_INVALPOINTER;
    if (const LONG error = Check(application, version); error != 0) return error;
    return Within_Memory(
        [=] { return Tell_Locations(Read_Locations(), Current_Location_Id().value_or(0), caps); });
}

SERVICE_EXPORT LONG lineSetCurrentLocation(HLINEAPP application, DWORD location) {
    if (const LONG error = Check(application, Api_Version); error != 0) return error;
    return Within_Memory([=] {
        if (!Find_Location(location)) return LINEERR_INVALLOCATION;
        return Set_Current_Location_Id(location) ? 0 : LINEERR_OPERATIONFAILED;
    });
}

SERVICE_EXPORT LONG lineTranslateAddress(HLINEAPP application, DWORD device, DWORD version, LPCSTR address,
                                         DWORD card, DWORD options, LINETRANSLATEOUTPUT *output) {
    if (!address || !output) return LINEERR_INVALPOINTER;
    if (const LONG error = Check(application, version); error != 0) return error;
    if (options & ~Known_Options) return LINEERR_INVALPARAM;
    if ((options & LINETRANSLATEOPTION_CARDOVERRIDE) && card != 0) return LINEERR_INVALCARD;
    return Within_Memory([=] {
        if (device >= Read_Line_Devices().size()) return LINEERR_BADDEVICEID;
        return Translate_From_Current(address, options, output);
    });
}
}
