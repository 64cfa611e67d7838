#include <reference_suite/services/remote_access/remote_access_service.h>

#include <reference_suite/services/registry_key.h>

#include <new>

namespace {

template <std::size_t Size>
void Copy_Cut(const std::string &text, char (&out)[Size]) {
    out[text.copy(out, Size - 1)] = 0;
}

std::vector<RASDEVINFOA> Read_Devices() {
    const std::string devices_key = "Software\\Microsoft\\Windows\\CurrentVersion\\Remote Access\\Devices";
    std::vector<RASDEVINFOA> devices;
    for (const std::string &subkey : RegistryKey(devices_key).Subkeys()) {
        const RegistryKey key(devices_key, subkey);
        RASDEVINFOA &device = devices.emplace_back();
        device.dwSize = sizeof device;
        Copy_Cut(key.Text("Type"), device.szDeviceType);
        Copy_Cut(key.Text("Name"), device.szDeviceName);
    }
    return devices;
}

DWORD List(RASDEVINFOA *out, DWORD &size, DWORD &count) {
    const DWORD room = size;
    if (out && room >= sizeof out->dwSize && out->dwSize != sizeof *out) return ERROR_INVALID_SIZE;
    const std::vector<RASDEVINFOA> devices = Read_Devices();
    count = static_cast<DWORD>(devices.size());
    size = count * sizeof *out;
    if (size > (out ? room : 0)) return ERROR_BUFFER_TOO_SMALL;
    for (const RASDEVINFOA &device : devices) *out++ = device;
    return ERROR_SUCCESS;
}

} // namespace

extern "C" [[gnu::visibility("default")]] DWORD RasEnumDevicesA(RASDEVINFOA *devices, DWORD *size,
                                                                DWORD *count) {
    if (!size || !count) return ERROR_INVALID_PARAMETER;
    try {
        return List(devices, *size, *count);
    } catch (const std::bad_alloc &) {
        return ERROR_NOT_ENOUGH_MEMORY;
    }
}
