// What the registry costs: a read, a set that other processes see, and a set that is on the disk, beside a
// bare write and flush of the same bytes; and that a set does not pay for what else the registry holds.

#include <benchmarks/measure.h>

#include <platform/machine.h>
#include <platform/registry.h>

#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

constexpr DWORD Data_Size = 100;
constexpr DWORD Record_Bytes = 152; // what a value of that size adds to the registry's file
constexpr int Calls = 2001;
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

void Report(const char *what, double nanoseconds, double wanted) {
    std::printf("%-52s %12.0f %12.0f%s\n", what, nanoseconds, wanted,
                nanoseconds <= wanted ? "" : "  missed");
}

double Median(std::vector<double> &figures) {
    std::nth_element(figures.begin(), figures.begin() + figures.size() / 2, figures.end());
    return figures[figures.size() / 2];
}

// Of rounds of many calls.
template <class Work>
double Median_Of_Rounds(Work work) {
    const long calls = measure::Calls_In_Run(work);
    std::vector<double> figures(measure::Rounds);
    for (double &figure : figures) figure = measure::Time(work, calls);
    return Median(figures);
}

// Of single calls, so that one in which the host lets others run counts no more than any other.
template <class Work>
double Median_Of_Calls(Work work) {
    std::vector<double> figures(Calls);
    for (double &figure : figures) figure = measure::Time(work, 1);
    return Median(figures);
}

// Medians of single calls, in turns.
template <class Ours, class Peer>
void Compare(const char *what, Ours ours, Peer peer, double limit, int calls = Calls) {
    std::vector<double> our_figures(calls), peer_figures(calls);
    for (int call = 0; call < calls; ++call) {
        our_figures[call] = measure::Time(ours, 1);
        peer_figures[call] = measure::Time(peer, 1);
    }
    const double our_median = Median(our_figures), peer_median = Median(peer_figures);
    const double ratio = our_median / peer_median;
    std::printf("%-48s %12.1f %12.1f %8.2f %8.2f%s\n", what, our_median, peer_median, ratio, limit,
                ratio <= limit ? "" : "  missed");
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
    std::printf("\n%-52s %12s %12s\n", "registry", "median, ns", "wanted, ns");
    const HKEY key = Key_With_Values("table", 100);
    BYTE copy[Data_Size];
    const auto read = [&] {
        DWORD size = sizeof copy;
        RegQueryValueExA(key, measure::Hidden("value 57"), nullptr, nullptr, copy, &size);
        measure::Keep(copy);
    };
    Report("read a value of 100 bytes through an open key", Median_Of_Rounds(read), 2000);

    const pid_t second = Start_Second_Process(program);
    DWORD number = 0;
    const auto there_and_back = [&] {
        Set(key, "ping", &++number, sizeof number);
        while (Number(key, "pong") != number) {
        }
    };
    Report("set a value until the other process has read it", Median_Of_Calls(there_and_back) / 2, 20000);
    const auto set = [&] { Set(key, "value 57", data, Data_Size); };
    Report("set a value of 100 bytes, the other process reading", Median_Of_Calls(set), 20000);
    Set(key, "ping", &(number = 0), sizeof number);
    waitpid(second, nullptr, 0);
    RegCloseKey(key);
}

void Measure_Flush(const std::string &folder) {
    const HKEY key = Open("flushed");
    const int file = open((folder + "/bare").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    char bytes[Record_Bytes] = {};
    off_t end = 0;
    measure::Heading("registry (peer: the bytes written and flushed)");
    Compare(
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

void Measure_Growth() {
    const HKEY few = Key_With_Values("few", 100), many = Key_With_Values("many", 100000);
    const HKEY subkeys = Open("subkeys");
    for (int i = 0; i < 20000; ++i)
        RegCloseKey(Open(("subkeys\\" + std::to_string(i * 7919 % 20000)).c_str()));
    measure::Heading("registry (peer: in a key with 100 values)");
    int next = 0;
    const auto set_in = [&next](HKEY key, int count) {
        return [key, count, &next] {
            char name[20];
            std::snprintf(name, sizeof name, "value %d", next = (next + 7919) % count);
            Set(key, name, data, Data_Size);
        };
    };
    const auto set_anew_in = [](HKEY key) {
        return [key] {
            RegDeleteValueA(key, "fresh");
            Set(key, "fresh", data, Data_Size);
        };
    };
    Compare("set one of 100,000 values", set_in(many, 100000), set_in(few, 100), 2.0);
    Compare("delete and set one beside 100,000 values", set_anew_in(many), set_anew_in(few), 1.5);
    Compare("set a value in a key with 20,000 subkeys", set_in(subkeys, 100), set_in(few, 100), 1.5);
    RegCloseKey(few);
    RegCloseKey(many);
    RegCloseKey(subkeys);
}

} // namespace

int main(int count, char **arguments) {
    if (count > 1 && std::strcmp(arguments[1], "--answer") == 0) return Answer();
    std::string folder = "/tmp/kelmara-benchmark-XXXXXX";
    if (!mkdtemp(folder.data()) || !Enter_Machine(folder.c_str())) return 1;
    setenv("KELMARA_MACHINE", folder.c_str(), 1);
    Measure_Calls(arguments[0]);
    Measure_Flush(folder);
    Measure_Growth();
    Remove_Machine(folder.c_str());
    return 0;
}
