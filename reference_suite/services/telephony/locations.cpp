#include <reference_suite/services/telephony/locations.h>

#include <reference_suite/services/registry_key.h>

namespace {

const std::string Locations_Key = "Software\\Microsoft\\Windows\\CurrentVersion\\Telephony\\Locations";

std::optional<Location> Read_Location(const std::string &subkey) {
    const RegistryKey key(Locations_Key, subkey);
    const std::optional<DWORD> id = key.Number("ID");
    if (!id) return std::nullopt;
    return Location{*id,
                    key.Text("Name"),
                    key.Number("Country").value_or(0),
                    key.Text("AreaCode"),
                    key.Text("OutsideAccess"),
                    key.Text("LongDistanceAccess"),
                    key.Text("DisableCallWaiting"),
                    key.Number("Flags").value_or(Location_Dials_Tones)};
}

} // namespace

std::vector<Location> Read_Locations() {
    std::vector<Location> locations;
    for (const std::string &subkey : RegistryKey(Locations_Key).Subkeys()) {
        if (std::optional<Location> location = Read_Location(subkey))
            locations.push_back(*std::move(location));
    }
    return locations;
}

std::optional<DWORD> Current_Location_Id() {
    return RegistryKey(Locations_Key).Number("CurrentID");
}

std::optional<Location> Find_Location(DWORD id) {
    for (Location &location : Read_Locations()) {
        if (location.id == id) return std::move(location);
    }
    return std::nullopt;
}

bool Set_Current_Location_Id(DWORD id) {
    return RegistryKey(Locations_Key).Set_Number("CurrentID", id);
}
