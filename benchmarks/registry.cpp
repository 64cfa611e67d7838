// What the registry costs: a set that other processes see, and a set that is on the disk, beside a bare write
// and flush of the same bytes; and that neither reads nor sets pay for what else the registry holds.

#include <benchmarks/growth.h>
#include <benchmarks/own_machine.h>

#include <platform/registry.h>

#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr DWORD Data_Size = 100;
constexpr DWORD Record_Bytes = 152; // what a value of that size adds to the registry's file
BYTE data[Data_Size];

HKEY Open(const char *path) {
    HKEY key = nullptr;
    if (RegCreateKeyExA(HKEY_CURRENT_USER, path, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr) !=
        0) {
        std::abort();
    }
    return key;
}

void Set(HKEY key, const char *name, const void *bytes, DWORD size) {
    if (RegSetValueExA(key, name, 0, REG_BINARY, static_cast<const BYTE *>(bytes), size) != 0) std::abort();
}

DWORD Number(HKEY key, const char *name) {
    DWORD number = 0, size = sizeof number;
    RegQueryValueExA(key, name, nullptr, nullptr, reinterpret_cast<BYTE *>(&number), &size);
    return number;
}

HKEY Key_With_Values(const char *path, int count) {
    const HKEY key = Open(path);
    for (int i = 0; i < count; ++i) Set(key, ("value " + std::to_string(i)).c_str(), data, Data_Size);
    return key;
}

// The second process: answers every number in "ping" with the same in "pong", until it is 0.
int Answer() {
    const HKEY key = Open("table");
    for (DWORD last = 0;;) {
        const DWORD number = Number(key, "ping");
        if (number == last) continue;
        if (number == 0) return 0;
        Set(key, "pong", &(last = number), sizeof last);
    }
}

pid_t Start_Second_Process(char *program) {
    char role[] = "--answer";
    char *arguments[] = {program, role, nullptr};
    pid_t process = 0;
    if (posix_spawn(&process, "/proc/self/exe", nullptr, nullptr, arguments, environ) != 0) std::abort();
    return process;
}

void Measure_Calls(char *program) {
    const HKEY key = Key_With_Values("table", 100);
    const pid_t second = Start_Second_Process(program);
    DWORD number = 0;
    const auto there_and_back = [&] {
        Set(key, "ping", &++number, sizeof number);
        while (Number(key, "pong") != number) {
        }
    };
    const auto nothing = [] {};
    measure::Heading("registry", "none: 20 us a set are allowed");
    measure::Measure_Calls("set in two processes, each awaits the other's", nothing, there_and_back, 40000);
    const auto set = [&] { Set(key, "value 57", data, Data_Size); };
    measure::Measure_Calls("set 100 bytes, the other process reading", nothing, set, 20000);
    Set(key, "ping", &(number = 0), sizeof number);
    waitpid(second, nullptr, 0);
    RegCloseKey(key);
}

void Measure_Flush(const std::string &folder) {
    const HKEY key = Open("flushed");
    const int file = open((folder + "/bare").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    char bytes[Record_Bytes] = {};
    off_t end = 0;
    measure::Heading("registry", "the bytes written and flushed");
    measure::Compare_Calls(
        "set a value of 100 bytes and flush it",
        [&] {
            Set(key, "value", data, Data_Size);
            if (RegFlushKey(key) != 0) std::abort();
        },
        [&] {
            if (pwrite(file, bytes, sizeof bytes, end) != sizeof bytes || fdatasync(file) != 0) std::abort();
            end += sizeof bytes;
        },
        1.5, 301);
    close(file);
    RegCloseKey(key);
}

/// A key with so many values, or subkeys, and names of them in an order that is not theirs.
class Numbered {
  public:
    explicit Numbered(long count) : count_(count) {}
    const char *Next() {
        std::snprintf(name_, sizeof name_, "value %ld", next_ = (next_ + 7919) % count_);
        return name_;
    }

  private:
    long count_, next_ = 0;
    char name_[20];
};

void Measure_Growth() {
    measure::Growth_Heading("registry");
    measure::Growth read("read one of n values", 0.2), set("set one of n values", 0.15);
    measure::Growth anew("delete and set one beside n values", 0.15);
    for (const long size : measure::Sizes(100000)) {
        const HKEY key = Key_With_Values(("n" + std::to_string(size)).c_str(), static_cast<int>(size));
        Numbered names(size);
        read.At(
            size, MEASURED {
                BYTE copy[Data_Size];
                DWORD bytes = sizeof copy;
                RegQueryValueExA(key, names.Next(), nullptr, nullptr, copy, &bytes);
                measure::Keep(copy);
            });
        set.At(size, [&] { Set(key, names.Next(), data, Data_Size); });
        anew.At(size, [&] {
            RegDeleteValueA(key, "fresh");
            Set(key, "fresh", data, Data_Size);
        });
        RegCloseKey(key);
    }
    measure::Growth beside("set a value beside n subkeys", 0.15);
    for (const long size : measure::Sizes(10000)) {
        const std::string name = "with" + std::to_string(size);
        const HKEY key = Open(name.c_str());
        for (long i = 0; i < size; ++i)
            RegCloseKey(Open((name + "\\" + std::to_string(i * 7919 % size)).c_str()));
        beside.At(size, [&] { Set(key, "value", data, Data_Size); });
        RegCloseKey(key);
    }
}

} // namespace

int main(int count, char **arguments) {
    if (count > 1 && std::strcmp(arguments[1], "--answer") == 0) return Answer();
    const measure::OwnMachine machine;
    Measure_Calls(arguments[0]);
    Measure_Flush(machine.Folder());
    Measure_Growth();
    return 0;
}
