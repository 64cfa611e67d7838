#include <reference_suite/components/connection/connection_fate.h>

#include <platform/registry.h>

#include <algorithm>

namespace {

std::optional<DWORD> Read_Number(HKEY key, const char *name) {
    DWORD number = 0, type = 0, size = sizeof number;
    const LONG result = RegQueryValueExA(key, name, nullptr, &type, reinterpret_cast<BYTE *>(&number), &size);
    if (result != ERROR_SUCCESS || type != REG_DWORD || size != sizeof number) return std::nullopt;
    return number;
}

} // namespace

ConnectionFate Read_Connection_Fate() {
    ConnectionFate fate;
    HKEY key = nullptr;
    if (RegOpenKeyExA(HKEY_LOCAL_MACHINE, Fate_Key, 0, KEY_QUERY_VALUE, &key) != ERROR_SUCCESS) return fate;
    fate.dial_time = std::min(Read_Number(key, "Dial Time").value_or(0), Longest_Dial_Time);
    fate.result = As_Component_Code(Read_Number(key, "Result").value_or(0));
    fate.lost_after = Read_Number(key, "Lost After");
    RegCloseKey(key);
    return fate;
}
