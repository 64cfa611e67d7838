// What a log call costs where no companion is named: beside the one read of the registry that it makes.

#include <benchmarks/measure.h>
#include <benchmarks/own_machine.h>

#include <kelmara/shared_state/log.h>

#include <platform/registry.h>

#include <string>

int main() {
    const measure::OwnMachine machine;
    HKEY suite = nullptr;
    constexpr char key_name[] = "Software\\Dunmerit Software\\KelMara";
    RegCreateKeyExA(HKEY_LOCAL_MACHINE, key_name, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &suite, nullptr);
    RegCloseKey(suite);
    measure::Use_Plain_Memory();
    measure::Heading("log", "key opened, value asked for, closed");
    const auto read = MEASURED {
        HKEY key = nullptr;
        BYTE text[256];
        DWORD size = sizeof text;
        RegOpenKeyExA(HKEY_LOCAL_MACHINE, key_name, 0, KEY_QUERY_VALUE, &key);
        RegQueryValueExA(key, "Log", nullptr, nullptr, text, &size);
        RegCloseKey(key);
        measure::Keep(text);
    };
    measure::Compare(
        "an entry, no companion named", MEASURED { Std_Log_Entry("entry %d", measure::Hidden(1)); }, read,
        1.25);
    measure::Compare(
        "a message, no companion named", MEASURED { Broadcast_Message(1, "message", measure::Hidden(7L)); },
        read, 1.25);
    return 0;
}
