#include <reference_suite/services/telephony/records.h>

#include <reference_suite/services/telephony/countries.h>
#include <reference_suite/services/telephony/record_builder.h>

namespace {

LINELOCATIONENTRY Entry_For(const Location &location, RecordBuilder<LINETRANSLATECAPS> &record) {
    LINELOCATIONENTRY entry = {};
    const Country *const country = Country_By_Id(location.country);
    entry.dwPermanentLocationID = location.id;
    entry.dwCountryID = location.country;
    entry.dwCountryCode = country ? country->code : 0;
    if (!(location.flags & Location_Dials_Tones)) entry.dwOptions = LINELOCATIONOPTION_PULSEDIAL;
    record.Add_Text(location.name, entry.dwLocationNameSize, entry.dwLocationNameOffset);
    record.Add_Text(location.area_code, entry.dwCityCodeSize, entry.dwCityCodeOffset);
    record.Add_Text(location.outside_access, entry.dwLocalAccessCodeSize, entry.dwLocalAccessCodeOffset);
    record.Add_Text(location.long_distance_access, entry.dwLongDistanceAccessCodeSize,
                    entry.dwLongDistanceAccessCodeOffset);
    record.Add_Text(location.disable_call_waiting, entry.dwCancelCallWaitingSize,
                    entry.dwCancelCallWaitingOffset);
    return entry;
}

} // namespace

LONG Tell_Locations(const std::vector<Location> &locations, DWORD current, LINETRANSLATECAPS *out) {
    LINETRANSLATECAPS caps = {};
    caps.dwCurrentLocationID = current;
    RecordBuilder record(caps);
    caps.dwNumLocations = static_cast<DWORD>(locations.size());
    caps.dwLocationListSize = caps.dwNumLocations * sizeof(LINELOCATIONENTRY);
    caps.dwLocationListOffset = record.Add_Room(caps.dwLocationListSize);
    record.Put(0, caps);
    DWORD offset = caps.dwLocationListOffset;
    for (const Location &location : locations) {
        record.Put(offset, Entry_For(location, record));
        offset += sizeof(LINELOCATIONENTRY);
    }
    return record.Hand_Out(out);
}

LONG Tell_Device(const LineDevice &device, DWORD id, LINEDEVCAPS *out) {
    LINEDEVCAPS caps = {};
    caps.dwPermanentLineID = id;
    caps.dwStringFormat = device.string_format;
    caps.dwNumAddresses = 1;
    caps.dwMaxNumActiveCalls = 1;
    RecordBuilder record(caps);
    record.Add_Text(device.name, caps.dwLineNameSize, caps.dwLineNameOffset);
    record.Put(0, caps);
    return record.Hand_Out(out);
}

LONG Tell_Translation(const Translation &translation, LINETRANSLATEOUTPUT *out) {
    LINETRANSLATEOUTPUT output = {};
    output.dwCurrentCountry = translation.current_country;
    output.dwDestCountry = translation.destination_country;
    output.dwTranslateResults = translation.results;
    RecordBuilder record(output);
    record.Add_Text(translation.dialable, output.dwDialableStringSize, output.dwDialableStringOffset);
    record.Add_Text(translation.displayable, output.dwDisplayableStringSize,
                    output.dwDisplayableStringOffset);
    record.Put(0, output);
    return record.Hand_Out(out);
}
