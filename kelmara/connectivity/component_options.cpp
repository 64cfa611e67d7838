#include <kelmara/connectivity/component_options.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

constexpr std::size_t Text_Size = 256; // for all options

} // namespace

void Read_Option(IComponentValuesInterface *values, ComponentOption option, char *out, std::size_t room) {
    char text[Text_Size] = {};
    if (values) values->Get_Value(option.code, text, option.size);
    text[option.size] = 0;
    std::snprintf(out, room, "%s", text);
}

bool Option_Is(IComponentValuesInterface *values, ComponentOption option, const char *text) {
    char found[Text_Size];
    Read_Option(values, option, found);
    return std::strcmp(found, text) == 0;
}

long Read_Number_Option(IComponentValuesInterface *values, ComponentOption option) {
    char digits[Text_Size];
    Read_Option(values, option, digits);
    return std::strtol(digits, nullptr, 10);
}

bool Fill_Locator(ComponentLocator &locator, long kind, const char *name) {
    locator = {};
    const std::size_t length = std::strlen(name);
    if (length >= sizeof locator.name) return false;
    std::memcpy(locator.name, name, length);
    locator.kind = kind;
    return true;
}
