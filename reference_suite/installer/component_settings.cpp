#include <reference_suite/installer/component_settings.h>

#include <reference_suite/components/component_store.h>
#include <reference_suite/installer/installed_key.h>

namespace {

constexpr char Country_List[] = "\\Country List\\";

struct InstalledCountry {
    const char *name;
    DWORD code;
};

constexpr InstalledCountry Countries[] = {
    {"United States of America", 1}, {"Canada", 1}, {"France", 33}, {"United Kingdom", 44}, {"Germany", 49},
};

struct InstalledComponent {
    long kind;
    const char *name;
    std::initializer_list<const char *> lines;
};

const InstalledComponent Components[] = {
    {Component_Configuration,
     "Home",
     {"CMTH=Modem", "MODD=Standard Modem", "USID=alex", "PAS*=open sesame", "DDUN=+1 (206) 555-0100",
      "DDUR=+1 (425) 555-0117", "DFPB=Public", "DFP!=TRUE", "DDLC=Home", "DMLC=Hotel", "DL1?=FALSE",
      "DAC?=FALSE", "RD1?=TRUE", "RAC?=TRUE", "DURT=3", "DUWT=30"}},
    {Component_Configuration, "Office LAN", {"CMTH=LAN", "MODD=Broadband Adapter", "DDLC=Office"}},
    {Component_Configuration,
     "Travel",
     {"CMTH=ISDN", "MODD=ISDN Adapter", "USID=alex", "PAS*=open sesame", "DDUN=+44 (171) 555-0142",
      "DDUR=", "DFPB=Public", "DFP!=TRUE", "DDLC=Hotel", "DMLC=Hotel", "DURT=3", "DUWT=30"}},
    {Component_Phonebook,
     "Public",
     {"Seattle=+1 (206) 555-0100", "Bellevue=+1 (425) 555-0117", "London=+44 (171) 555-0142"}},
    {Component_Location, "Home", {"arcd=206", "cnty=United States of America"}},
    {Component_Location, "Office", {"arcd=425", "cnty=United States of America"}},
    {Component_Location, "Hotel", {"arcd=171", "cnty=United Kingdom"}},
};

LONG Write_Country(const InstalledCountry &country) {
    InstalledKey key(std::string(Store_Key) + Country_List + country.name);
    key.Set("CountryCode", country.code);
    return key.Result();
}

LONG Write_Component(const InstalledComponent &component) {
    InstalledKey key(Component_Key(component.kind, component.name));
    key.Set(component.kind == Component_Phonebook ? Entries_Value : Options_Value, component.lines);
    return key.Result();
}

template <class Entries, class Write>
LONG Write_Each(const Entries &entries, Write write) {
    for (const auto &entry : entries) {
        if (const LONG result = write(entry); result != ERROR_SUCCESS) return result;
    }
    return ERROR_SUCCESS;
}

// The current configuration comes last: without it the next installation begins anew.
LONG Write_Components() {
    const std::string current = Stored_Value_Name(Setting_Current_Configuration.code);
    InstalledKey settings(Settings_Key);
    if (settings.Has(current.c_str())) return ERROR_SUCCESS;
    if (const LONG result = Write_Each(Components, Write_Component); result != ERROR_SUCCESS) return result;
    settings.Set(current.c_str(), "Home");
    return settings.Result();
}

} // namespace

std::string Write_Component_Settings() {
    LONG result = Write_Each(Countries, Write_Country);
    if (result == ERROR_SUCCESS) result = Write_Components();
    if (result == ERROR_SUCCESS) return {};
    return "the settings of the components cannot be written: error " + std::to_string(result);
}
