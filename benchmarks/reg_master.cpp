// What a value costs through an open CRegMaster key: read and counted up, beside the machine's calls, and
// set, which waits for the disk, beside a bare write and flush of the same bytes.

#include <benchmarks/growth.h>
#include <benchmarks/own_machine.h>

#include <kelmara/system/reg_master.h>

#include <platform/registry.h>

#include <cstdlib>
#include <fcntl.h>
#include <string>
#include <unistd.h>

namespace {

constexpr unsigned long Data_Size = 100;
constexpr unsigned long Record_Bytes = 152; // what a value of that size adds to the registry's file
constexpr int Flushed_Calls = 301;
char data[Data_Size];

void Must(bool done) {
    if (!done) std::abort();
}

void Measure_Calls(CRegMaster &registry) {
    char copy[Data_Size];
    HKEY key = nullptr;
    Must(RegOpenKeyExA(HKEY_CURRENT_USER, "table", 0, KEY_ALL_ACCESS, &key) == 0);
    const auto read_bare = [&](const char *name, void *bytes, DWORD size) {
        Must(RegQueryValueExA(key, measure::Hidden(name), nullptr, nullptr, static_cast<BYTE *>(bytes),
                              &size) == 0);
        measure::Keep(copy);
    };
    long number = 0;
    measure::Heading("CRegMaster", "the machine's calls");
    measure::Compare(
        "read a value of 100 bytes",
        MEASURED {
            Must(registry.GetRegEntry(measure::Hidden("value 57"), copy, Data_Size));
            measure::Keep(copy);
        },
        MEASURED { read_bare("value 57", copy, Data_Size); }, 4.0);
    measure::Compare(
        "read a number",
        MEASURED {
            Must(registry.GetRegEntry(measure::Hidden("number"), &number));
            measure::Keep(number);
        },
        MEASURED { read_bare("number", &number, sizeof number); }, 4.0);
    const auto set_number = [&] {
        read_bare("number", &number, sizeof number);
        ++number;
        Must(RegSetValueExA(key, "number", 0, REG_DWORD, reinterpret_cast<BYTE *>(&number), sizeof number) ==
             0);
    };
    measure::Compare_Calls(
        "count a number up that others see", [&] { Must(registry.IncrDword("number") != 0); }, set_number,
        1.5);
    registry.SetRegEntry("number", 1);
    RegCloseKey(key);
}

void Measure_Flush(CRegMaster &registry, const std::string &folder) {
    const int file = open((folder + "/bare").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    const char bytes[Record_Bytes] = {};
    off_t end = 0;
    const auto ours = [&] { Must(registry.SetRegEntry("value 57", data, Data_Size)); };
    const auto peer = [&] {
        Must(pwrite(file, bytes, sizeof bytes, end) == sizeof bytes && fdatasync(file) == 0);
        end += sizeof bytes;
    };
    measure::Heading("CRegMaster", "the bytes written and flushed");
    measure::Compare_Calls("set a value of 100 bytes, flushed", ours, peer, 1.5, Flushed_Calls);
    close(file);
}

void Measure_Growth() {
    measure::Growth_Heading("CRegMaster");
    measure::Growth walk("all names of n values by their indices", 1.15),
        copy("copy a key of n values", 1.15);
    CRegMaster registry, target;
    for (const long size : measure::Sizes(10000)) {
        Must(registry.CreateKey(HKEY_CURRENT_USER, ("n" + std::to_string(size)).c_str()));
        Must(target.CreateKey(HKEY_CURRENT_USER, ("copy" + std::to_string(size)).c_str()));
        for (long i = 0; i < size; ++i) {
            const std::string name = "value " + std::to_string(i);
            Must(RegSetValueExA(registry.GetKey(), name.c_str(), 0, REG_BINARY,
                                reinterpret_cast<BYTE *>(data), Data_Size) == 0);
        }
        char name[256];
        walk.At(size, [&] {
            for (unsigned long index = 0; registry.GetNextValue(index, name); ++index) measure::Keep(name);
        });
        copy.At(size, [&] { Must(registry.CopyKey(registry.GetKey(), target.GetKey())); });
    }
}

} // namespace

int main() {
    const measure::OwnMachine machine;
    measure::Use_Plain_Memory();
    {
        CRegMaster registry;
        Must(registry.CreateKey(HKEY_CURRENT_USER, "table"));
        for (int i = 0; i < 100; ++i)
            Must(registry.SetRegEntry(("value " + std::to_string(i)).c_str(), data, Data_Size));
        Must(registry.SetRegEntry("number", 1));
        Measure_Calls(registry);
        Measure_Flush(registry, machine.Folder());
    }
    Measure_Growth();
    return 0;
}
