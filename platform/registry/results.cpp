#include <platform/registry/results.h>

namespace {

bool Wants_Terminator(const RegistryValue &value) {
    const bool text = value.type == REG_SZ || value.type == REG_EXPAND_SZ || value.type == REG_MULTI_SZ;
    return text && !value.data.ends_with('\0');
}

} // namespace

bool Name_Fits(std::string_view name, LPSTR out, const DWORD *size) {
    return !out || *size > name.size();
}

void Give_Name(std::string_view name, LPSTR out, DWORD *size, bool give) {
    if (size) *size = static_cast<DWORD>(name.size()) + (give ? 0 : 1);
    if (!out || !give) return;
    name.copy(out, name.size());
    out[name.size()] = '\0';
}

bool Data_Fits(const RegistryValue &value, const BYTE *data, const DWORD *size) {
    return !data || *size >= value.data.size();
}

void Give_Data(const RegistryValue &value, DWORD *type, BYTE *data, DWORD *size, bool give) {
    const DWORD room = data ? *size : 0;
    if (type) *type = value.type;
    if (size) *size = static_cast<DWORD>(value.data.size());
    if (!data || !give) return;
    value.data.copy(reinterpret_cast<char *>(data), value.data.size());
    if (room > value.data.size() && Wants_Terminator(value)) data[value.data.size()] = 0;
}

void Give_Time(std::uint64_t time, FILETIME *out) {
    if (out) *out = {static_cast<DWORD>(time), static_cast<DWORD>(time >> 32)};
}
