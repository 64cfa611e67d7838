#include <reference_suite/services/telephony/devices.h>

#include <reference_suite/services/registry_key.h>

#include <platform/telephony.h>

std::vector<LineDevice> Read_Line_Devices() {
    const std::string lines_key = "Software\\Microsoft\\Windows\\CurrentVersion\\Telephony\\Lines";
    std::vector<LineDevice> devices;
    for (const std::string &subkey : RegistryKey(lines_key).Subkeys()) {
        const RegistryKey key(lines_key, subkey);
        devices.push_back({key.Text("Name"), key.Number("StringFormat").value_or(STRINGFORMAT_ASCII)});
    }
    return devices;
}
